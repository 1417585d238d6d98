// SPDX-License-Identifier: MIT
#include "legacy/sensors/sensor_gears.h"

#include <array>
#include <bit>
#include <cstdlib>

namespace traguardo {
namespace {

constexpr std::size_t kThresholds = 10;
using Thresholds = std::array<i32, kThresholds>;

// The bytes of the five parameters, read as ten words.
Thresholds thresholds_of(std::span<const float, 5> parameters) {
  Thresholds thresholds{};
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const u32 bits = std::bit_cast<u32>(parameters[i]);
    thresholds[2 * i] = static_cast<i32>(bits & 0xFFFF);
    thresholds[2 * i + 1] = static_cast<i32>(bits >> 16);
  }
  return thresholds;
}

struct Nearest {
  std::size_t gear;
  i32 distance;
};

// The lowest index on a tie; index 0 if no distance lies below the limit.
Nearest nearest_threshold(const Thresholds& thresholds, i32 word, i32 limit) {
  Nearest nearest{0, limit};
  for (std::size_t gear = 0; gear < kThresholds; ++gear) {
    const i32 distance = std::abs(word - thresholds[gear]);
    if (distance < nearest.distance) nearest = {gear, distance};
  }
  return nearest;
}

}  // namespace

void convert_gear_by_thresholds(const FormulaCall& call) {
  constexpr i32 kTooFar = 10000;
  constexpr i32 kConverterRange = 4096;
  const Thresholds thresholds = thresholds_of(call.p);
  for (std::size_t i = 0; i < call.raw.size(); ++i) {
    const i32 word = static_cast<i16>(call.raw[i]);
    std::size_t gear = 0;
    if (word > kConverterRange) {
      gear = kThresholds;
    } else if (word != 0) {
      gear = nearest_threshold(thresholds, word, kTooFar).gear;
    }
    call.out[i] = static_cast<float>(gear) * call.k + call.o;
  }
}

void convert_gear_by_nearest(const FormulaCall& call) {
  constexpr i32 kAnyDistance = 0x20000;
  const Thresholds thresholds = thresholds_of(call.p);
  // Of each side of a threshold; a side without a neighbour keeps what an earlier sample made of it.
  float tolerance_above = 10000.0F;
  float tolerance_below = 10000.0F;
  float previous = 0.0F;
  for (std::size_t i = 0; i < call.raw.size(); ++i) {
    const i32 word = static_cast<i16>(call.raw[i]);
    bool accepted = true;
    std::size_t gear = 0;
    if (word >= 0) {
      const Nearest nearest = nearest_threshold(thresholds, word, kAnyDistance);
      gear = nearest.gear;
      const i32 threshold = thresholds[gear];
      const bool above = word > threshold;
      if (above && gear + 1 < kThresholds) {
        tolerance_above = static_cast<float>(std::abs(thresholds[gear + 1] - threshold)) / 4.0F;
      } else if (!above && gear > 0) {
        tolerance_below = static_cast<float>(std::abs(threshold - thresholds[gear - 1])) / 4.0F;
      }
      const float tolerance = above ? tolerance_above : tolerance_below;
      accepted = tolerance < 1.0F || static_cast<float>(nearest.distance) <= tolerance;
    }
    if (accepted) previous = static_cast<float>(gear) * call.k + call.o;
    call.out[i] = previous;
  }
}

}  // namespace traguardo
