// What raw words of the legacy family's sensors become.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "support/bytes.h"

namespace traguardo::test {

// Bits of `imperial`: which of the user's three system choices are imperial.
inline constexpr u8 kMetric = 0;
inline constexpr u8 kSpeed = 1;
inline constexpr u8 kTemperature = 2;
inline constexpr u8 kPressure = 4;
inline constexpr u8 kAll = 7;

struct SensorSample {
  u16 word;
  float value;
};

struct SensorExpectation {
  i32 sensor_id;
  u8 imperial;
  std::array<u8, 10> unit;  // the unit field
  std::array<float, 5> parameters;
  std::vector<SensorSample> samples;
};

// Gear sensors aside: what they make of a word depends on the words before.
std::span<const SensorExpectation> sensor_expectations();

}  // namespace traguardo::test
