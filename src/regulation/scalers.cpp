// SPDX-License-Identifier: MIT
#include "regulation/scalers.h"

namespace traguardo {

std::unique_ptr<CScaler> make_scaler(i32 scaling, float pressure_bar) {
  const float pressure_mbar = pressure_bar * 1000.0F;
  if (scaling == 2) return std::make_unique<CScalerPercent2>(pressure_bar);
  if (scaling == 1) return std::make_unique<CScalerPercent1>(pressure_mbar);
  return std::make_unique<CScalerDifference>(pressure_mbar);
}

}  // namespace traguardo
