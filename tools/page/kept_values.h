// SPDX-License-Identifier: MIT
// A channel's values as a page keeps them: integers, of so many decimals as are shown.
#pragma once

#include <cstdint>
#include <vector>

namespace traguardo::tool {

// In place of a number of decimals: each value is its 32 bits, brought into the order of the numbers.
inline constexpr int kWholeFloats = -1;

// As few decimals as hold every value whole; where that takes many, as many as tell a thousand places of the usual
// range apart, with each value rounded to its nearest. Where neither can be had, as for a range without bounds, whole
// floats.
// The number of decimals; see rows.h for what stands in `kept` where a value is no number.
int keep_values(const std::vector<double>& values, std::vector<std::int32_t>* kept);

}  // namespace traguardo::tool
