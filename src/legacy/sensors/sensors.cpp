#include "legacy/sensors/sensors.h"

#include <algorithm>
#include <optional>

#include "legacy/sensors/raw_word.h"
#include "legacy/sensors/sensor_database.h"
#include "units/user_units_manager.h"

namespace traguardo {
namespace {

// Families whose scale is the user's own and not that of the descriptor.
constexpr u8 kTemperatureFamily = 20;
constexpr u8 kSpeedFamily = 30;

// Two sensors whose values count only on one side of a limit.
constexpr i32 kSensorBelowLimit = 335;
constexpr i32 kSensorAboveLimit = 338;
constexpr float kHighestBelow = 2.5F;
constexpr float kLowestAbove = 0.5F;

// Single precision, in this order: c1, c0, then the higher powers.
template <typename ValueOfPolynomial>
void convert_words(const SensorRow& row, std::span<const u16> raw, std::span<float> out, ValueOfPolynomial value_of) {
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
  SensorRow row = data_base_->sensor(sensor_id);
  if (descriptor.family_override > 0) {
    // Kept in the data base: hosts see later channels of this sensor in the new family, with an override of their own
    // or without.
    data_base_->override_family(sensor_id, descriptor.family_override);
    row.family = descriptor.family_override;
  }
  const UnitScale scale = unit_scale(row.family, descriptor.unit_id);
  if (row.kind == kSensorKindPolynomial) {
    convert_by_polynomial(row, scale, raw, out);
  } else {
    // A descriptor names the unit by itself, so the user's system choices stay out of it. An unknown sensor has the row
    // of zeros and with it the formula of sensor 0.
    run_sensor_formula(
        {sensor_formula_row(row.id), *data_base_, parameters, scale.scale, scale.offset, SystemChoices{}, raw, out});
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

void CSensori::convert_by_polynomial(const SensorRow& row, const UnitScale& unit, std::span<const u16> raw,
                                     std::span<float> out) {
  if (unit.reciprocal && !(unit.scale > 0.0F)) {
    std::fill_n(out.begin(), raw.size(), 0.0F);
    return;
  }
  const auto convert = [&](auto value_of) {
    if (row.id == kSensorBelowLimit) {
      convert_words(row, raw, out, [=](float value) { return value < kHighestBelow ? value_of(value) : 0.0F; });
    } else if (row.id == kSensorAboveLimit && unit.reciprocal) {
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
  run_sensor_formula(
      {sensor_formula_row(sensor_id), *data_base_, parameters, scale, offset, system_choices(), raw, out});
}

}  // namespace traguardo
