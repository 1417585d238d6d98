// SPDX-License-Identifier: MIT
#include "legacy/sensors/stored_units_data.h"

namespace traguardo {
namespace {

// clang-format off
constexpr StoredUnitRow kStoredUnits[] = {
    // unit, quantity
    {"C",        StoredQuantity::kTemperature},
    {"\xB0" "C", StoredQuantity::kTemperature},
    {"F",        StoredQuantity::kTemperature},
    {"\xB0" "F", StoredQuantity::kTemperature},
    {"mm",       StoredQuantity::kSmallLength},
    {"in",       StoredQuantity::kSmallLength},
    {"mV",       StoredQuantity::kVoltage},
    {"V",        StoredQuantity::kVoltage},
    {"km/h",     StoredQuantity::kSpeed},
    {"mph",      StoredQuantity::kSpeed},
    {"bar",      StoredQuantity::kPressure},
    {"PSI",      StoredQuantity::kPressure},
    {"psi",      StoredQuantity::kPressure},
    {"mbar",     StoredQuantity::kPressure},
    {"kPa",      StoredQuantity::kPressure},
    {"l",        StoredQuantity::kVolume},
    {"gal",      StoredQuantity::kVolume},
    {"USgal",    StoredQuantity::kVolume},
    {"UKgal",    StoredQuantity::kVolume},
    {"deg/s",    StoredQuantity::kRotation},
    {"rad/s",    StoredQuantity::kRotation},
    {"rpm",      StoredQuantity::kRotation},
};

constexpr StoredUnitRuleRow kStoredUnitRules[] = {
    // unit, rule, target, first_step, first, second_step, second
    {"C",        UnitRule::kTarget,           "\xB0" "F", UnitStep::kToFahrenheit,       0.0f, UnitStep::kNone,         0.0f},
    {"C",        UnitRule::kNoTargetImperial, nullptr,    UnitStep::kToFahrenheit,       0.0f, UnitStep::kNone,         0.0f},
    {"\xB0" "C", UnitRule::kTarget,           "\xB0" "F", UnitStep::kToFahrenheit,       0.0f, UnitStep::kNone,         0.0f},
    {"\xB0" "C", UnitRule::kNoTargetImperial, nullptr,    UnitStep::kToFahrenheit,       0.0f, UnitStep::kNone,         0.0f},
    {"F",        UnitRule::kTarget,           "C",        UnitStep::kToCelsius,          0.0f, UnitStep::kNone,         0.0f},
    {"F",        UnitRule::kNoTargetMetric,   nullptr,    UnitStep::kToCelsius,          0.0f, UnitStep::kNone,         0.0f},
    {"\xB0" "F", UnitRule::kTarget,           "C",        UnitStep::kToCelsius,          0.0f, UnitStep::kNone,         0.0f},
    {"\xB0" "F", UnitRule::kNoTargetMetric,   nullptr,    UnitStep::kToCelsius,          0.0f, UnitStep::kNone,         0.0f},
    {"mm",       UnitRule::kTarget,           "in",       UnitStep::kDivide,            25.4f, UnitStep::kNone,         0.0f},
    {"mm",       UnitRule::kNoTargetImperial, nullptr,    UnitStep::kDivide,            25.4f, UnitStep::kNone,         0.0f},
    {"in",       UnitRule::kTarget,           "mm",       UnitStep::kMultiply,          25.4f, UnitStep::kNone,         0.0f},
    {"in",       UnitRule::kNoTargetMetric,   nullptr,    UnitStep::kMultiply,          25.4f, UnitStep::kNone,         0.0f},
    {"mV",       UnitRule::kTarget,           "V",        UnitStep::kMultiply,         0.001f, UnitStep::kNone,         0.0f},
    {"V",        UnitRule::kTarget,           "mV",       UnitStep::kMultiply,        1000.0f, UnitStep::kNone,         0.0f},
    {"km/h",     UnitRule::kTarget,           "mph",      UnitStep::kDivide,        1.609344f, UnitStep::kNone,         0.0f},
    {"km/h",     UnitRule::kNoTargetImperial, nullptr,    UnitStep::kDivide,        1.609344f, UnitStep::kNone,         0.0f},
    {"mph",      UnitRule::kTarget,           "km/h",     UnitStep::kMultiply,      1.609344f, UnitStep::kNone,         0.0f},
    {"mph",      UnitRule::kNoTargetMetric,   nullptr,    UnitStep::kMultiply,      1.609344f, UnitStep::kNone,         0.0f},
    {"bar",      UnitRule::kTarget,           "PSI",      UnitStep::kMultiply,       14.5039f, UnitStep::kNone,         0.0f},
    {"bar",      UnitRule::kTarget,           "psi",      UnitStep::kMultiply,       14.5039f, UnitStep::kNone,         0.0f},
    {"bar",      UnitRule::kTarget,           "mbar",     UnitStep::kMultiply,        1000.0f, UnitStep::kNone,         0.0f},
    {"bar",      UnitRule::kTarget,           "kPa",      UnitStep::kMultiply,         100.0f, UnitStep::kNone,         0.0f},
    {"bar",      UnitRule::kNoTargetImperial, nullptr,    UnitStep::kMultiply,       14.5039f, UnitStep::kNone,         0.0f},
    {"PSI",      UnitRule::kTarget,           "bar",      UnitStep::kDivide,         14.5039f, UnitStep::kNone,         0.0f},
    {"PSI",      UnitRule::kTarget,           "mbar",     UnitStep::kMultiply,        1000.0f, UnitStep::kDivide,   14.5039f},
    {"PSI",      UnitRule::kTarget,           "kPa",      UnitStep::kMultiply,         100.0f, UnitStep::kDivide,   14.5039f},
    {"PSI",      UnitRule::kNoTargetMetric,   nullptr,    UnitStep::kDivide,         14.5039f, UnitStep::kNone,         0.0f},
    {"psi",      UnitRule::kTarget,           "bar",      UnitStep::kDivide,         14.5039f, UnitStep::kNone,         0.0f},
    {"psi",      UnitRule::kTarget,           "mbar",     UnitStep::kMultiply,        1000.0f, UnitStep::kDivide,   14.5039f},
    {"psi",      UnitRule::kTarget,           "kPa",      UnitStep::kMultiply,         100.0f, UnitStep::kDivide,   14.5039f},
    {"psi",      UnitRule::kNoTargetMetric,   nullptr,    UnitStep::kDivide,         14.5039f, UnitStep::kNone,         0.0f},
    {"mbar",     UnitRule::kTarget,           "bar",      UnitStep::kMultiply,         0.001f, UnitStep::kNone,         0.0f},
    {"mbar",     UnitRule::kTarget,           "kPa",      UnitStep::kDivide,            10.0f, UnitStep::kNone,         0.0f},
    {"mbar",     UnitRule::kTarget,           "PSI",      UnitStep::kMultiply,         0.001f, UnitStep::kMultiply, 14.5039f},
    {"mbar",     UnitRule::kTarget,           "psi",      UnitStep::kMultiply,         0.001f, UnitStep::kMultiply, 14.5039f},
    {"mbar",     UnitRule::kNoTargetMetric,   nullptr,    UnitStep::kMultiply,         0.001f, UnitStep::kNone,         0.0f},
    {"mbar",     UnitRule::kNoTargetImperial, nullptr,    UnitStep::kMultiply,         0.001f, UnitStep::kMultiply, 14.5039f},
    {"kPa",      UnitRule::kTarget,           "mbar",     UnitStep::kMultiply,          10.0f, UnitStep::kNone,         0.0f},
    {"kPa",      UnitRule::kTarget,           "bar",      UnitStep::kMultiply,          0.01f, UnitStep::kNone,         0.0f},
    {"kPa",      UnitRule::kTarget,           "PSI",      UnitStep::kMultiply,          0.01f, UnitStep::kMultiply, 14.5039f},
    {"kPa",      UnitRule::kTarget,           "psi",      UnitStep::kMultiply,          0.01f, UnitStep::kMultiply, 14.5039f},
    {"kPa",      UnitRule::kNoTargetMetric,   nullptr,    UnitStep::kMultiply,          0.01f, UnitStep::kNone,         0.0f},
    {"kPa",      UnitRule::kNoTargetImperial, nullptr,    UnitStep::kMultiply,          0.01f, UnitStep::kMultiply, 14.5039f},
    {"l",        UnitRule::kTarget,           "gal",      UnitStep::kMultiply,      0.264172f, UnitStep::kNone,         0.0f},
    {"l",        UnitRule::kTarget,           "USgal",    UnitStep::kMultiply,      0.264172f, UnitStep::kNone,         0.0f},
    {"l",        UnitRule::kTarget,           "UKgal",    UnitStep::kMultiply,      0.219969f, UnitStep::kNone,         0.0f},
    {"gal",      UnitRule::kTarget,           "l",        UnitStep::kDivide,        0.264172f, UnitStep::kNone,         0.0f},
    {"gal",      UnitRule::kTarget,           "UKgal",    UnitStep::kMultiply,     0.8326735f, UnitStep::kNone,         0.0f},
    {"USgal",    UnitRule::kTarget,           "l",        UnitStep::kDivide,        0.264172f, UnitStep::kNone,         0.0f},
    {"USgal",    UnitRule::kTarget,           "UKgal",    UnitStep::kMultiply,     0.8326735f, UnitStep::kNone,         0.0f},
    {"UKgal",    UnitRule::kTarget,           "l",        UnitStep::kDivide,        0.219969f, UnitStep::kNone,         0.0f},
    {"UKgal",    UnitRule::kTarget,           "gal",      UnitStep::kMultiply,      1.200951f, UnitStep::kNone,         0.0f},
    {"UKgal",    UnitRule::kTarget,           "USgal",    UnitStep::kMultiply,      1.200951f, UnitStep::kNone,         0.0f},
    {"deg/s",    UnitRule::kTarget,           "rpm",      UnitStep::kMultiply,       0.16667f, UnitStep::kNone,         0.0f},
    {"deg/s",    UnitRule::kTarget,           "rad/s",    UnitStep::kMultiply,       0.01745f, UnitStep::kNone,         0.0f},
    {"rad/s",    UnitRule::kTarget,           "rpm",      UnitStep::kMultiply,        9.5493f, UnitStep::kNone,         0.0f},
    {"rad/s",    UnitRule::kTarget,           "deg/s",    UnitStep::kMultiply,      57.29578f, UnitStep::kNone,         0.0f},
    {"rpm",      UnitRule::kTarget,           "deg/s",    UnitStep::kMultiply,           6.0f, UnitStep::kNone,         0.0f},
    {"rpm",      UnitRule::kTarget,           "rad/s",    UnitStep::kMultiply,       0.10472f, UnitStep::kNone,         0.0f},
};
// clang-format on

}  // namespace

std::span<const StoredUnitRow> stored_units() {
  return kStoredUnits;
}
std::span<const StoredUnitRuleRow> stored_unit_rules() {
  return kStoredUnitRules;
}

}  // namespace traguardo
