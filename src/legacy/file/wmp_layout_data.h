// SPDX-License-Identifier: MIT
// The shape of a legacy file by version: every fact that differs between the versions is a column of the version table,
// and all readers walk by its row. A new version is a new row, and a new sample form where its samples lie otherwise.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

struct SampleForm;

// Whose run numbers count, by version.
enum class RunNumbers : u8 {
  kNone,         // every lap belongs to run 1
  kOfLateFiles,  // the laps' own, but for loggers and software of a time before runs
  kStored,       // the laps' own
};

// Sizes in bytes of what the file holds, in file order for the versions without block heads; 0 for what a version
// doesn't have. A version without a row is refused. With block heads the groups are: main header with configuration,
// names with extended names, identity; then each channel, lap, run and extra record under a head of its own, a record
// and its extension under one.
struct WmpVersionRow {
  u16 version;
  u16 block_head;
  u16 main_header;
  u16 configuration;
  u16 identity;
  u16 names;
  u16 extended_names;
  u16 channel_record;
  u16 channel_extension;
  u16 lap_record;
  u16 lap_extension;
  u16 run_record;
  u16 extra_record;
  const SampleForm* samples;
  // What the tables become while they are read: the version itself, but for those with the short channel record.
  u16 becomes;
  // The size of the raw area is what the tables leave of the file; else it is what the header says, and no less than
  // the counts of the channels ask for.
  bool raw_area_fills_file;
  // The file is as long as the tables and a whole number of areas of 64 KiB ask for, beside its dump and this many
  // bytes; 0: as long as its tables and its raw area.
  u32 fixed_areas;
  // Formulas may be of an older kind, which can't be computed any more.
  bool may_have_old_formulas;
  RunNumbers runs;
  // A lap's time is worked out from its samples where the two differ.
  bool lap_times_from_samples;
  // The header knows the serial number of the logger.
  bool has_serial;
  // Reading the file tells the event log about its laps.
  bool tells_log;
};

// Sample rates by the rate index of a channel record. Frequency and period are taken from here, never computed from
// each other. An index beyond the table gives frequency 0 and period 32000.
struct SampleRateRow {
  u32 logger_code;
  u32 frequency_hz;
  u32 period_ms;
};

// What of a channel record of versions 100 to 320 goes into the record of today; a number becomes wider there.
struct OldRecordCopyRow {
  u16 from;  // offset in the 98-byte record
  u16 width;
  u16 to;  // offset in the 668-byte record
};

std::span<const WmpVersionRow> wmp_versions();
// Null for a version that nobody knows.
const WmpVersionRow* find_wmp_version(u16 version);
std::span<const SampleRateRow> sample_rates();
std::span<const OldRecordCopyRow> old_record_copies();

// The letter behind the software text, by the low four bits of the software version; NUL for no letter.
std::span<const char, 16> software_letters();

}  // namespace traguardo
