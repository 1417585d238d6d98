// SPDX-License-Identifier: MIT
// Units of the channels of sensor 999, which store their unit as a text. `CWMP::ConvertiCanale` scales such a channel
// to the unit that the user wants, and `CWMPMisura` shows that unit.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

enum class StoredQuantity : u8 { kTemperature, kSpeed, kSmallLength, kVoltage, kPressure, kVolume, kRotation };

// The quantity of a stored unit. A text without a row has none: the values stay, and the text is shown as it stands.
struct StoredUnitRow {
  const char* unit;  // the unit field up to its NUL, 8-bit
  StoredQuantity quantity;
};

// When a rule applies: the user settings hold a target text for the channel's name and quantity and it equals `target`;
// or they hold none, and the system choice of the quantity (length and speed are one choice) decides.
enum class UnitRule : u8 { kTarget, kNoTargetMetric, kNoTargetImperial };

enum class UnitStep : u8 {
  kNone,
  kMultiply,      // v * number
  kDivide,        // v / number
  kToFahrenheit,  // v * 9 / 5 + 32
  kToCelsius,     // (v - 32) * 5 / 9
};

// What a rule does to each value: two steps, one behind the other. No row for a unit, a rule and a target: values stay.
struct StoredUnitRuleRow {
  const char* unit;
  UnitRule rule;
  const char* target;  // nullptr unless the rule is kTarget
  UnitStep first_step;
  float first;
  UnitStep second_step;
  float second;
};

std::span<const StoredUnitRow> stored_units();
std::span<const StoredUnitRuleRow> stored_unit_rules();

}  // namespace traguardo
