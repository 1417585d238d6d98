// SPDX-License-Identifier: MIT
#include "math/frequency_utils.h"

#include "math/filter_tables.h"

namespace traguardo {

bool CFreqUtils::find_rate(i16 hz, u16* code, u16* period_ms) const {
  const std::span<const SFrequencyRow> rows = frequency_rows();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].hz < hz) continue;
    const bool between = rows[i].hz > hz && i > 0;
    const SFrequencyRow& row = between ? rows[i - 1] : rows[i];
    *code = row.code;
    *period_ms = row.period_ms;
    return true;
  }
  *code = kNoCode;
  *period_ms = 0;
  return false;
}

}  // namespace traguardo
