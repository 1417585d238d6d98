// SPDX-License-Identifier: MIT
// Looking a raw value up in one of the sensors' curves.
#pragma once

#include <span>

#include "legacy/sensors/sensor_curves_data.h"

namespace traguardo {

// What every lookup adds.
inline constexpr float kCurveBias = 0.049F;

// Linear inside the segment that holds `raw`, the first and the last segment extended beyond the ends, plus the bias; a
// segment without width gives the bias alone. Single precision: the product of the differences first, then the
// quotient, the value of the segment's first point and the bias. REQUIRES: at least two points, in the order in which
// they are walked.
inline float curve_value(const SensorCurveRow& curve, float raw) {
  const std::span<const CurvePoint> points = curve.points;
  std::size_t segment = 0;
  while (segment + 2 < points.size()) {
    const float next = static_cast<float>(points[segment + 1].raw);
    if (curve.rising ? raw <= next : raw >= next) break;
    ++segment;
  }
  const CurvePoint& from = points[segment];
  const CurvePoint& to = points[segment + 1];
  if (to.raw == from.raw) return kCurveBias;
  const float rise = static_cast<float>(to.value - from.value);
  const float width = static_cast<float>(to.raw - from.raw);
  return (raw - static_cast<float>(from.raw)) * rise / width + static_cast<float>(from.value) + kCurveBias;
}

}  // namespace traguardo
