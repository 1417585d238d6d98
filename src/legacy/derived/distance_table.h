// SPDX-License-Identifier: MIT
// Distance over time, worked out from a speed: one entry per 100 ms from the start of the session.
#pragma once

#include <span>
#include <vector>

#include "legacy/file/records.h"
#include "support/bytes.h"

namespace traguardo {

struct SpeedTrace {
  std::span<const float> speeds;  // in the user's unit
  u32 period_ms = 0;
  u32 frequency_hz = 0;
  float metres_per_second = 0.0F;  // per user unit of speed
  float units_per_metre = 0.0F;    // user units of length
  // A logger with a receiver of its own: it knows a standstill, and notes the receiver's speed once a second, whatever
  // rate the channel has.
  bool from_receiver_logger = false;
  bool is_receiver_speed = false;
};

// Rising entries in the user's unit of length, two more than the speed has tenths of a second. Empty for fewer than two
// samples, a trace without a rate, and one that covers less than 100 units.
std::vector<float> make_distance_table(const SpeedTrace& trace);

// What a lap covers: times in ms, distances in the user's length unit (0 without a distance table).
struct WmpLapRow {
  u32 start_ms = 0;
  u32 length_ms = 0;
  float distance_at_start = 0.0F;
  float distance_covered = 0.0F;
};

class DistanceTable {
 public:
  DistanceTable() = default;
  DistanceTable(std::vector<float> entries, std::span<const WmpLapRecord> laps);

  bool empty() const { return entries_.empty(); }
  std::span<const float> entries() const { return entries_; }
  // Between two entries in a straight line; behind the last but one, the last stretch over again. 0 for an empty table.
  float at(u32 time_ms) const;
  std::span<const WmpLapRow> laps() const { return laps_; }

 private:
  std::vector<float> entries_;
  std::vector<WmpLapRow> laps_;
};

}  // namespace traguardo
