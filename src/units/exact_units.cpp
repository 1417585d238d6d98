// SPDX-License-Identifier: MIT
#include "units/exact_units.h"

#include <map>
#include <string>
#include <utility>

namespace traguardo {
namespace {

struct ExactRow {
  Quantity quantity;
  const char* unit;
  double factor;
  double addend;
};

// clang-format off
constexpr ExactRow kRows[] = {
    {Quantity::kAngle,        "rad",   1.0,                0.0},
    {Quantity::kAngle,        "deg",   0.0174532925199433, 0.0},
    {Quantity::kAngularSpeed, "rad/s", 1.0,                0.0},
    {Quantity::kAngularSpeed, "deg/s", 0.0174532925199433, 0.0},
    {Quantity::kFrequency,    "Hz",    1.0,                0.0},
    {Quantity::kFrequency,    "kHz",   1000.0,             0.0},
    {Quantity::kLength,       "km",    1000.0,             0.0},
    {Quantity::kLength,       "mi",    1609.344,           0.0},
    {Quantity::kLength,       "m",     1.0,                0.0},
    {Quantity::kLength,       "ft",    0.3048,             0.0},
    {Quantity::kLength,       "cm",    0.01,               0.0},
    {Quantity::kLength,       "in",    0.0254,             0.0},
    {Quantity::kLength,       "mm",    0.001,              0.0},
    {Quantity::kPower,        "W",     1.0,                0.0},
    {Quantity::kPower,        "kW",    1000.0,             0.0},
    // The next two and "inHg" run the opposite way from all other rows; conversions have always gone through them so.
    {Quantity::kPower,        "HP",    0.00135962,         0.0},
    {Quantity::kPower,        "CV",    0.00134102,         0.0},
    {Quantity::kPressure,     "bar",   100000.0,           0.0},
    {Quantity::kPressure,     "psi",   6894.757293168362,  0.0},
    {Quantity::kPressure,     "pa",    1.0,                0.0},
    {Quantity::kPressure,     "kPa",   1000.0,             0.0},
    {Quantity::kPressure,     "mbar",  100.0,              0.0},
    {Quantity::kPressure,     "inHg",  0.0000295301,       0.0},
    {Quantity::kTemperature,  "K",     1.0,                0.0},
    {Quantity::kTemperature,  "C",     1.0,                273.15},
    {Quantity::kTemperature,  "F",     0.5555555555555556, 459.67},
    {Quantity::kTime,         "ms",    0.001,              0.0},
    {Quantity::kTime,         "s",     1.0,                0.0},
    {Quantity::kTime,         "min",   60.0,               0.0},
    {Quantity::kTime,         "us",    0.000001,           0.0},
    {Quantity::kTime,         "h",     3600.0,             0.0},
    {Quantity::kSpeed,        "km/h",  0.2777777777777778, 0.0},
    {Quantity::kSpeed,        "mph",   0.44704,            0.0},
    {Quantity::kSpeed,        "m/s",   1.0,                0.0},
    {Quantity::kSpeed,        "ft/s",  0.3048,             0.0},
    {Quantity::kSpeed,        "cm/s",  0.01,               0.0},
    {Quantity::kSpeed,        "m/min", 0.0166666666666667, 0.0},
    {Quantity::kVoltage,      "V",     1.0,                0.0},
    {Quantity::kVoltage,      "mV",    0.001,              0.0},
    {Quantity::kVolume,       "l",     1.0,                0.0},
    {Quantity::kVolume,       "USgal", 3.785412,           0.0},
    {Quantity::kVolume,       "UKgal", 4.54609,            0.0},
};
// clang-format on

struct Factors {
  double to_base;
  double from_base;
  double addend;
};
using FactorMap = std::map<std::pair<Quantity, std::string>, Factors, std::less<>>;

// Both directions, made at first use and shared from then on.
const FactorMap& factors() {
  static const FactorMap map = [] {
    FactorMap made;
    for (const ExactRow& row : kRows) made[{row.quantity, row.unit}] = {row.factor, 1.0 / row.factor, row.addend};
    return made;
  }();
  return map;
}

const Factors* find(Quantity quantity, std::string_view unit) {
  const auto found = factors().find(std::pair<Quantity, std::string>(quantity, unit));
  return found == factors().end() ? nullptr : &found->second;
}

}  // namespace

double exact_factor(Quantity quantity, std::string_view from, std::string_view to) {
  const Factors* source = find(quantity, from);
  const Factors* target = find(quantity, to);
  return source == nullptr || target == nullptr ? 1.0 : source->to_base * target->from_base;
}

double convert_exact(Quantity quantity, std::string_view from, std::string_view to, double value) {
  const Factors* source = find(quantity, from);
  const Factors* target = find(quantity, to);
  if (source == nullptr || target == nullptr) return value;
  return (value + source->addend) * (source->to_base * target->from_base) - target->addend;
}

bool exact_unit(Quantity quantity, std::string_view unit, double* factor, double* addend) {
  const Factors* found = find(quantity, unit);
  if (found == nullptr) return false;
  *factor = found->to_base;
  *addend = found->addend;
  return true;
}

}  // namespace traguardo
