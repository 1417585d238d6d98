// SPDX-License-Identifier: MIT
#include "simulator/wmp_recording.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "failure.h"
#include "simulator/car.h"
#include "simulator/gps_receiver.h"
#include "simulator/random.h"

namespace traguardo::simulator {

namespace {

constexpr std::uint64_t kCooldownMs = 2000;  // recorded behind the last lap
constexpr std::uint64_t kLongestMs = 3600000000u;
constexpr std::uint64_t kMostSamples = 250000000;
constexpr std::size_t kMostLaps = 32000;

[[noreturn]] void refuse_length() {
  throw tool::Failure("the session is too long for a .wmp file");
}

std::uint64_t whole_seconds(std::uint64_t ms) {
  return (ms + 999) / 1000 * 1000;
}

// The channels of one rate.
struct Beat {
  std::uint64_t period_ms = 1;
  std::vector<std::size_t> channels;
};

class Recorder {
 public:
  Recorder(const SimulationOptions& options, const Circuit& circuit, std::span<const WmpChannel> logged);
  WmpRecording record();

 private:
  void note_passage(double time_s, std::uint64_t tick);
  void note_last_lap();
  void count_second();
  void sample(const Beat& beat, const CarState& car);

  const SimulationOptions& options_;
  std::span<const WmpChannel> logged_;
  Car car_;
  GpsReceiver receiver_;
  std::vector<Random> noise_;
  std::vector<Beat> beats_;
  std::uint64_t samples_ = 0;
  std::uint64_t end_tick_ = 0;  // 0: not known yet
  std::uint32_t lap_start_ms_ = 0;
  WmpRecording recording_;
};

Recorder::Recorder(const SimulationOptions& options, const Circuit& circuit, std::span<const WmpChannel> logged)
    : options_(options), logged_(logged), car_(circuit, options), receiver_(options) {
  recording_.samples.resize(logged.size());
  for (std::size_t i = 0; i < logged.size(); ++i) {
    noise_.emplace_back(options.seed * 1000003u + i + 1);
    const std::uint64_t period_ms = 1000u / static_cast<std::uint64_t>(logged[i].rate_hz);
    const auto same = std::find_if(beats_.begin(), beats_.end(),
                                   [period_ms](const Beat& beat) { return beat.period_ms == period_ms; });
    if (same != beats_.end()) {
      same->channels.push_back(i);
    } else {
      beats_.push_back({period_ms, {i}});
    }
  }
  if (options.minutes > 0) {
    const double seconds = std::max(1.0, std::ceil(options.minutes * 60));
    end_tick_ = static_cast<std::uint64_t>(seconds) * 1000;
  }
}

WmpRecording Recorder::record() {
  for (std::uint64_t tick = 0;; ++tick) {
    const CarState& car = car_.move_to(static_cast<double>(tick) * 0.001);
    for (const Passage& passage : car_.take_passages()) {
      if (passage.split == 0) note_passage(passage.time_s, tick);
    }
    if (end_tick_ != 0 && tick >= end_tick_) break;
    if (tick >= kLongestMs) refuse_length();
    if (tick % 1000 == 0) count_second();
    for (const Beat& beat : beats_) {
      if (tick % beat.period_ms == 0) sample(beat, car);
    }
    if (tick % GpsReceiver::kPeriodMs == 0) {
      const wire::Bytes solution = receiver_.solution(car, tick, static_cast<std::uint32_t>(tick)).record();
      recording_.solutions.insert(recording_.solutions.end(), solution.begin(), solution.end());
    }
  }
  recording_.duration_ms = static_cast<std::uint32_t>(end_tick_);
  if (options_.minutes > 0) note_last_lap();
  return std::move(recording_);
}

void Recorder::note_passage(double time_s, std::uint64_t tick) {
  const bool counts_laps = options_.minutes <= 0;
  if (counts_laps && end_tick_ != 0) return;
  if (recording_.laps.size() == kMostLaps) refuse_length();
  const std::uint32_t end_ms = static_cast<std::uint32_t>(std::floor(time_s * 1000 + 0.5));
  WmpLap lap;
  lap.start_ms = lap_start_ms_;
  lap.time_ms = end_ms - lap_start_ms_;
  recording_.laps.push_back(lap);
  lap_start_ms_ = end_ms;
  const bool is_last = recording_.laps.size() == static_cast<std::size_t>(options_.laps);
  if (counts_laps && is_last) end_tick_ = whole_seconds(tick + kCooldownMs);
}

// The lap that the end cuts.
void Recorder::note_last_lap() {
  if (lap_start_ms_ == recording_.duration_ms) return;
  WmpLap lap;
  lap.start_ms = lap_start_ms_;
  lap.time_ms = recording_.duration_ms - lap_start_ms_;
  lap.complete = false;
  recording_.laps.push_back(lap);
}

void Recorder::count_second() {
  samples_ += static_cast<std::uint64_t>(samples_per_second(logged_));
  if (samples_ > kMostSamples) refuse_length();
}

void Recorder::sample(const Beat& beat, const CarState& car) {
  for (const std::size_t i : beat.channels) {
    recording_.samples[i].push_back(static_cast<float>(measure(logged_[i], i + 1, car, noise_[i])));
  }
}

// Laps count from 1 in each run.
void number_laps(std::vector<WmpLap>& laps, bool several_runs) {
  constexpr std::size_t kMostRuns = 3;
  const std::size_t runs = several_runs ? std::min(kMostRuns, (laps.size() + 1) / 2) : 1;
  const std::size_t laps_per_run = (laps.size() + runs - 1) / runs;
  for (std::size_t i = 0; i < laps.size(); ++i) {
    laps[i].run = static_cast<std::uint32_t>(i / laps_per_run + 1);
    laps[i].number = static_cast<std::uint32_t>(i % laps_per_run + 1);
  }
}

}  // namespace

WmpRecording record_session(const SimulationOptions& options, const Circuit& circuit,
                            std::span<const WmpChannel> logged, bool several_runs) {
  WmpRecording recording = Recorder(options, circuit, logged).record();
  number_laps(recording.laps, several_runs);
  return recording;
}

const WmpLap* best_lap(std::span<const WmpLap> laps) {
  const WmpLap* best = nullptr;
  for (const WmpLap& lap : laps) {
    if (lap.complete && (best == nullptr || lap.time_ms < best->time_ms)) best = &lap;
  }
  return best;
}

}  // namespace traguardo::simulator
