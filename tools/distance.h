// SPDX-License-Identifier: MIT
// How far the car came, from its speed.
#pragma once

#include <optional>

#include "channel_cursor.h"

namespace traguardo::tool {

// The way since a start, along the speed's samples; between two of them the speed changes evenly.
class DistanceWalk {
 public:
  // A speed in a unit of speed, see speed_channel().
  DistanceWalk(const Session& session, const Channel& speed);

  // Distances count from here to the end.
  void start(u64 from_us, u64 to_us);
  // The moment at which the car has come so far, in seconds since the start; nothing if it doesn't within the time.
  // Distances are asked for in ascending order.
  std::optional<double> time_at(double distance_m);

  // One stretch of even change.
  struct Stretch {
    double time_s = 0;  // since the start, as all here
    double distance_m = 0;
    double speed_mps = 0;
    double end_s = 0;
    double end_m = 0;
    double end_mps = 0;
  };
  // False behind the end.
  bool next(Stretch* stretch);

 private:
  double seconds(u64 time_us) const { return static_cast<double>(time_us - from_us_) * 1e-6; }
  double speed_of(const TimedValue& sample) const;

  SampleWalk walk_;
  double factor_;
  u64 from_us_ = 0;
  u64 to_us_ = 0;
  std::optional<TimedValue> last_;
  Stretch stretch_;
  bool is_over_ = false;
};

// The whole way within the time, in metres.
double distance_between(DistanceWalk* walk, u64 from_us, u64 to_us);

// Microseconds of a time that isn't before the file's start.
u64 to_us(double time_s);

}  // namespace traguardo::tool
