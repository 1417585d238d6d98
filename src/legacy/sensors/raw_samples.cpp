// SPDX-License-Identifier: MIT
// The values of versions 100 to 320 back to raw words, so that one load path serves every version.
#include <algorithm>

#include "legacy/sensors/inverse_formulas_data.h"
#include "legacy/sensors/sensors.h"
#include "units/user_units_manager.h"

namespace traguardo {
namespace {

// Its words times its first parameter are its values, so it can hold what any formula gave.
constexpr u16 kMultiplierSensor = 70;

// What today's files call a sensor.
u16 current_sensor_id(u16 sensor_id) {
  for (const SensorReplacementRow& row : sensor_replacements()) {
    if (row.sensor_id == sensor_id) return static_cast<u16>(row.replacement);
  }
  return sensor_id;
}

u16 inverse_measure_class(u16 sensor_id) {
  for (const MeasureClassRow& row : inverse_measure_classes()) {
    if (row.sensor_id == sensor_id) return row.measure_class;
  }
  return kOtherMeasureClass;
}

const InverseFormulaRow& inverse_formula(u16 sensor_id) {
  const std::span<const InverseFormulaRow> rows = inverse_formulas();
  const auto found = std::find_if(rows.begin(), rows.end(),
                                  [sensor_id](const InverseFormulaRow& row) { return row.sensor_id == sensor_id; });
  return found == rows.end() ? rows.back() : *found;
}

template <typename WordOfValue>
void recover_words(std::span<const float> values, std::span<u16> raw, WordOfValue word_of) {
  for (std::size_t i = 0; i < values.size(); ++i) raw[i] = static_cast<u16>(truncate_to<i32>(word_of(values[i])));
}

// The formulas that only one sensor has. p: the parameters of the channel.
using Parameters = std::array<float, 5>;

void recover_two_sided_span(std::span<const float> values, std::span<u16> raw, const Parameters& p,
                            float small_length) {
  recover_words(values, raw,
                [small_length, zero = p[0], bottom = p[1], bottom_value = p[2], top = p[3], top_value = p[4]](float v) {
                  const float w = v * small_length;
                  const bool is_top = w >= 0.0F;
                  const float width = is_top ? top_value : bottom_value;
                  return width == 0.0F ? 0.0F : ((is_top ? top : bottom) - zero) * w / width + zero;
                });
}

void recover_pitot_tube(std::span<const float> values, std::span<u16> raw, const Parameters& p, float long_distance,
                        float a) {
  recover_words(values, raw, [long_distance, a, zero = p[0], top = p[1], width = p[2], factor = p[3]](float v) {
    const float w = v / long_distance / (factor * a);
    return w * w * (top - zero) / width + zero;
  });
}

// Where a word is no more than a fraction of the value, the channel holds the fraction from now on, and may become a
// sensor that multiplies by it.
void become_multiplier(const InverseFormulaRow& row, u16* sensor_id, u16* measure_class, Parameters* parameters) {
  if (row.formula == InverseFormula::kDividedMultiplier) {
    *sensor_id = kMultiplierSensor;
    *measure_class = kOtherMeasureClass;
  }
  if (row.formula == InverseFormula::kDividedMultiplier || row.formula == InverseFormula::kDividedOnly) {
    *parameters = {row.a, 0.0F, 0.0F, 0.0F, 0.0F};
  }
}

}  // namespace

bool CSensori::RicavaCampioni(u16* sensor_id, u16* measure_class, std::span<const float> values, std::span<u16> raw,
                              std::array<float, 5>* parameters) const {
  *sensor_id = current_sensor_id(*sensor_id);
  *measure_class = inverse_measure_class(*sensor_id);
  const InverseFormulaRow& row = inverse_formula(*sensor_id);
  const float a = row.a;
  const float b = row.b;
  const Parameters& p = *parameters;
  const auto recover = [&](auto word_of) { recover_words(values, raw, word_of); };
  switch (row.formula) {
    case InverseFormula::kWord:
      recover([](float v) { return v; });
      break;
    case InverseFormula::kTimes:
      recover([&](float v) { return v * a; });
      break;
    case InverseFormula::kDividedMultiplier:
    case InverseFormula::kDividedOnly:
      recover([&](float v) { return v / a; });
      break;
    case InverseFormula::kTimesFromZero:
      recover([&, zero = p[0]](float v) { return v * a + zero; });
      break;
    case InverseFormula::kTimesBelowZero:
      recover([&, zero = p[0]](float v) { return zero - v * a; });
      break;
    case InverseFormula::kFullScale:
      recover([&](float v) { return v * a / b; });
      break;
    case InverseFormula::kGyro:
      recover([&, zero = p[0]](float v) { return v * a / b + zero; });
      break;
    case InverseFormula::kTwoSidedSpan:
      recover_two_sided_span(values, raw, p, static_cast<float>(user_units_->GetSmallLengthFactor()));
      break;
    case InverseFormula::kPressureSpan: {
      const float pressure = static_cast<float>(user_units_->GetPressureFactor());
      recover([=, zero = p[0], top = p[1], width = p[2]](float v) { return v * pressure * width / top + zero; });
      break;
    }
    case InverseFormula::kPitotTube:
      recover_pitot_tube(values, raw, p, static_cast<float>(user_units_->GetLongDistanceFactor()), a);
      break;
    case InverseFormula::kColdJunction: {
      const float scale = static_cast<float>(user_units_->GetTemperatureScale());
      const float offset = static_cast<float>(user_units_->GetTemperatureOffset());
      recover([=](float v) { return ((v - offset) / scale + a) * b * 4096.0F / 5.0F; });
      break;
    }
    case InverseFormula::kRange:
      recover([&, low = p[0], high = p[1]](float v) { return high == low ? 0.0F : (v - low) * a / (high - low); });
      break;
  }
  become_multiplier(row, sensor_id, measure_class, parameters);
  return true;
}

}  // namespace traguardo
