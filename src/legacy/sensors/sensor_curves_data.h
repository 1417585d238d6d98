// SPDX-License-Identifier: MIT
// The ten curves of the sensors that have no closed formula. `CDBSensori` makes a map by number of them, as its last
// table; `CSensori` looks raw values up in them.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

struct CurvePoint {
  i32 raw;    // counts of the logger's converter
  i32 value;  // in the unit that the sensor's formula makes of it
};

// Points stand as they are walked: curves that rise in raw value from low to high, the others from high raw to low raw.
// A lookup interpolates linearly inside the segment that holds the raw value, extends the first and the last segment
// beyond the ends, and adds 0.049.
struct SensorCurveRow {
  i32 number;
  bool rising;  // raw values ascend
  std::span<const CurvePoint> points;
};

// By number, 1 to 10.
std::span<const SensorCurveRow> sensor_curves();

}  // namespace traguardo
