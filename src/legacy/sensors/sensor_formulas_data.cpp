#include "legacy/sensors/sensor_formulas_data.h"

#include <limits>

namespace traguardo {
namespace {

using enum SensorFormula;
using enum SystemChoice;

constexpr float kNoLimit = std::numeric_limits<float>::infinity();
constexpr double kNoDoubleLimit = std::numeric_limits<double>::infinity();

// clang-format off
constexpr SensorFormulaRow kSensorFormulas[] = {
    // sensor_id, formula, tests_validity, choice, curve, constant
    {  -1, kPlain,                false, kNone,         0,          0.0f},
    { 337, kPlain,                false, kNone,         0,          0.0f},
    { 338, kPlain,                false, kNone,         0,          0.0f},
    {   0, kEnginePulses,         true,  kNone,         0,          0.0f},
    {   1, kWheelSpeed,           true,  kSpeed,        0,          0.0f},
    {  93, kWheelSpeed,           true,  kSpeed,        0,          0.0f},
    {   5, kThermocouple,         true,  kTemperature,  1,          0.0f},
    {   7, kSpan,                 true,  kNone,         0,          0.0f},
    { 500, kSpan,                 true,  kNone,         0,          0.0f},
    {   8, kTwoSidedSpan,         true,  kNone,         0,          0.0f},
    {  10, kAcceleration,         true,  kNone,         0,          0.0f},
    {  78, kAcceleration,         true,  kNone,         0,          0.0f},
    { 198, kAcceleration,         true,  kNone,         0,          0.0f},
    {  11, kReversedAcceleration, true,  kNone,         0,          0.0f},
    {  79, kReversedAcceleration, true,  kNone,         0,          0.0f},
    {  12, kPiecewiseLambda,      true,  kNone,         0,          0.0f},
    {  17, kTwoPointLine,         true,  kNone,         0, 0.0012207031f},
    {  72, kTwoPointLine,         true,  kNone,         0, 0.0012207031f},
    {  18, kTwoPointLine,         true,  kNone,         0,  0.012207031f},
    {  73, kTwoPointLine,         true,  kNone,         0,  0.012207031f},
    {  46, kTwoPointLine,         true,  kNone,         0,   0.12207031f},
    {  74, kTwoPointLine,         true,  kNone,         0,   0.12207031f},
    {  19, kMultiplier,           false, kNone,         0,          0.0f},
    {  20, kMultiplier,           false, kNone,         0,          0.0f},
    {  70, kMultiplier,           false, kNone,         0,          0.0f},
    {  30, kPotentiometer,        true,  kNone,         0,          0.0f},
    {  38, kPitotTube,            true,  kSpeed,        0,          0.0f},
    {  42, kGyro,                 true,  kNone,         0,          0.0f},
    {  45, kColdJunction,         true,  kTemperature,  0,          0.0f},
    {  52, kVoltsPolynomial,      true,  kPressure,     0,          0.0f},
    {  53, kVoltsPolynomial,      true,  kPressure,     0,          0.0f},
    {  55, kVoltsPolynomial,      true,  kTemperature,  0,          0.0f},
    {  58, kDoublePolynomial,     true,  kNone,         0,          0.0f},
    {  59, kVoltsPolynomial,      true,  kTemperature,  0,          0.0f},
    {  60, kVoltsPolynomial,      true,  kTemperature,  0,          0.0f},
    {  61, kVoltsPolynomial,      true,  kTemperature,  0,          0.0f},
    {  67, kUnsignedWord,         true,  kNone,         0,          0.0f},
    {  68, kBatteryWide,          true,  kNone,         0,          0.0f},
    {  75, kOffsetTemperature,    true,  kTemperature,  0,          0.0f},
    {  76, kBatteryNarrow,        true,  kNone,         0,          0.0f},
    {  77, kShaftPulses,          true,  kNone,         0,          0.0f},
    {  81, kCurve,                true,  kTemperature,  2,          1.0f},
    {  82, kCurve,                true,  kTemperature,  3,          1.0f},
    {  83, kCurve,                true,  kTemperature,  4,          1.0f},
    {  84, kCurve,                true,  kPressure,     5,         10.0f},
    {  85, kCurve,                true,  kTemperature,  6,          1.0f},
    {  87, kCurve,                true,  kNone,         7,       1000.0f},
    {  88, kCurve,                true,  kTemperature,  8,          1.0f},
    {  94, kCurveByScale,         true,  kPressure,     9,          0.0f},
    {  97, kCurveByScale,         true,  kPressure,    10,          0.0f},
    {  86, kUserPolynomial,       true,  kNone,         0,          0.0f},
    {  98, kUserPolynomial,       true,  kNone,         0,          0.0f},
    { 405, kUserPolynomial,       true,  kNone,         0,          0.0f},
    { 413, kUserPolynomial,       true,  kNone,         0,          0.0f},
    { 414, kUserPolynomial,       true,  kNone,         0,          0.0f},
    {1000, kUserPolynomial,       true,  kNone,         0,          0.0f},
    {  89, kVoltsPolynomial,      true,  kPressure,     0,          0.0f},
    {  90, kGearByThresholds,     false, kNone,         0,          0.0f},
    {  91, kTemperatureWord,      true,  kTemperature,  0,          1.0f},
    {  92, kTemperatureWord,      true,  kTemperature,  0,         10.0f},
    {  95, kTemperatureWord,      true,  kTemperature,  0,         10.0f},
    {  96, kTemperatureWord,      true,  kTemperature,  0,         10.0f},
    {  99, kGearByNearest,        false, kNone,         0,          0.0f},
    { 104, kGearByNearest,        false, kNone,         0,          0.0f},
    { 998, kPlain,                false, kNone,         0,          0.0f},
    { 999, kRange,                false, kNone,         0,          0.0f},
};

constexpr WordPolynomialRow kWordPolynomials[] = {
    // sensor_id, below, c0, c1, c2, c3, c4
    {12,   120.0f,    1.39803f, -0.00850618f,  4.44224e-5f,        0.0f,        0.0f},
    {12,   740.0f,   0.990601f, 0.000150707f, -2.59702e-7f,        0.0f,        0.0f},
    {12, kNoLimit,   -3.36867f,   0.0124237f, -8.88982e-6f,        0.0f,        0.0f},
    {52, kNoLimit, -0.3501648f,   1.4955662f,  -0.3378383f,  0.1146052f, -0.0105788f},
    {53, kNoLimit,  -0.399594f,     1.46812f,    0.544192f,  -0.150724f,   0.020045f},
    {55, kNoLimit,    125.782f,    -58.3649f,     8.83473f,  -0.104499f,        0.0f},
    {59, kNoLimit,   154.0259f,   -104.2671f,    46.17218f,  -9.889624f,     0.7854f},
    {60, kNoLimit,   184.6464f,   -139.0944f,    68.66177f,  -15.35789f,   1.223773f},
    {61, kNoLimit,   217.5816f,   -173.7124f,    100.0006f,  -25.64879f,   2.284663f},
    {89, kNoLimit, -0.1193169f,  0.48277232f,  -0.0135828f, 0.00542116f,        0.0f},
};

constexpr DoublePolynomialRow kDoublePolynomials[] = {
    // sensor_id, up_to, c0, c1, c2, c3
    {58,            3.0, -4.94241, 14.9778996,  -5.41755, 0.864796},
    {58, kNoDoubleLimit,  66.1258,   -29.3889, -0.393661,  1.48777},
};

constexpr float kPulseRatios[] = {
    1.0f,
    2.0f,
    3.0f,
    4.0f,
    6.0f,
    0.5f,
    5.0f,
};
// clang-format on

}  // namespace

std::span<const SensorFormulaRow> sensor_formulas() {
  return kSensorFormulas;
}
std::span<const WordPolynomialRow> word_polynomials() {
  return kWordPolynomials;
}
std::span<const DoublePolynomialRow> double_polynomials() {
  return kDoublePolynomials;
}
std::span<const float> pulse_ratios() {
  return kPulseRatios;
}

}  // namespace traguardo
