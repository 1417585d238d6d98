// SPDX-License-Identifier: MIT
// The chain from the raw words of a channel to the values that a host reads.
#include "legacy/channel_conversion.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>

#include "legacy/derived/derived_channels.h"
#include "legacy/sensors/sample_conversion.h"
#include "legacy/sensors/sensors.h"
#include "legacy/sensors/unit_descriptor.h"
#include "legacy/wmp_session.h"
#include "math/filters.h"
#include "units/user_units_manager.h"

namespace traguardo {
namespace {

// Its channels store their unit as a text, and are scaled to the unit that the user wants.
constexpr i32 kSensorWithStoredUnit = 999;

void convert_stored_unit(WmpSession& session, std::size_t index) {
  const WmpChannelRecord& record = session.tables.channels[index].record;
  const std::string unit = record.unit_text();
  const StoredUnitRow* stored = find_stored_unit(unit);
  if (stored == nullptr) return;
  const std::string wanted = session.units->GetChannelUnit(channel_unit_kind(stored->quantity), record.name());
  const StoredUnitRuleRow* rule = find_stored_unit_rule(unit, wanted, session.sensors->system_choices());
  if (rule != nullptr) apply_stored_unit_rule(*rule, session.store.values(index));
}

JunctionRole junction_role(const WmpChannel& channel) {
  return find_sensor(channel.record.sensor_id()).traits.junction;
}

// The first logged channel that holds the temperature of the cold junction; logged_count for none.
std::size_t find_cold_junction(const WmpTables& tables) {
  for (std::size_t i = 0; i < tables.logged_count; ++i) {
    if (junction_role(tables.channels[i]) == JunctionRole::kIsJunction) return i;
  }
  return tables.logged_count;
}

// Makes the values of the junction's channel. A thermocouple may stand in front of it in the table, and needs them
// before the channel's own turn to be converted comes. Behind the first thermocouple they stay as they are while the
// file is loaded, until that turn; so thousands of thermocouples don't make them thousands of times. (A junction that
// has had its turn before a thermocouple comes loses what the later steps of the conversion did to it. So it was
// always, and hosts know its values so.)
void convert_cold_junction(WmpSession& session, std::size_t junction, std::size_t thermocouple) {
  const std::optional<std::size_t> last = session.last_thermocouple;
  session.last_thermocouple = thermocouple;
  const bool had_its_turn_since = junction < thermocouple && (!last || *last < junction);
  if (!session.all_converted && last && !had_its_turn_since) return;
  const WmpChannelRecord& source = session.tables.channels[junction].record;
  session.sensors->convert_by_formula(source.sensor_id(), source.parameters(), source.user_gain(), source.user_offset(),
                                      session.store.raw_words(junction), session.store.values(junction));
}

// A thermocouple is stored relative to its cold junction, whose temperature is added.
void refer_to_cold_junction(WmpSession& session, std::size_t index) {
  const WmpChannel& channel = session.tables.channels[index];
  if (junction_role(channel) != JunctionRole::kRelativeToJunction) return;
  if (!session.cold_junction) session.cold_junction = find_cold_junction(session.tables);
  const std::size_t junction = *session.cold_junction;
  if (junction == session.tables.logged_count) return;
  convert_cold_junction(session, junction, index);
  // The thermocouple's own offset to Fahrenheit is in its values already.
  const bool has_offset =
      session.sensors->system_choices().imperial_temperature && read_unit_descriptor(channel.record.unit_field()).valid;
  add_cold_junction(session.store.values(index), channel.statistics.period_ms, session.store.values(junction),
                    session.tables.channels[junction].statistics.period_ms, session.tables.header.duration_ms(),
                    has_offset ? 32.0F : 0.0F);
}

bool convert_logged_channel(WmpSession& session, std::size_t index, bool raw_only) {
  session.tables.channels[index].update_rate();
  const std::span<const u16> raw = session.store.raw_words(index);
  const std::span<float> values = session.store.values(index);
  if (raw_only) {
    copy_raw_words(raw, values);
    return true;
  }
  if (session.tables.channels[index].extension.digit_channel()) {
    decode_digits(raw, values);
    return true;
  }
  const WmpChannelRecord& record = session.tables.channels[index].record;
  const bool converted =
      session.sensors->ConvertiCampioni(record.sensor_id(), record.parameters(), record.unit_field(), raw, values);
  if (record.sensor_id() == kSensorWithStoredUnit) convert_stored_unit(session, index);
  refer_to_cold_junction(session, index);
  if (session.tables.is_reference_speed(index)) session.rebuild_distances();
  return converted;
}

void run_repair_pass(i32 sensor_id, u32 frequency_hz, std::span<float> samples) {
  const RepairFilter repair = find_sensor(sensor_id).traits.repair;
  if (repair == RepairFilter::kFirPass) CFiltri::FiltraFir(samples.data(), samples.size());
  if (repair == RepairFilter::kAveragePass) {
    CFiltri::MediaMobile(samples.data(), samples.size(), std::size_t{frequency_hz} / 3);
  }
}

}  // namespace

bool convert_channel(WmpSession& session, std::size_t index, bool raw_only) {
  bool converted = false;
  const std::span<float> samples = session.store.values(index);
  if (session.tables.is_derived(index)) {
    converted = compute_derived_channel(session, index);
    if (!converted) std::ranges::fill(samples, 0.0F);
  } else {
    converted = convert_logged_channel(session, index, raw_only);
  }
  WmpChannel& channel = session.tables.channels[index];
  const WmpChannelRecord& record = channel.record;
  WmpChannelStatistics& row = channel.statistics;
  if (session.repairs && channel.is_speed()) repair_flat_runs(samples, row.period_ms);
  apply_gain_and_offset(samples, record.user_gain(), record.user_offset());
  for (i32 pass = smoothing_passes(record.filter_word()); pass > 0; --pass) {
    CFiltri::FiltraFir(samples.data(), samples.size());
  }
  if (channel.extension.inverted()) invert_values(samples);
  if (session.repairs) run_repair_pass(record.sensor_id(), row.frequency_hz, samples);
  const bool bounded = session.tables.function_id(index) == WmpChannelExtension::kFunctionBounded;
  const ValueStatistics summary = value_statistics(samples, bounded);
  row.minimum = summary.minimum;
  row.mean = summary.mean;
  row.maximum = summary.maximum;
  return converted;
}

}  // namespace traguardo
