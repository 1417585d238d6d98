// SPDX-License-Identifier: MIT
// Single precision, in the order in which it stands: an hour of small steps ends where each of them was rounded.
#include "legacy/derived/distance_table.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

namespace traguardo {
namespace {

constexpr u64 kEntryMs = 100;
constexpr u32 kEntriesPerSecond = 10;
// A standing vehicle creeps, so that distances rise and can be searched.
constexpr float kStandstill = 0.001F;
constexpr float kKnownStandstill = 1e-6F;

class DistanceBuilder {
 public:
  explicit DistanceBuilder(const SpeedTrace& trace)
      : trace_(trace),
        entries_(static_cast<std::size_t>(trace.speeds.size() * u64{trace.period_ms} / kEntryMs) + 2, 0.0F) {}

  std::vector<float> build() {
    constexpr float kShortest = 100.0F;
    constexpr float kRise = 0.001F;
    if (trace_.frequency_hz >= kEntriesPerSecond) {
      walk_samples();
      extend_line();
    } else if (trace_.from_receiver_logger && trace_.is_receiver_speed) {
      walk_seconds();
    } else {
      walk_entries();
    }
    const float total = metres_ * trace_.units_per_metre;
    if (!(total >= kShortest)) return {};
    for (u32 k = 1; filled_ < entries_.size(); ++k) append(total + static_cast<float>(k) * kRise);
    return std::move(entries_);
  }

 private:
  // Slower than the table: each entry takes the sample that stands at its time.
  void walk_entries() {
    for (u64 step = 0; step + 2 < entries_.size(); ++step) {
      const std::size_t sample = static_cast<std::size_t>(step * kEntryMs / trace_.period_ms);
      float speed = trace_.metres_per_second * trace_.speeds[sample];
      if (!trace_.from_receiver_logger) {
        speed = std::max(kStandstill, speed);
      } else if (speed <= kStandstill) {
        speed = kKnownStandstill;
      }
      metres_ += speed / 10.0F;
      append(metres_ * trace_.units_per_metre);
    }
  }

  // Only the samples of whole seconds are new ones.
  void walk_seconds() {
    for (u64 second = 0;; ++second) {
      const u64 sample = second * 1000 / trace_.period_ms;
      if (sample >= trace_.speeds.size()) return;
      float speed = trace_.speeds[static_cast<std::size_t>(sample)];
      if (speed <= kStandstill) speed = kKnownStandstill;
      for (u32 i = 0; i < kEntriesPerSecond && filled_ + 1 < entries_.size(); ++i) {
        metres_ += trace_.metres_per_second * speed / 10.0F;
        // In metres, whatever the user's unit.
        append(metres_);
      }
    }
  }

  void walk_samples() {
    const float frequency = static_cast<float>(trace_.frequency_hz);
    const u32 samples_per_entry = trace_.frequency_hz / kEntriesPerSecond;
    u32 until_entry = samples_per_entry;
    for (const float sample : trace_.speeds) {
      metres_ += std::max(kStandstill, trace_.metres_per_second * sample) / frequency;
      if (--until_entry > 0) continue;
      until_entry = samples_per_entry;
      append(metres_ * trace_.units_per_metre);
    }
  }

  void extend_line() {
    while (filled_ >= 2 && filled_ < entries_.size()) append(2.0F * entries_[filled_ - 1] - entries_[filled_ - 2]);
  }

  void append(float distance) {
    if (filled_ < entries_.size()) entries_[filled_++] = distance;
  }

  const SpeedTrace& trace_;
  std::vector<float> entries_;
  std::size_t filled_ = 1;  // the first entry is the start
  float metres_ = 0.0F;
};

}  // namespace

std::vector<float> make_distance_table(const SpeedTrace& trace) {
  // A channel without a rate covers 32 seconds a sample: a table of it would be far bigger than the file.
  if (trace.speeds.size() < 2 || trace.frequency_hz == 0 || trace.period_ms == 0) return {};
  return DistanceBuilder(trace).build();
}

DistanceTable::DistanceTable(std::vector<float> entries, std::span<const WmpLapRecord> laps)
    : entries_(std::move(entries)) {
  laps_.reserve(laps.size());
  for (const WmpLapRecord& lap : laps) {
    const u64 end_ms = std::min<u64>(u64{lap.start_ms()} + lap.time_ms(), std::numeric_limits<u32>::max());
    const float distance_at_start = at(lap.start_ms());
    laps_.push_back(
        {lap.start_ms(), lap.time_ms(), distance_at_start, at(static_cast<u32>(end_ms)) - distance_at_start});
  }
}

float DistanceTable::at(u32 time_ms) const {
  if (entries_.size() < 2) return 0.0F;
  const std::size_t entry = static_cast<std::size_t>(time_ms / kEntryMs);
  const float from = entries_[std::min(entry, entries_.size() - 2)];
  const float to = entries_[std::min(entry + 1, entries_.size() - 1)];
  return from + (to - from) * static_cast<float>(time_ms % kEntryMs) * 0.01F;
}

}  // namespace traguardo
