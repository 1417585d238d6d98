// SPDX-License-Identifier: MIT
#include "legacy/sensors/inverse_formulas_data.h"

namespace traguardo {
namespace {

using enum InverseFormula;

// clang-format off
constexpr SensorReplacementRow kSensorReplacements[] = {
    // sensor_id, replacement
    {54, 82},
    {56, 84},
};

constexpr MeasureClassRow kInverseMeasureClasses[] = {
    // sensor_id, measure_class
    {   5, 2},
    {   1, 3},
    {  38, 3},
    {  93, 3},
    {   0, 4},
    {  67, 5},
    {  52, 6},
    {  53, 6},
    {  72, 6},
    {  73, 6},
    {  74, 6},
    {  89, 6},
    {  77, 7},
    {   7, 1},
    {   8, 1},
    {  10, 1},
    {  11, 1},
    {  12, 1},
    {  17, 1},
    {  18, 1},
    {  30, 1},
    {  42, 1},
    {  45, 1},
    {  46, 1},
    {  55, 1},
    {  58, 1},
    {  59, 1},
    {  60, 1},
    {  61, 1},
    {  68, 1},
    {  70, 1},
    {  75, 1},
    {  76, 1},
    {  78, 1},
    {  79, 1},
    {  81, 1},
    {  82, 1},
    {  83, 1},
    {  84, 1},
    {  85, 1},
    {  86, 1},
    {  87, 1},
    {  88, 1},
    {  90, 1},
    {  91, 1},
    {  92, 1},
    {  94, 1},
    {  95, 1},
    {  96, 1},
    {  97, 1},
    {1000, 1},
};

constexpr InverseFormulaRow kInverseFormulas[] = {
    // sensor_id, formula, a, b
    {              0, kWord,                      0.0f,          0.0f},
    {            998, kWord,                      0.0f,          0.0f},
    {              1, kTimes,                    10.0f,          0.0f},
    {              5, kDividedMultiplier,         0.1f,          0.0f},
    {             14, kDividedMultiplier,         0.1f,          0.0f},
    {             57, kDividedMultiplier,         0.1f,          0.0f},
    {              7, kDividedMultiplier,        0.01f,          0.0f},
    {             30, kDividedMultiplier,        0.01f,          0.0f},
    {             54, kDividedMultiplier,        0.01f,          0.0f},
    {             55, kDividedMultiplier,        0.01f,          0.0f},
    {             56, kDividedMultiplier,        0.01f,          0.0f},
    {             59, kDividedMultiplier,        0.01f,          0.0f},
    {             60, kDividedMultiplier,        0.01f,          0.0f},
    {             61, kDividedMultiplier,        0.01f,          0.0f},
    {             12, kDividedMultiplier,       0.001f,          0.0f},
    {             52, kDividedMultiplier,       0.001f,          0.0f},
    {             53, kDividedMultiplier,       0.001f,          0.0f},
    {             58, kDividedMultiplier,       0.001f,          0.0f},
    {              8, kTwoSidedSpan,              0.0f,          0.0f},
    {              9, kPressureSpan,              0.0f,          0.0f},
    {             10, kTimesFromZero,           437.0f,          0.0f},
    {             78, kTimesFromZero,           437.0f,          0.0f},
    {            198, kTimesFromZero,           437.0f,          0.0f},
    {             11, kTimesBelowZero,          437.0f,          0.0f},
    {             79, kTimesBelowZero,          437.0f,          0.0f},
    {             17, kFullScale,              4096.0f,          5.0f},
    {             18, kFullScale,              4096.0f,         50.0f},
    {             46, kFullScale,              4096.0f,        500.0f},
    {             38, kPitotTube,           50.399998f,          0.0f},
    {             42, kGyro,              0.028082998f, 0.0012207031f},
    {             45, kColdJunction,           273.15f,         0.01f},
    {             68, kFullScale,              4096.0f,         22.5f},
    {            999, kRange,                 65535.0f,          0.0f},
    {kAnyOtherSensor, kDividedOnly,              0.01f,          0.0f},
};
// clang-format on

}  // namespace

std::span<const SensorReplacementRow> sensor_replacements() {
  return kSensorReplacements;
}
std::span<const MeasureClassRow> inverse_measure_classes() {
  return kInverseMeasureClasses;
}
std::span<const InverseFormulaRow> inverse_formulas() {
  return kInverseFormulas;
}

}  // namespace traguardo
