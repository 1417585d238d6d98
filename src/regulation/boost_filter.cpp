// SPDX-License-Identifier: MIT
#include "regulation/boost_filter.h"

#include <algorithm>

namespace traguardo {

namespace {

// The whole array moves `delay` places to the front; the places that come free repeat the last sample.
void take_delay_off(std::vector<float>* values, std::size_t delay) {
  const auto moved_end =
      std::copy(values->begin() + static_cast<std::ptrdiff_t>(delay), values->end(), values->begin());
  std::fill(moved_end, values->end(), *(moved_end - 1));
}

}  // namespace

std::vector<float> eased_boost(std::span<const float> signal) {
  std::vector<float> eased(signal.begin(), signal.end());
  for (std::size_t i = 1; i < signal.size(); ++i) eased[i] = signal[i - 1] + 0.1F * (signal[i] - signal[i - 1]);
  return eased;
}

std::vector<float> fir_filtered_boost(std::span<const float> eased) {
  constexpr std::size_t kDelay = 23;
  const std::span<const float, kBoostTaps> taps = boost_filter_taps();
  std::vector<float> filtered(eased.begin(), eased.end());
  if (eased.size() < kBoostTaps) return filtered;
  for (std::size_t t = kBoostTaps; t < eased.size(); ++t) {
    float sum = 0.0F;
    for (std::size_t k = 0; k < kBoostTaps; ++k) sum += taps[k] * eased[t - kBoostTaps + k];
    filtered[t] = sum;
  }
  take_delay_off(&filtered, kDelay);
  return filtered;
}

std::vector<float> averaged_boost(std::span<const float> eased) {
  constexpr std::size_t kWindow = 50;
  constexpr std::size_t kDelay = 24;
  constexpr std::size_t kShortestMoved = 25;
  std::vector<float> averaged(eased.size());
  for (std::size_t i = 0; i < eased.size(); ++i) {
    const std::size_t oldest = i + 1 < kWindow ? 0 : i + 1 - kWindow;
    float sum = 0.0F;
    for (std::size_t k = oldest; k <= i; ++k) sum += eased[k];
    averaged[i] = sum / static_cast<float>(i + 1 - oldest);
  }
  if (averaged.size() >= kShortestMoved) take_delay_off(&averaged, kDelay);
  return averaged;
}

std::vector<float> filtered_boost(std::span<const float> signal, bool fir) {
  const std::vector<float> eased = eased_boost(signal);
  return fir ? fir_filtered_boost(eased) : averaged_boost(eased);
}

}  // namespace traguardo
