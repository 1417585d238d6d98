// SPDX-License-Identifier: MIT
// What `CWMPMisura` looks up by sensor id: old unit fields, labels of the parameters, and what a setter
// does.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

// Constructor: bytes 1 to 5 of the unit field of old records whose first unit byte is 11, in the form with first
// byte 9. Sensor 600 is rewritten by a rule and has no row.
struct RewrittenUnitRow {
  i32 sensor_id;
  const char* digits;  // four of the unit id, one of the decimals
};

// Label of one parameter of a sensor. Display texts: nothing computes by them.
struct ParameterLabelRow {
  u8 parameter;  // 0 to 4, p0 to p4
  i32 sensor_id;
  const char* text;
  const char* id;
  const char* imperial_text;  // nullptr: the same
  const char* imperial_id;
};
inline constexpr const char* kUnusedParameterText = "Parameter not used.";  // no row
inline constexpr const char* kUnusedParameterId = "MSG_PARNOTUSED";
// Sensor 90: each parameter shows two of the ten thresholds, as index, value, index, value.
inline constexpr const char* kGearLabelFormat = "[%d] %d - [%d] %d";

// What `SetParametro_1` to `SetParametro_5` do with a value. A changed calibration is marked by p2 = -666.
enum class SetterEffect : u8 {
  kPulses,         // 0 to 6 becomes p3, p2 = -666; a value equal to p0 clears p2 instead
  kCircumference,  // value * small length factor, at least 10, becomes p3; p2 = -666; p4 takes p1 if it wasn't marked
  kMagnets,        // value, at least 1, cut to a whole number, becomes p4; p2 = -666; p3 takes p0 if it wasn't marked
  kParameter,      // the value becomes the parameter
  kAtLeastZero,    // the same, held to 0 or above
  kAtMostZero,     // the same, held to 0 or below
};
struct SetterRow {
  u8 operation;  // 1 to 5: `SetParametro_1` to `SetParametro_5`
  i32 sensor_id;
  SetterEffect effect;
  u8 parameter;  // index of the parameter that takes the value
};

// What a setter does for a sensor without a row: a log line, and no change of the record.
struct SetterRefusalRow {
  u8 operation;
  const char* function;  // as the log names it
  const char* line;      // format of the log line, with the sensor id
  bool converts;         // runs the conversion nevertheless
};

std::span<const RewrittenUnitRow> rewritten_units();
std::span<const ParameterLabelRow> parameter_labels();
std::span<const SetterRow> setters();
std::span<const SetterRefusalRow> setter_refusals();

}  // namespace traguardo
