// SPDX-License-Identifier: MIT
// The steps that turn the raw words of one legacy channel into what a host reads, each one pass over its values in
// place. `CWMP::ConvertiCanale` runs them in their order.
#pragma once

#include <span>
#include <string_view>

#include "legacy/sensors/sensor_formulas.h"
#include "legacy/sensors/stored_units_data.h"
#include "support/bytes.h"
#include "units/user_units_manager.h"

namespace traguardo {

// REQUIRES, for each of the first two: `values` is at least as long as `raw`.

// Each word as a number, unsigned.
void copy_raw_words(std::span<const u16> raw, std::span<float> values);

// A digit channel: the set bits of each word's low byte are digits, bit 0 the digit 1 and bit 7 the digit 8, the
// highest bit in the units place.
void decode_digits(std::span<const u16> raw, std::span<float> values);

// What the stored unit of a channel of sensor 999 asks for; null if the values stay as they are. unit: the unit field
// up to its NUL. wanted: the unit that the user settings hold for the channel's name and quantity; where it is empty
// the system choices decide.
const StoredUnitRuleRow* find_stored_unit_rule(std::string_view unit, std::string_view wanted, SystemChoices choices);
void apply_stored_unit_rule(const StoredUnitRuleRow& rule, std::span<float> values);
// The quantity of a stored unit, null for a unit that has none.
const StoredUnitRow* find_stored_unit(std::string_view unit);
// Where the user settings hold the units of that quantity.
ChannelUnitKind channel_unit_kind(StoredQuantity quantity);

// Adds to each sample of a thermocouple the temperature, less `zero`, that its cold junction had at the sample's time.
// It ends at `duration_ms`, or where the cold junction's values end.
void add_cold_junction(std::span<float> values, u32 period_ms, std::span<const float> junction, u32 junction_period_ms,
                       u32 duration_ms, float zero);

// A speed that stands still for less than two seconds at a time was not measured anew: such a run becomes a ramp to the
// value behind it.
void repair_flat_runs(std::span<float> values, u32 period_ms);

void apply_gain_and_offset(std::span<float> values, float gain, float offset);
void invert_values(std::span<float> values);

// How many smoothing passes a filter word asks for, 0 to 10.
i32 smoothing_passes(u16 filter_word);

struct ValueStatistics {
  float minimum;
  float mean;
  float maximum;
};
// bounded: function id 98, whose minimum counts values above 0 only and whose sum values below 2.5 only. Without
// samples the mean is 0 and the limits are +9e12 and -9e12 (0 and 0 if bounded).
ValueStatistics value_statistics(std::span<const float> values, bool bounded);

}  // namespace traguardo
