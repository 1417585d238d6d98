// SPDX-License-Identifier: MIT
#include "kept_values.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <optional>

#include "rows.h"

namespace traguardo::tool {

namespace {

// Their products with 32-bit floats are exact.
constexpr std::array kPowersOfTen = {1.0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
constexpr int kMostDecimals = static_cast<int>(kPowersOfTen.size()) - 1;
constexpr double kLargest = 2147483000.0;  // that still fits

// To the nearest integer, ties to even, without a call for each. Only for numbers far below 2^51.
double nearest(double value) {
  constexpr double kMagic = 6755399441055744.0;  // 1.5 x 2^52
  return value + kMagic - kMagic;
}

std::int32_t no_number(double value) {
  if (std::isnan(value)) return kNotANumber;
  return value > 0 ? kInfinity : kMinusInfinity;
}

// False where one of them has more decimals, or is out of reach.
bool are_whole(const std::vector<double>& values, double power) {
  return std::all_of(values.begin(), values.end(), [power](double value) {
    const double scaled = value * power;
    if (!(std::abs(scaled) <= kLargest)) return !std::isfinite(value);
    return static_cast<float>(nearest(scaled) / power) == static_cast<float>(value);
  });
}

bool do_fit(const std::vector<double>& values, double power) {
  return std::all_of(values.begin(), values.end(),
                     [power](double value) { return std::abs(value * power) <= kLargest || !std::isfinite(value); });
}

// The range without its outermost hundredths: a leap doesn't cost the others their digits.
double usual_range(const std::vector<double>& values) {
  constexpr std::size_t kProbes = 2000;
  std::vector<double> probes;
  const std::size_t stride = std::max<std::size_t>(1, values.size() / kProbes);
  for (std::size_t i = 0; i < values.size(); i += stride) {
    if (std::isfinite(values[i])) probes.push_back(values[i]);
  }
  if (probes.empty()) return 0;
  std::sort(probes.begin(), probes.end());
  const std::size_t cut = probes.size() / 100;
  const double range = probes[probes.size() - 1 - cut] - probes[cut];
  return range > 0 ? range : probes.back() - probes.front();
}

// Nothing where a power of ten out of reach would be needed.
std::optional<int> decimals_for(double range) {
  constexpr double kPlaces = 1000;
  if (!(range > 0)) return std::nullopt;
  const double decimals = std::ceil(std::log10(kPlaces / range));
  if (decimals > kMostDecimals) return std::nullopt;
  return std::max(0, static_cast<int>(decimals));
}

std::int32_t ordered_bits(double value) {
  const auto bits = std::bit_cast<std::int32_t>(static_cast<float>(value));
  return bits >= 0 ? bits : static_cast<std::int32_t>(INT32_MIN - std::int64_t{bits});
}

std::optional<int> decimals_of(const std::vector<double>& values) {
  const std::optional<int> rounded = decimals_for(usual_range(values));
  const int most = rounded.value_or(kMostDecimals);
  for (int decimals = 0; decimals <= most; ++decimals) {
    if (are_whole(values, kPowersOfTen[static_cast<std::size_t>(decimals)])) return decimals;
  }
  if (rounded && do_fit(values, kPowersOfTen[static_cast<std::size_t>(*rounded)])) return rounded;
  return std::nullopt;
}

}  // namespace

int keep_values(const std::vector<double>& values, std::vector<std::int32_t>* kept) {
  const std::optional<int> decimals = decimals_of(values);
  const double power = decimals ? kPowersOfTen[static_cast<std::size_t>(*decimals)] : 1;
  kept->resize(values.size());
  std::transform(values.begin(), values.end(), kept->begin(), [power, &decimals](double value) {
    if (!std::isfinite(value)) return no_number(value);
    return decimals ? static_cast<std::int32_t>(nearest(value * power)) : ordered_bits(value);
  });
  return decimals.value_or(kWholeFloats);
}

}  // namespace traguardo::tool
