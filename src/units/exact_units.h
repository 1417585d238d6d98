// SPDX-License-Identifier: MIT
// Conversions between units by exact factors, apart from the catalogue's rounded ones.
#pragma once

#include <string_view>

namespace traguardo {

enum class Quantity {
  kAngle,
  kAngularSpeed,
  kFrequency,
  kLength,
  kPower,
  kPressure,
  kTemperature,
  kTime,
  kSpeed,
  kVoltage,
  kVolume,
};
inline constexpr int kQuantityCount = 11;

// The factor of one unit to another: the first one's factor to the base times the inverse factor of the second. 1.0
// where the quantity lacks one of them.
double exact_factor(Quantity quantity, std::string_view from, std::string_view to);
// `value` in the other unit; for temperatures the distance to the base is added and taken off. The value itself where
// the quantity lacks one of the units.
double convert_exact(Quantity quantity, std::string_view from, std::string_view to, double value);

// Factor and addend of a unit to the base of its quantity: base = (value + addend) * factor. False for an unknown unit.
bool exact_unit(Quantity quantity, std::string_view unit, double* factor, double* addend);

}  // namespace traguardo
