// SPDX-License-Identifier: MIT
#include "legacy/file/sample_rate.h"

#include "legacy/file/wmp_layout_data.h"

namespace traguardo {

SampleRate sample_rate_of(u16 rate_index) {
  const auto rates = sample_rates();
  if (rate_index >= rates.size()) return {};
  return {rates[rate_index].frequency_hz, rates[rate_index].period_ms};
}

}  // namespace traguardo
