// SPDX-License-Identifier: MIT
// The formulas that `CSensori::ConvertiCampioni` runs, and the coefficients in which sensors of one formula differ. The
// formulas themselves, with the constants that only one of them has, are code.
//
// In what follows u is the raw word as unsigned, x the same word as signed, both as f32; r = x * 0.0012207031, the
// volts at the converter; k and o are scale and offset of the conversion; p0 to p4 the channel's parameters; T(v), P(v)
// and S(v) what the user's system choices make of a temperature, a pressure and a speed.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

enum class SensorFormula : u8 {
  kPlain,                 // u k + o
  kEnginePulses,          // u k' + o, k' from the pulses per revolution
  kWheelSpeed,            // u / 10 k' + o, k' from wheel and magnets
  kThermocouple,          // T(sign of x * curve(|x|)) k + o
  kSpan,                  // (x - p0) k / d + o
  kTwoSidedSpan,          // zero at p0, one gain on each side
  kAcceleration,          // (x - p0) k / 437 + o
  kReversedAcceleration,  // o - (x - p0) k / 437
  kPiecewiseLambda,       // word_polynomials() in m = r * 1000, by range of m; then k + o
  kTwoPointLine,          // (x constant a + b) k + o, line through (p0, p1) and (p2, p3)
  kMultiplier,            // x p0 k + o
  kPotentiometer,         // (x - p0) (p1 / p2 k) + o
  kPitotTube,             // from the square root of a pressure
  kGyro,                  // (x - p0) times a constant, + o
  kColdJunction,          // T of the logger's own temperature
  kVoltsPolynomial,       // choice(word_polynomials() in r) k + o
  kDoublePolynomial,      // double_polynomials() in r, by range of r; then k + o
  kUnsignedWord,          // u k + o
  kBatteryWide,           // volts, 22.5 full scale
  kOffsetTemperature,     // T((1040 - x) / 4.9152 + 25) k + o
  kBatteryNarrow,         // volts, 12.25 full scale
  kShaftPulses,           // x k' + o, k' from the pulses per shaft revolution
  kCurve,                 // choice(curve(x) / constant) k + o
  kCurveByScale,          // curve(x) P(k * 0.001) + o
  kUserPolynomial,        // polynomial in x * 1.2207031 with p0 to p4
  kGearByThresholds,      // ten u16 thresholds in place of p0 to p4, nearest one
  kTemperatureWord,       // T(x / constant) k + o
  kGearByNearest,         // ten thresholds with a tolerance
  kRange,                 // (u (p1 - p0) / 65535 + p0) k + o
};

// The one of the user's three system choices that a formula listens to when the channel has no descriptor.
enum class SystemChoice : u8 { kNone, kTemperature, kPressure, kSpeed };

// Coefficients of kVoltsPolynomial (one row a sensor, any r) and kPiecewiseLambda (rows by ascending limit). Order of
// the sum, single precision, powers first: c1 v + c0 + c2 v^2 + c3 v^3 + c4 v^4.
struct WordPolynomialRow {
  i32 sensor_id;
  float below;  // serves values below this, and at or above the limit of the row before
  float c0;
  float c1;
  float c2;
  float c3;
  float c4;
};

// Coefficients of kDoublePolynomial, the same in double precision, r being x * 0.001220703125.
struct DoublePolynomialRow {
  i32 sensor_id;
  double up_to;  // serves values up to and with this, and above the limit of the row before
  double c0;
  double c1;
  double c2;
  double c3;
};

std::span<const WordPolynomialRow> word_polynomials();
std::span<const DoublePolynomialRow> double_polynomials();

// Pulses per engine revolution by the index in a parameter, for kEnginePulses: k' = k R[p0] / R[p3] of a channel whose
// calibration was changed after logging.
std::span<const float> pulse_ratios();

}  // namespace traguardo
