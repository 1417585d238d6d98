// SPDX-License-Identifier: MIT
#include "simulator/wmp_records.h"

#include <string>

#include "simulator/car.h"
#include "simulator/session_header.h"

namespace traguardo::simulator {

namespace {

constexpr std::uint32_t kSoftware = 0x03104022;  // 31.04.02 and a letter
constexpr std::uint32_t kSerial = 480017;
constexpr std::size_t kReferenceSpeed = 1;  // its place among the channels
constexpr std::uint32_t kVenuePractice = 12;
constexpr std::uint32_t kTimeUnset = 0xCB3434CB;
constexpr std::uint32_t kMeasured = 1;  // origins
constexpr std::uint32_t kByFormula = 0;
constexpr std::size_t kExtraRecords = 2;

wire::wmp::Channel described(const WmpSession& session, std::size_t i) {
  const WmpChannel& channel = session.channels[i];
  const bool derived = channel.is_derived();
  wire::wmp::Channel out;
  out.name = channel.name;
  out.unit = unit_field(channel.unit);
  out.sensor = static_cast<std::uint16_t>(channel.sensor);
  out.measure_class = static_cast<std::uint16_t>(channel.measure_class);
  out.rate = static_cast<std::uint16_t>(rate_index(channel.rate_hz));
  out.parameters = stored_parameters(channel);
  out.filter = static_cast<std::uint16_t>(smoothing_passes(channel));
  out.display_minimum = out.scale_minimum = static_cast<float>(channel.low);
  out.display_maximum = out.scale_maximum = static_cast<float>(channel.high);
  out.formula = channel.formula;
  out.description = channel.description;
  out.origin = derived ? kByFormula : kMeasured;
  out.is_computed = derived;
  out.math_generation = derived ? 1 : 0;
  out.number = static_cast<std::uint8_t>(i);
  out.form = derived ? 255 : 0;
  out.function_id = function_id(channel);
  out.stepped = is_stepped(channel);
  out.digit = shows_digits(channel);
  out.whole_numbers = channel.unit.decimals == 0;
  out.decimals = static_cast<std::uint8_t>(channel.unit.decimals);
  out.sample_count = static_cast<std::uint32_t>(session.sample_count(channel));
  if (derived) return out;
  const std::vector<float>& samples = session.recording.samples[i];
  if (session.form.has_physical_values()) {
    out.values = samples;
  } else {
    for (const float value : samples) out.words.push_back(raw_word(channel, static_cast<double>(value)));
  }
  return out;
}

wire::wmp::Lap described(const WmpSession& session, const WmpLap& lap) {
  const std::uint64_t per_second = static_cast<std::uint64_t>(samples_per_second(session.logged()));
  wire::wmp::Lap out;
  out.start_ms = lap.start_ms;
  out.time_ms = lap.time_ms;
  // The first loggers didn't count.
  out.number = static_cast<std::int16_t>(session.form.version > 100 ? lap.number : 0);
  out.run = static_cast<std::uint16_t>(lap.run);
  out.samples = static_cast<std::uint32_t>((lap.time_ms * per_second + 500) / 1000);
  out.complete = lap.complete;
  // Older loggers left the second lap time unset, in one of two ways.
  if (session.form.version >= 450) out.true_time_ms = session.form.version == 450 ? kTimeUnset : lap.time_ms;
  return out;
}

wire::wmp::Run described_run(std::uint32_t number) {
  wire::wmp::Run run;
  run.number = static_cast<std::uint16_t>(number);
  run.first_teeth = kShaftTeeth;
  run.second_teeth = kAxleTeeth;
  run.wheel_mm = static_cast<float>(kWheelCircumferenceMm);
  run.name = "Run " + std::to_string(number);
  run.comment = "Simulated run";
  return run;
}

}  // namespace

wire::wmp::File described(const WmpSession& session) {
  const WmpRecording& recording = session.recording;
  const SessionTexts texts = session_texts(session.seed);
  wire::wmp::File file;
  file.version = static_cast<std::uint16_t>(session.form.version);
  file.date = "12-05-24 14:03:20";
  file.duration_ms = recording.duration_ms;
  if (session.logged_count > kReferenceSpeed) file.reference = kReferenceSpeed;
  file.family = static_cast<std::uint8_t>(session.form.family());
  file.firmware = {0x20, 0x14, 0x06};
  file.software = kSoftware;
  file.device_code = session.form.device_code;
  file.device_id = kSerial;
  file.vehicle = texts.vehicle;
  file.track = texts.track;
  file.racer = texts.racer;
  file.test_name = "Simulated test";
  file.championship = texts.championship;
  file.venue_type = kVenuePractice;
  for (std::size_t i = 0; i < session.channels.size(); ++i) {
    (i < session.logged_count ? file.logged : file.derived).push_back(described(session, i));
  }
  file.laps.clear();
  for (const WmpLap& lap : recording.laps) file.laps.push_back(described(session, lap));
  if (const WmpLap* const best = best_lap(recording.laps)) {
    file.best = {static_cast<std::uint16_t>(best->number), best->time_ms, static_cast<std::uint16_t>(best->run)};
  }
  file.runs.clear();
  for (std::uint32_t run = 1; run <= recording.laps.back().run; ++run) file.runs.push_back(described_run(run));
  file.extras = kExtraRecords;
  return file;
}

}  // namespace traguardo::simulator
