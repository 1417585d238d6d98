// SPDX-License-Identifier: MIT
#include "regulation/boost_limit.h"

#include <algorithm>
#include <memory>

#include "regulation/boost_filter.h"
#include "regulation/config_file.h"
#include "regulation/number_text.h"
#include "regulation/output_files.h"
#include "support/platform/platform.h"

namespace traguardo {

namespace {

constexpr std::string_view kNoVehicle =
    "No matching vehicle, please edit file FIA.txt and add a section with correct values \n{\nvehicle=VEHICLE\n}\n";
constexpr std::string_view kNoRpm =
    "Can't find any RPM channel, please edit file FIA.txt and add a line with correct RPM channel name "
    "'RPM=CorrectName'";
constexpr std::string_view kNoBoost =
    "Can't find any Pboost channel, please edit file FIA.txt and add a line with correct Pboost channel name "
    "'Pboost=CorrectName'";
constexpr std::string_view kNoThrottle =
    "Can't find any Throttle channel, please edit file FIA.txt and add a line with correct Throttle channel name "
    "'Throttle=CorrectName'";
constexpr std::string_view kNoPressure =
    "Can't find any Barometric Pressure value, please edit file FIA.txt and add a line with "
    "'BarometricPressure=Value'";
constexpr std::string_view kDisabled =
    "MaxPboost correction is disabled. To enable it, please edit file FIA.txt and add a line with correct file name "
    "'MaxPboost=CorrectFileName.txt'";
constexpr std::string_view kBadPressure =
    "Can't interpret Barometric Pressure value, please edit file FIA.txt and add a line with "
    "'BarometricPressure=CorrectValue'";
constexpr std::string_view kNoLimitFile = "Can't find any file for MaxPboost correction (";
constexpr std::string_view kNoLimitFileAdvice =
    ")\n"
    "\tPlease doublecheck the file FIA.txt has a line with 'MaxPboost=CorrectFileName.txt',\n"
    "\tor that the file 'CorrectFileName.txt' is truly existing.";
constexpr std::string_view kBadLimitFile = "Can't correctly interpret file ";
constexpr std::string_view kNoOutput =
    "No output requested, to see computation step values please edit file FIA.txt and add a line with 'output=1'";

constexpr float kMbarPerBar = 1000.0F;

// A value that fails its test, or isn't a number, leaves the field as it is.
template <typename Test>
void take_number(std::string_view text, Test test, float* field) {
  const float value = float_from_text(text);
  if (test(value)) *field = value;
}

// The channel that stands first in the table wins, whatever the order of the lines.
void take_channel(std::string_view name, const ChannelNames& channels, std::optional<std::size_t>* field) {
  const std::optional<std::size_t> place = channels.find(name);
  if (place && (!*field || *place < **field)) *field = place;
}

void write_at(std::span<float> output, u64 index, float value) {
  if (index < output.size()) output[static_cast<std::size_t>(index)] = value;
}

}  // namespace

CPBoostLimit::CPBoostLimit(const std::vector<float>& engine_speeds, const std::vector<float>& limits)
    : engine_speeds_(engine_speeds), limits_(limits), speeds_above_(engine_speeds) {}

float CPBoostLimit::limit_at(float rpm) const {
  const std::size_t next = speeds_above_.find(rpm);
  if (next == 0) return limits_.front();
  if (next == engine_speeds_.size()) return 0.0F;
  const float from = limits_[next - 1];
  const float speed = engine_speeds_[next - 1];
  return from + (limits_[next] - from) * (rpm - speed) / (engine_speeds_[next] - speed);
}

BoostLimitFile BoostLimitFile::read(const std::wstring& path) {
  BoostLimitFile file;
  const std::optional<ConfigFile> text = ConfigFile::read(path);
  if (!text || text->text().empty()) return file;
  LineWalk lines(text->text());
  for (std::string_view line; lines.next(&line);) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) continue;
    const float speed = float_from_text(line.substr(0, equals));
    const float limit = float_from_text(line.substr(equals + 1));
    if (!(speed > 0.0F) || !(limit > 0.0F)) continue;
    file.engine_speeds.push_back(speed);
    file.limits.push_back(limit * kMbarPerBar);
  }
  file.state = file.engine_speeds.size() < 2 ? State::kUnusable : State::kGood;
  return file;
}

BoostFlagRun::Sample BoostFlagRun::step(float boost, float limit, float rpm, float throttle) {
  constexpr float kEngineOffBelowRpm = 500.0F;
  constexpr float kNoIntegralBelowRpm = 2000.0F;
  constexpr float kNoIntegralBelowThrottle = 25.0F;
  constexpr u64 kLowCounterForgetsMs = 30000;

  float excess = boost - limit;
  const bool below = excess < 0.0F;
  if (below) excess = 0.0F;
  engine_off_ms_ = rpm < kEngineOffBelowRpm ? engine_off_ms_ + period_ms_ : 0;

  Sample now = last_;
  now.integral = static_cast<float>(period_ms_) * excess / 1000.0F + last_.integral;
  if (rpm < kNoIntegralBelowRpm || throttle < kNoIntegralBelowThrottle) now.integral = 0.0F;

  float decayed = below && now.integral > 0.0F ? decayed_ - triggers_.decay / frequency_hz_
                                               : now.integral - last_.integral + decayed_;
  decayed = std::max(decayed, 0.0F);

  if (decayed >= triggers_.trigger_low && triggers_.trigger_low > decayed_) ++now.low_counter;
  if (engine_off_ms_ >= kLowCounterForgetsMs) now.low_counter = 0;
  bool flag = false;
  if (decayed > triggers_.trigger_high && triggers_.trigger_high > decayed_) {
    ++now.high_counter;
    flag = true;
  } else {
    flag = static_cast<float>(now.low_counter) >= triggers_.counter_low;
  }
  // A raised flag stays raised to the end of the run.
  now.flag = flag || last_.flag;

  decayed_ = decayed;
  last_ = now;
  return now;
}

BoostSettings BoostSettings::read(std::string_view section, const ChannelNames& channels) {
  BoostSettings settings;
  BoostTriggers& numbers = settings.triggers;
  const auto above_zero = [](float value) { return value > 0.0F; };
  const auto at_least = [](float lowest) { return [lowest](float value) { return value >= lowest; }; };

  LineWalk lines(section);
  for (std::string_view line; lines.next(&line);) {
    if (const auto text = value_of(line, "barometricpressure=")) settings.pressure = *text;
    if (const auto name = value_of(line, "pboost=")) take_channel(*name, channels, &settings.boost);
    if (const auto name = value_of(line, "pboost2nd=")) take_channel(*name, channels, &settings.second_boost);
    if (const auto name = value_of(line, "rpm=")) take_channel(*name, channels, &settings.rpm);
    if (const auto name = value_of(line, "throttle=")) take_channel(*name, channels, &settings.throttle);
    if (const auto name = value_of(line, kBoostLimitFileKey)) settings.limit_file = *name;
    if (value_of(line, "output=1")) settings.step_values_wanted = true;
    if (value_of(line, "pct_scaling=1")) settings.scaling = 1;
    if (value_of(line, "pct_scaling=2")) settings.scaling = 2;
    if (value_of(line, "filtering=zep_fir_50")) settings.fir = true;
    if (const auto text = value_of(line, "counter_low=")) take_number(*text, at_least(1.0F), &numbers.counter_low);
    if (const auto text = value_of(line, "trigger_low=")) take_number(*text, at_least(10.0F), &numbers.trigger_low);
    if (const auto text = value_of(line, "trigger_high=")) take_number(*text, at_least(30.0F), &numbers.trigger_high);
    if (const auto text = value_of(line, "decay_applied=")) take_number(*text, above_zero, &numbers.decay);
    if (const auto text = value_of(line, "pboost_mul_to_mbar=")) take_number(*text, above_zero, &settings.to_mbar);
  }
  return settings;
}

BoostLimitCheck::BoostLimitCheck(SessionView* session, const BoostOutputs& outputs)
    : session_(session), outputs_(outputs) {
  const std::optional<ConfigFile> file =
      ConfigFile::read(platform::path_in_folder(session->working_folder(), kBoostConfigurationName));
  if (!file) return;
  const std::optional<std::string_view> lines = file->racer_lines(session->racer());
  if (lines) settings_ = BoostSettings::read(*lines, ChannelNames(*session));
}

bool BoostLimitCheck::run(const SessionRun& run) {
  if (!settings_) {
    report(run, kNoVehicle);
    return true;
  }
  if (report_what_is_missing(run)) return false;
  if (settings_->limit_file.empty()) {
    report(run, kDisabled);
    return true;
  }
  const float pressure_bar = float_from_text(settings_->pressure);
  if (!(pressure_bar >= 0.0F)) {
    report(run, kBadPressure);
    return false;
  }
  if (!read_limit_file(run)) return false;
  // Whoever asks for the step values gets no flag; what such an output would hold isn't known here.
  if (settings_->step_values_wanted) return true;
  raise_flags(run, *make_scaler(settings_->scaling, pressure_bar));
  report(run, kNoOutput);
  return true;
}

void BoostLimitCheck::report(const SessionRun& run, std::string_view text) {
  report_.append(run_header(*session_, run)).append("\t").append(text).append("\n");
}

// A report that can't be written is lost, and nothing else with it.
void BoostLimitCheck::write_report() const {
  const std::wstring path = platform::path_in_folder(session_->working_folder(), kBoostReportName);
  if (!may_be_written(*session_, path)) return;
  if (report_.empty() || !platform::write_text(path, report_)) platform::delete_file(path);
}

bool BoostLimitCheck::report_what_is_missing(const SessionRun& run) {
  const struct {
    bool missing;
    std::string_view text;
  } kNeeded[] = {
      {!settings_->rpm, kNoRpm},
      {!settings_->boost, kNoBoost},
      {!settings_->throttle, kNoThrottle},
      {settings_->pressure.empty(), kNoPressure},
  };
  bool any = false;
  for (const auto& needed : kNeeded) {
    if (!needed.missing) continue;
    report(run, needed.text);
    any = true;
  }
  return any;
}

bool BoostLimitCheck::read_limit_file(const SessionRun& run) {
  const std::wstring path =
      platform::path_in_folder(session_->working_folder(), platform::path_from_host_bytes(settings_->limit_file));
  if (!limit_file_) {
    limit_file_ = BoostLimitFile::read(path);
    if (limit_file_->state == BoostLimitFile::State::kGood) {
      limits_.emplace(limit_file_->engine_speeds, limit_file_->limits);
    }
  }
  if (limits_) return true;
  const std::string shown = platform::host_bytes_from_path(path);
  if (limit_file_->state == BoostLimitFile::State::kMissing) {
    report(run, std::string(kNoLimitFile).append(shown).append(kNoLimitFileAdvice));
  } else {
    report(run, std::string(kBadLimitFile).append(shown));
  }
  return false;
}

// The logged pressure in mbar, on the grid of its channel, from the start of the run.
std::vector<float> BoostLimitCheck::boost_signal(const SessionRun& run) const {
  const SessionChannel first = session_->channel(*settings_->boost);
  std::optional<SessionChannel> second;
  if (settings_->second_boost) second = session_->channel(*settings_->second_boost);
  std::vector<float> signal;
  if (first.period_ms == 0) return signal;
  // A run may claim more than was ever logged. Behind the last sample the pressure stands still, and so does its
  // filtered form some fifty samples later.
  const u64 held = first.samples.size() + (second ? second->samples.size() : 0) + longest_output();
  const u64 count = std::min<u64>(run.duration_ms / first.period_ms, 4 * held + 256);
  signal.reserve(static_cast<std::size_t>(count));
  for (u64 i = 0; i < count; ++i) {
    const u64 time_ms = run.start_ms + i * first.period_ms;
    float value = value_at(first.samples, first.period_ms, time_ms);
    if (second) value = (value + value_at(second->samples, second->period_ms, time_ms)) / 2.0F;
    signal.push_back(value * settings_->to_mbar);
  }
  return signal;
}

void BoostLimitCheck::raise_flags(const SessionRun& run, const CScaler& scaler) {
  if (outputs_.flag < 0) return;
  const SessionChannel flag_channel = session_->channel(static_cast<std::size_t>(outputs_.flag));
  const u32 period_ms = flag_channel.period_ms;
  if (period_ms == 0) return;
  const SessionChannel rpm = session_->channel(*settings_->rpm);
  const SessionChannel throttle = session_->channel(*settings_->throttle);
  const u32 boost_period_ms = session_->channel(*settings_->boost).period_ms;
  const std::vector<float> boost = filtered_boost(boost_signal(run), settings_->fir);

  const u64 first = run.start_ms / period_ms;
  const u64 end = std::min<u64>(first + run.duration_ms / period_ms, longest_output());
  BoostFlagRun flag_run(settings_->triggers, period_ms, flag_channel.frequency_hz);
  const std::span<float> limit_out = output(outputs_.limit);
  const std::span<float> value_out = output(outputs_.value);
  const std::span<float> integral_out = output(outputs_.integral);
  const std::span<float> low_counter_out = output(outputs_.low_counter);
  const std::span<float> high_counter_out = output(outputs_.high_counter);
  const std::span<float> flag_out = output(outputs_.flag);
  for (u64 index = first; index < end; ++index) {
    const u64 since_start_ms = (index - first) * period_ms;
    const u64 time_ms = run.start_ms + since_start_ms;
    const float value = value_at(boost, boost_period_ms, since_start_ms);
    const float rpm_now = value_at(rpm.samples, rpm.period_ms, time_ms);
    const float throttle_now = value_at(throttle.samples, throttle.period_ms, time_ms);
    const float limit = scaler.Scale(limits_->limit_at(rpm_now));
    const BoostFlagRun::Sample sample = flag_run.step(value, limit, rpm_now, throttle_now);
    write_at(limit_out, index, limit);
    write_at(value_out, index, value);
    write_at(integral_out, index, sample.integral);
    write_at(low_counter_out, index, static_cast<float>(sample.low_counter));
    write_at(high_counter_out, index, static_cast<float>(sample.high_counter));
    write_at(flag_out, index, sample.flag ? 1.0F : 0.0F);
  }
}

std::span<float> BoostLimitCheck::output(i32 place) const {
  if (place < 0) return {};
  return session_->output_samples(static_cast<std::size_t>(place));
}

std::size_t BoostLimitCheck::longest_output() const {
  std::size_t longest = 0;
  for (const i32 place : {outputs_.flag, outputs_.limit, outputs_.value, outputs_.integral, outputs_.low_counter,
                          outputs_.high_counter}) {
    longest = std::max(longest, output(place).size());
  }
  return longest;
}

}  // namespace traguardo
