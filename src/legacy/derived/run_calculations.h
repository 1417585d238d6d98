// SPDX-License-Identifier: MIT
// What is computed run by run from the speed of the drive shaft.
#pragma once

#include <cstddef>

#include "support/bytes.h"

namespace traguardo {

struct WmpSession;

inline constexpr u16 kShaftSensor = 77;

// What turns the shaft's speed into the wheel's: the tooth counts of the two gears between them, and the wheel's
// circumference in whole mm.
struct ShaftDrive {
  i32 low_gear = 0;
  i32 high_gear = 0;
  i32 wheel_mm = 0;
};

// Of the first run; what its record doesn't tell is that of the usual drive.
ShaftDrive drive_of_session(const WmpSession& session);

// Each fills the whole channel; samples that no run covers are 0.0. False, and a channel of 0.0, for a session without
// a logged shaft.

// The wheel's speed in the user's unit: gears of the first run, wheel of each run.
bool compute_geared_speed(WmpSession& session, std::size_t index);
// The wheel's acceleration in g, smoothed: gears and wheel of each run. A run whose record doesn't tell its gears reads
// 0.0.
bool compute_acceleration(WmpSession& session, std::size_t index);
// The shaft's speed over the shaft's first parameter.
bool compute_scaled_speed(WmpSession& session, std::size_t index);

}  // namespace traguardo
