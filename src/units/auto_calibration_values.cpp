// SPDX-License-Identifier: MIT
#include "units/auto_calibration_values.h"

namespace traguardo {

float CUserAutoCalValuesPerChName::GetValoreAutoCal(std::string_view key) const {
  const auto value = values_.find(key);
  return value == values_.end() ? 0.0F : value->second;
}

void CUserAutoCalValuesPerChName::SetValoreAutoCal(std::string_view key, float value) {
  values_.insert_or_assign(std::string(key), value);
}

}  // namespace traguardo
