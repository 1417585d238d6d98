// SPDX-License-Identifier: MIT
// A channel's values as a page keeps them: integers, of so many decimals as are shown.
#pragma once

#include <cstdint>
#include <vector>

namespace traguardo::tool {

// In place of a number of decimals: each value is its 32 bits, brought into the order of the numbers.
inline constexpr int kWholeFloats = -1;

struct KeptValues {
  int decimals = 0;
  std::vector<std::int32_t> values;  // see rows.h for what is no number
};

// As few decimals as hold every value whole; where that takes many, as many as tell a thousand places of the usual
// range apart, with each value rounded to its nearest. Where neither can be had, as for a range without bounds, whole
// floats.
KeptValues kept_values_of(const std::vector<double>& values);

}  // namespace traguardo::tool
