// SPDX-License-Identifier: MIT
#include "legacy/sensors/sensors.h"

#include <algorithm>
#include <optional>

#include "legacy/sensors/raw_word.h"
#include "legacy/sensors/sensor_database.h"
#include "units/user_units_manager.h"

namespace traguardo {
namespace {

// Two sensors whose values count only on one side of a limit.
constexpr i32 kSensorBelowLimit = 335;
constexpr i32 kSensorAboveLimit = 338;
constexpr float kHighestBelow = 2.5F;
constexpr float kLowestAbove = 0.5F;

// Single precision, in this order: c1, c0, then the higher powers.
template <typename ValueOfPolynomial>
void convert_words(const SensorScale& row, std::span<const u16> raw, std::span<float> out, ValueOfPolynomial value_of) {
  const float c0 = row.c0;
  const float c1 = row.c1;
  const float c2 = row.c2;
  const float c3 = row.c3;
  const float c4 = row.c4;
  for (std::size_t i = 0; i < raw.size(); ++i) {
    const float x = signed_word(raw[i]);
    const float polynomial = x * c1 + c0 + x * x * c2 + x * x * x * c3 + x * x * x * x * c4;
    out[i] = is_value(raw[i]) ? value_of(polynomial) : 0.0F;
  }
}

}  // namespace

CSensori::CSensori(IUserUnitOfMeasureManager* user_units, CDBSensori* data_base)
    : user_units_(user_units), data_base_(data_base) {}

bool CSensori::ConvertiCampioni(i32 sensor_id, const std::array<float, 5>& parameters, UnitField unit,
                                std::span<const u16> raw, std::span<float> out) {
  const UnitDescriptor descriptor = read_unit_descriptor(unit);
  if (!descriptor.valid) {
    convert_by_formula(sensor_id, parameters, 1.0F, 0.0F, raw, out);
    return true;
  }
  const SensorScale* const known = data_base_->scale(sensor_id);
  SensorScale scale = known == nullptr ? SensorScale{} : *known;
  if (descriptor.family_override > 0) {
    // Kept in the data base: hosts see later channels of this sensor in the new family, with an override of their own
    // or without.
    data_base_->override_family(sensor_id, descriptor.family_override);
    scale.family = descriptor.family_override;
  }
  const UnitScale unit_of_user = unit_scale(scale.family, descriptor.unit_id);
  if (scale.kind == kSensorKindPolynomial) {
    convert_by_polynomial(sensor_id, scale, unit_of_user, raw, out);
  } else {
    // A descriptor names the unit by itself, so the user's system choices stay out of it. A sensor that the data base
    // doesn't know is converted as sensor 0 is.
    const SensorRow row = find_sensor(known == nullptr ? 0 : sensor_id);
    run_sensor_formula(
        {row, *data_base_, parameters, unit_of_user.scale, unit_of_user.offset, SystemChoices{}, raw, out});
  }
  return true;
}

CSensori::UnitScale CSensori::unit_scale(u8 family, u32 unit_id) const {
  if (family == kTemperatureFamily) {
    return {static_cast<float>(user_units_->GetTemperatureScale()),
            static_cast<float>(user_units_->GetTemperatureOffset()), false};
  }
  if (family == kSpeedFamily) return {1.0F / static_cast<float>(user_units_->GetLongDistanceFactor()), 0.0F, false};
  const std::optional<u8> code = data_base_->unit_code(unit_id);
  if (!code) return {};
  const std::optional<UnitConversionRow> conversion = data_base_->conversion(family, *code);
  if (!conversion) return {};
  return {conversion->scale, conversion->offset, conversion->reciprocal != 0};
}

void CSensori::convert_by_polynomial(i32 sensor_id, const SensorScale& row, const UnitScale& unit,
                                     std::span<const u16> raw, std::span<float> out) {
  if (unit.reciprocal && !(unit.scale > 0.0F)) {
    std::fill_n(out.begin(), raw.size(), 0.0F);
    return;
  }
  const auto convert = [&](auto value_of) {
    if (sensor_id == kSensorBelowLimit) {
      convert_words(row, raw, out, [=](float value) { return value < kHighestBelow ? value_of(value) : 0.0F; });
    } else if (sensor_id == kSensorAboveLimit && unit.reciprocal) {
      convert_words(row, raw, out, [=](float value) { return value > kLowestAbove ? value_of(value) : 0.0F; });
    } else {
      convert_words(row, raw, out, value_of);
    }
  };
  const float k = unit.scale;
  const float o = unit.offset;
  if (unit.reciprocal) {
    convert([=](float value) { return 1.0F / (value * k + o); });
  } else {
    convert([=](float value) { return value * k + o; });
  }
}

SystemChoices CSensori::system_choices() const {
  return {user_units_->IsLengthImperial(), user_units_->IsTemperatureImperial(), user_units_->IsPressureImperial()};
}

void CSensori::convert_by_formula(i32 sensor_id, const std::array<float, 5>& parameters, float scale, float offset,
                                  std::span<const u16> raw, std::span<float> out) const {
  const SensorRow row = find_sensor(sensor_id);
  run_sensor_formula({row, *data_base_, parameters, scale, offset, system_choices(), raw, out});
}

}  // namespace traguardo
