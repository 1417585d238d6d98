// SPDX-License-Identifier: MIT
#include "math/filters.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include "math/filter_tables.h"
#include "math/polynomial_fit.h"

// Results are compared bit for bit: sums run in single precision, in the order of their index, from 0.0 on.

namespace traguardo {
namespace {

constexpr float kFirGain = 1.0375574F;
constexpr std::size_t kFirShortest = 15;

std::array<float, kFirTapCount> scaled_fir_taps() {
  std::array<float, kFirTapCount> scaled{};
  std::ranges::transform(fir_taps(), scaled.begin(), [](float tap) { return tap / kFirGain; });
  return scaled;
}

// By how many samples the filtered values lag: the shift with the largest correlation above 0.0. All shifts are summed
// side by side, each in its own order.
std::size_t correlation_delay(const float* filtered, const float* values, std::size_t count) {
  std::array<float, kFirTapCount> sums{};
  for (std::size_t j = 0; j + kFirTapCount < count; ++j) {
    for (std::size_t shift = 0; shift < kFirTapCount; ++shift) sums[shift] += filtered[j + shift] * values[j];
  }
  std::size_t best = 0;
  float largest = 0.0F;
  for (std::size_t shift = 0; shift < kFirTapCount; ++shift) {
    if (!(sums[shift] > largest)) continue;
    largest = sums[shift];
    best = shift;
  }
  return best;
}

void moving_mean(const float* values, std::size_t half_width, std::size_t first, std::size_t last, float* out) {
  const std::size_t width = 2 * half_width + 1;
  const float divisor = static_cast<float>(width);
  // Neighbouring sums side by side; each keeps its own order, so the result is that of one sum after the other.
  constexpr std::size_t kLanes = 16;
  std::size_t i = first;
  for (; i + kLanes <= last; i += kLanes) {
    std::array<float, kLanes> sums{};
    const float* from = values + (i - half_width);
    for (std::size_t j = 0; j < width; ++j) {
      for (std::size_t lane = 0; lane < kLanes; ++lane) sums[lane] += from[j + lane];
    }
    for (std::size_t lane = 0; lane < kLanes; ++lane) out[i + lane] = sums[lane] / divisor;
  }
  for (; i < last; ++i) {
    float sum = 0.0F;
    for (std::size_t j = 0; j < width; ++j) sum += values[i - half_width + j];
    out[i] = sum / divisor;
  }
}

struct Section {
  float b;
  float c1;
  float c2;
};

Section butterworth_section(double a, u32 section, u32 order) {
  const double angle = (2.0 * section + 1.0) * std::numbers::pi / (2.0 * order);
  const double r = 2.0 * std::cos(angle) * a;
  const double d = a * a + 1.0 + r;
  return {static_cast<float>(a * a / d), static_cast<float>(2.0 * (a * a - 1.0) / d),
          static_cast<float>((1.0 - r + a * a) / d)};
}

void run_section(const Section& section, const std::vector<float>& in, std::vector<float>* out) {
  std::vector<float>& y = *out;
  for (std::size_t i = 0; i < in.size(); ++i) {
    y[i] = i < 3 ? in[i]
                 : section.b * (in[i] + 2.0F * in[i - 1] + in[i - 2]) - section.c1 * y[i - 1] - section.c2 * y[i - 2];
  }
}

}  // namespace

void CFiltri::FiltraFir(float* values, std::size_t count) {
  if (count < kFirShortest) return;
  std::vector<float> filtered(values, values + count);
  const std::array<float, kFirTapCount> taps = scaled_fir_taps();
  for (std::size_t i = kFirTapCount; i < count; ++i) {
    float sum = 0.0F;
    for (std::size_t j = 0; j < kFirTapCount; ++j) sum += taps[j] * values[i - j];
    filtered[i] = sum;
  }
  const std::size_t shift = correlation_delay(filtered.data(), values, count);
  std::copy(filtered.begin() + static_cast<std::ptrdiff_t>(shift), filtered.end(), values);
  std::fill_n(values + (count - shift), shift, values[count - shift - 1]);
}

void CFiltri::MediaMobile(float* values, std::size_t count, std::size_t half_width) {
  if (count < 2 || half_width > count - 2 || half_width >= count - half_width) return;
  const std::vector<float> original(values, values + count);
  moving_mean(original.data(), half_width, half_width, count - half_width, values);
}

void CFiltri::TagliaEMedia(float* values, std::size_t count, float low, float high, float replacement,
                           std::size_t half_width) {
  for (std::size_t i = 0; i < count; ++i) {
    if (values[i] > high || values[i] < low) values[i] = replacement;
  }
  MediaMobile(values, count, half_width);
}

void CFiltri::FirGenerico(const float* in, std::size_t count, float* out, const float* taps, std::size_t tap_count) {
  std::copy_n(in, std::min(count, tap_count), out);
  for (std::size_t i = tap_count; i < count; ++i) {
    for (std::size_t j = 0; j < tap_count; ++j) out[i] += in[i - j] * taps[j];
  }
}

void CFiltri::IirGenerico(const float* in, std::size_t count, float* out, const float* b, const float* a,
                          std::size_t tap_count) {
  std::copy_n(in, std::min(count, tap_count), out);
  for (std::size_t i = tap_count; i < count; ++i) {
    for (std::size_t j = 0; j < tap_count; ++j) out[i] += in[i - j] * b[j] - out[i - j] * a[j];
  }
}

void CFiltri::PassaBasso(float* values, std::size_t count, float sampling_rate_hz, float cut_off_hz, u32 order) {
  if (!(cut_off_hz < sampling_rate_hz / 2.0F)) return;
  std::vector<float> in(values, values + count);
  std::vector<float> out = in;
  const double a =
      std::tan(std::numbers::pi / (static_cast<double>(sampling_rate_hz) / static_cast<double>(cut_off_hz)));
  for (u32 section = 0; section < order / 2; ++section) {
    run_section(butterworth_section(a, section, order), in, &out);
    std::swap(in, out);
  }
  std::ranges::copy(in, values);
}

void CFiltri::RimuoviPicchi(float* values, std::size_t count, std::size_t window, std::size_t degree, float factor) {
  // Without a middle value among others, or with more coefficients than values, there is nothing to hold it against.
  if (count < window || count - window < 1 || window < 2 || degree >= window - 1) return;
  std::vector<double> x(window);
  std::vector<double> y(window);
  std::vector<double> coefficients(degree + 1);
  std::vector<double> fitted(window);
  std::vector<double> residuals(window);
  std::vector<double> percent(window);
  for (std::size_t i = 0; i < window; ++i) x[i] = static_cast<double>(i);
  CPolyFit fit;
  const std::size_t middle = window / 2;
  for (std::size_t start = 0; start < count - window; ++start) {
    for (std::size_t i = 0; i < window; ++i) y[i] = static_cast<double>(values[start + i]);
    bool singular = false;
    fit.Fit(x.data(), y.data(), window, degree, coefficients.data(), fitted.data(), residuals.data(), percent.data(),
            &singular);
    double sum = 0.0;
    for (std::size_t i = 0; i < window; ++i) {
      if (i != middle) sum += std::fabs(residuals[i]);
    }
    const double mean = sum / static_cast<double>(window - 1);
    if (std::fabs(residuals[middle]) > static_cast<double>(factor) * mean) {
      values[start + middle] = static_cast<float>(fitted[middle]);
    }
  }
}

}  // namespace traguardo
