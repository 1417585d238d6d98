// SPDX-License-Identifier: MIT
// The first of a row of numbers that lies above a value, also where the numbers don't rise throughout: a file may hold
// a curve in any order, and a walk per sample would take the product of both lengths.
#pragma once

#include <algorithm>
#include <limits>
#include <span>
#include <vector>

#include "support/bytes.h"

namespace traguardo {

class FirstAbove {
 public:
  FirstAbove() = default;
  explicit FirstAbove(std::span<const float> numbers) {
    float highest = -std::numeric_limits<float>::infinity();
    highest_so_far_.reserve(numbers.size());
    for (const float number : numbers) {
      if (number > highest) highest = number;
      highest_so_far_.push_back(highest);
    }
  }

  // The index of that number; the count of all numbers if none lies above, or if `value` isn't a number.
  std::size_t find(float value) const {
    const auto above = std::upper_bound(highest_so_far_.begin(), highest_so_far_.end(), value);
    return static_cast<std::size_t>(above - highest_so_far_.begin());
  }

 private:
  // Where this rises above a value for the first time, the number itself does.
  std::vector<float> highest_so_far_;
};

}  // namespace traguardo
