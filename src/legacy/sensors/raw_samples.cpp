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

}  // namespace

bool CSensori::RicavaCampioni(u16* sensor_id, u16* measure_class, std::span<const float> values, std::span<u16> raw,
                              std::array<float, 5>* parameters) const {
  *sensor_id = current_sensor_id(*sensor_id);
  *measure_class = inverse_measure_class(*sensor_id);
  const InverseFormulaRow& row = inverse_formula(*sensor_id);
  const float a = row.a;
  const float b = row.b;
  const auto [p0, p1, p2, p3, p4] = *parameters;
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
      recover([&, zero = p0](float v) { return v * a + zero; });
      break;
    case InverseFormula::kTimesBelowZero:
      recover([&, zero = p0](float v) { return zero - v * a; });
      break;
    case InverseFormula::kFullScale:
      recover([&](float v) { return v * a / b; });
      break;
    case InverseFormula::kGyro:
      recover([&, zero = p0](float v) { return v * a / b + zero; });
      break;
    case InverseFormula::kTwoSidedSpan: {
      const float small_length = static_cast<float>(user_units_->GetSmallLengthFactor());
      recover([=, zero = p0, bottom = p1, bottom_value = p2, top = p3, top_value = p4](float v) {
        const float w = v * small_length;
        const bool is_top = w >= 0.0F;
        const float width = is_top ? top_value : bottom_value;
        return width == 0.0F ? 0.0F : ((is_top ? top : bottom) - zero) * w / width + zero;
      });
      break;
    }
    case InverseFormula::kPressureSpan: {
      const float pressure = static_cast<float>(user_units_->GetPressureFactor());
      recover([=, zero = p0, top = p1, width = p2](float v) { return v * pressure * width / top + zero; });
      break;
    }
    case InverseFormula::kPitotTube: {
      const float long_distance = static_cast<float>(user_units_->GetLongDistanceFactor());
      recover([=, zero = p0, top = p1, width = p2, factor = p3](float v) {
        const float w = v / long_distance / (factor * a);
        return w * w * (top - zero) / width + zero;
      });
      break;
    }
    case InverseFormula::kColdJunction: {
      const float scale = static_cast<float>(user_units_->GetTemperatureScale());
      const float offset = static_cast<float>(user_units_->GetTemperatureOffset());
      recover([=](float v) { return ((v - offset) / scale + a) * b * 4096.0F / 5.0F; });
      break;
    }
    case InverseFormula::kRange:
      recover([&, low = p0, high = p1](float v) { return high == low ? 0.0F : (v - low) * a / (high - low); });
      break;
  }
  if (row.formula == InverseFormula::kDividedMultiplier) {
    *sensor_id = kMultiplierSensor;
    *measure_class = kOtherMeasureClass;
  }
  if (row.formula == InverseFormula::kDividedMultiplier || row.formula == InverseFormula::kDividedOnly) {
    *parameters = {a, 0.0F, 0.0F, 0.0F, 0.0F};
  }
  return true;
}

}  // namespace traguardo
