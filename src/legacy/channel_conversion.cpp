// The chain from the raw words of a channel to the values that a host reads.
#include "legacy/channel_conversion.h"

#include <algorithm>
#include <span>
#include <string>

#include "legacy/derived/derived_channels.h"
#include "legacy/sensors/conversion_sensors_data.h"
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

bool is_one_of(std::span<const i32> sensors, i32 sensor_id) {
  return std::find(sensors.begin(), sensors.end(), sensor_id) != sensors.end();
}

void convert_stored_unit(WmpSession& session, std::size_t index) {
  const WmpChannelRecord& record = session.tables.channels[index].record;
  const std::string unit = record.unit_text();
  const StoredUnitRow* stored = find_stored_unit(unit);
  if (stored == nullptr) return;
  const std::string wanted = session.units->GetChannelUnit(channel_unit_kind(stored->quantity), record.name());
  const StoredUnitRuleRow* rule = find_stored_unit_rule(unit, wanted, session.sensors->system_choices());
  if (rule != nullptr) apply_stored_unit_rule(*rule, session.store.values(index));
}

struct ColdJunction {
  std::size_t channel;  // the first logged channel that holds its temperature; logged_count() for none
  bool is_converted;    // a thermocouple before this one has left its values as they are wanted
};

// While the file is loaded nothing but its own turn in the chain changes the junction's values behind a thermocouple
// that made them, so that thousands of thermocouples don't cost thousands of conversions.
ColdJunction find_cold_junction(const WmpSession& session, std::size_t thermocouple) {
  const std::size_t count = session.tables.logged_count;
  ColdJunction junction{count, false};
  for (std::size_t i = 0; i < count && (i < thermocouple || junction.channel == count); ++i) {
    const i32 sensor_id = session.tables.channels[i].record.sensor_id();
    if (junction.channel == count && is_one_of(cold_junction_sensors(), sensor_id)) {
      junction.channel = i;
      if (i < thermocouple) junction.is_converted = false;
    } else if (i < thermocouple && is_one_of(thermocouple_sensors(), sensor_id)) {
      if (!session.tables.channels[i].extension.digit_channel()) junction.is_converted = true;
    }
  }
  if (session.all_converted) junction.is_converted = false;
  return junction;
}

// The junction's values are made here, since its channel may stand behind the thermocouple's. Its own turn in the chain
// makes them anew; where it had its turn before, it keeps these, without the later steps of the chain.
void refer_to_cold_junction(WmpSession& session, std::size_t index) {
  const WmpChannelRecord& record = session.tables.channels[index].record;
  if (!is_one_of(thermocouple_sensors(), record.sensor_id())) return;
  const ColdJunction junction = find_cold_junction(session, index);
  if (junction.channel == session.tables.logged_count) return;
  const CSensori& sensors = *session.sensors;
  const std::span<float> temperatures = session.store.values(junction.channel);
  if (!junction.is_converted) {
    const WmpChannelRecord& source = session.tables.channels[junction.channel].record;
    sensors.convert_by_formula(source.sensor_id(), source.parameters(), source.user_gain(), source.user_offset(),
                               session.store.raw_words(junction.channel), temperatures);
  }
  // The thermocouple's own offset to Fahrenheit is in its values already.
  const bool has_offset =
      sensors.system_choices().imperial_temperature && read_unit_descriptor(record.unit_field()).valid;
  add_cold_junction(session.store.values(index), session.tables.channels[index].statistics.period_ms, temperatures,
                    session.tables.channels[junction.channel].statistics.period_ms, session.tables.header.duration_ms(),
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
  for (const RepairPassRow& pass : repair_passes()) {
    if (pass.sensor_id != sensor_id) continue;
    if (pass.filter == RepairFilter::kFir) {
      CFiltri::FiltraFir(samples.data(), samples.size());
    } else {
      CFiltri::MediaMobile(samples.data(), samples.size(), std::size_t{frequency_hz} / 3);
    }
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
