// SPDX-License-Identifier: MIT
// How the values of versions 100 to 320 become raw words again: what `CSensori::RicavaCampioni` looks up.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

// First step: a sensor id that the later versions don't have becomes another one.
struct SensorReplacementRow {
  i32 sensor_id;
  i32 replacement;
};

// Second step: the measure class by (replaced) sensor id; a sensor without a row has class kOtherMeasureClass.
struct MeasureClassRow {
  i32 sensor_id;
  u16 measure_class;
};
inline constexpr u16 kOtherMeasureClass = 1;

// Third step: what a value v becomes. Products and quotients run from left to right; the result is cut to a whole
// number and then to 16 bits. p0 to p4 are the channel's parameters.
enum class InverseFormula : u8 {
  kWord,               // v
  kTimes,              // v a
  kDividedMultiplier,  // v / a; then the channel is sensor 70, class 1, with p0 = a and its other parameters 0
  kTwoSidedSpan,       // by the gain of the side of zero that v * small length factor lies on
  kPressureSpan,       // v * pressure factor * p2 / p1 + p0
  kTimesFromZero,      // v a + p0
  kTimesBelowZero,     // p0 - v a
  kFullScale,          // v a / b: a counts, b full scale in the channel's unit
  kPitotTube,          // w = v / long distance factor / (p3 a); w^2 (p1 - p0) / p2 + p0
  kGyro,               // v a / b + p0
  kColdJunction,       // ((v - temperature offset) / temperature scale + a) b * 4096 / 5
  kRange,              // (v - p0) a / (p1 - p0), 0 where p1 = p0
  kDividedOnly,        // v / a; then p0 = a and the other parameters 0, sensor and class stay
};
inline constexpr i32 kAnyOtherSensor = -1;

struct InverseFormulaRow {
  i32 sensor_id;  // kAnyOtherSensor in the last row
  InverseFormula formula;
  float a;  // 0 where the formula has none
  float b;
};

std::span<const SensorReplacementRow> sensor_replacements();
std::span<const MeasureClassRow> inverse_measure_classes();
std::span<const InverseFormulaRow> inverse_formulas();

}  // namespace traguardo
