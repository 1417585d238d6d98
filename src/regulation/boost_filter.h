// SPDX-License-Identifier: MIT
// What stands between the logged boost pressure and the one that is held against the limit. All in single precision,
// sums from the oldest sample to the newest.
#pragma once

#include <span>
#include <vector>

#include "support/bytes.h"

namespace traguardo {

inline constexpr std::size_t kBoostTaps = 50;
// Oldest sample first.
std::span<const float, kBoostTaps> boost_filter_taps();

// First stage: each sample comes nine tenths from the one before it in the signal. (`zep_PboostSignal` gives
// `zep_PboostPostIIR`.)
std::vector<float> eased_boost(std::span<const float> signal);
// Second stage, of two kinds, both moved to the front by their delay. (`zep_PboostFiltered`.)
std::vector<float> fir_filtered_boost(std::span<const float> eased);
std::vector<float> averaged_boost(std::span<const float> eased);

// Both stages.
std::vector<float> filtered_boost(std::span<const float> signal, bool fir);

}  // namespace traguardo
