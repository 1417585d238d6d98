// SPDX-License-Identifier: MIT
// The sample rate that a rate index stands for.
#pragma once

#include "support/bytes.h"

namespace traguardo {

struct SampleRate {
  u32 frequency_hz = 0;
  u32 period_ms = 32000;
};

// An index that no rate has gives the default above.
SampleRate sample_rate_of(u16 rate_index);

}  // namespace traguardo
