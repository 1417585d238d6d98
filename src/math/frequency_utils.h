// SPDX-License-Identifier: MIT
// The logger's rate code for a sample rate.
#pragma once

#include "support/bytes.h"

namespace traguardo {

class CFreqUtils {
 public:
  static constexpr u16 kNoCode = 65535;

  virtual ~CFreqUtils() = default;

  // The highest rate that isn't above `hz`, or the lowest one of all. Above the highest rate there is none: false, code
  // kNoCode, period 0.
  bool find_rate(i16 hz, u16* code, u16* period_ms) const;
};

}  // namespace traguardo
