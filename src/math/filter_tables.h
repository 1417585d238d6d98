// SPDX-License-Identifier: MIT
// Numbers of the filters and of the logger's sample rates.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

inline constexpr std::size_t kFirTapCount = 13;

struct SFrequencyRow {
  u16 code;
  i16 hz;
  u16 period_ms;
};

// As they are stored; the filter divides each by its gain before use.
std::span<const float, kFirTapCount> fir_taps();
std::span<const SFrequencyRow> frequency_rows();

}  // namespace traguardo
