// SPDX-License-Identifier: MIT
// What the tables of a file become before anything is computed from them: counts and sizes that fit each other and the
// file, names that can be shown, laps and runs that rise. Nothing here reads the file.
#pragma once

#include "legacy/file/wmp_tables.h"

namespace traguardo {

// --- Counts and sizes, behind each reading of the channel table
void repair_counts(WmpTables* tables);
// Names, measure classes, rates and display ranges.
void repair_channels(WmpTables* tables);
// Samples of a derived channel of that frequency, as the longest logged channel allows.
u32 derived_sample_count(const WmpTables& tables, u32 frequency_hz);
// The same for a channel that the reader adds or changes, as far as it is believed.
u64 added_sample_count(const WmpTables& tables, u32 frequency_hz);
// How many samples a derived channel would have beyond those that it has, since their number isn't believed.
u32 missing_samples(const WmpTables& tables, std::size_t channel);
// Over all channels, logged and derived.
u64 total_samples(const WmpTables& tables);

// --- Laps and runs
// Lap times, starts, runs and numbers. REQUIRES: repaired counts.
void repair_laps(WmpTables* tables);
// One row per run that the laps name, in their order, with the record that the file stores for it, and the stretch of
// time that it covers. True if that is another table than before.
bool repair_runs(WmpTables* tables);
// The shortest laps of each run and of the file, on lap time and on true lap time. No host sees them.
void find_best_laps(WmpTables* tables);

// --- What a host is shown, behind everything else
void repair_unit_texts(WmpTables* tables);
void repair_reference_speed(WmpTables* tables);

}  // namespace traguardo
