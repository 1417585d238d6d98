// SPDX-License-Identifier: MIT
// Numeric filters over plain arrays, in place. They know nothing of channels.
#pragma once

#include <cstddef>

#include "support/bytes.h"

namespace traguardo {

// The base of the legacy session, which runs the first two over every file. The others are tools for callers.
class CFiltri {
 public:
  // A low pass of 13 taps; the delay that it brings is found by correlation and taken out again. Fewer than 15 values
  // stay as they are.
  static void FiltraFir(float* values, std::size_t count);
  // Each value becomes the mean of itself and `half_width` values on either side; the first and last `half_width`
  // values stay.
  static void MediaMobile(float* values, std::size_t count, std::size_t half_width);
  // Values above `high` or below `low` become `replacement`, then the moving average.
  static void TagliaEMedia(float* values, std::size_t count, float low, float high, float replacement,
                           std::size_t half_width);
  // The first `tap_count` values are copied; behind them the sum of in[i - j] * taps[j] is added to what out[i] holds.
  static void FirGenerico(const float* in, std::size_t count, float* out, const float* taps, std::size_t tap_count);
  // The same with feedback: in[i - j] * b[j] - out[i - j] * a[j] is added, j by j. Where a[0] isn't 0 it meets what
  // out[i] holds by then.
  static void IirGenerico(const float* in, std::size_t count, float* out, const float* b, const float* a,
                          std::size_t tap_count);
  // Butterworth low pass of an even order (an odd one counts as the even one below), sections of second order one
  // behind the other. Does nothing unless the cut-off is below half the sampling rate.
  static void PassaBasso(float* values, std::size_t count, float sampling_rate_hz, float cut_off_hz, u32 order);
  // Takes out single outliers: a polynomial is fitted to each stretch of `window` values, and the middle value becomes
  // the fitted one where its residual is above `factor` times the mean size of the others.
  static void RimuoviPicchi(float* values, std::size_t count, std::size_t window, std::size_t degree, float factor);
};

}  // namespace traguardo
