// SPDX-License-Identifier: MIT
// The logger times of lap marks, for the question which of those in a span of time came first in the file.
#pragma once

#include <algorithm>
#include <limits>
#include <numeric>
#include <optional>
#include <span>
#include <vector>

#include "support/bytes.h"

namespace traguardo {

// Marks may stand in any order of time, and a long trace asks once per record: so the answer is found by halving, not
// by a walk over all marks.
class MarkTimes {
 public:
  // In the order of the file; borrowed.
  explicit MarkTimes(std::span<const u32> times_ms)
      : times_ms_(times_ms), by_time_(times_ms.size()), earliest_(2 * times_ms.size()) {
    std::iota(by_time_.begin(), by_time_.end(), u32{0});
    std::sort(by_time_.begin(), by_time_.end(), [this](u32 a, u32 b) { return times_ms_[a] < times_ms_[b]; });
    const std::size_t count = by_time_.size();
    std::copy(by_time_.begin(), by_time_.end(), earliest_.begin() + static_cast<std::ptrdiff_t>(count));
    for (std::size_t node = count; node-- > 1;) {
      earliest_[node] = std::min(earliest_[2 * node], earliest_[2 * node + 1]);
    }
  }

  // The time of the first mark of the file that lies between the two, both included.
  std::optional<u32> first_in(u32 from_ms, u32 to_ms) const {
    const auto from = std::lower_bound(by_time_.begin(), by_time_.end(), from_ms,
                                       [this](u32 mark, u32 time) { return times_ms_[mark] < time; });
    const auto to = std::upper_bound(by_time_.begin(), by_time_.end(), to_ms,
                                     [this](u32 time, u32 mark) { return time < times_ms_[mark]; });
    if (from >= to) return std::nullopt;
    return times_ms_[earliest_of(static_cast<std::size_t>(from - by_time_.begin()),
                                 static_cast<std::size_t>(to - by_time_.begin()))];
  }

 private:
  // REQUIRES: first < last.
  u32 earliest_of(std::size_t first, std::size_t last) const {
    u32 earliest = std::numeric_limits<u32>::max();
    for (first += by_time_.size(), last += by_time_.size(); first < last; first /= 2, last /= 2) {
      if (first % 2 == 1) earliest = std::min(earliest, earliest_[first++]);
      if (last % 2 == 1) earliest = std::min(earliest, earliest_[--last]);
    }
    return earliest;
  }

  std::span<const u32> times_ms_;
  std::vector<u32> by_time_;  // numbers of marks
  // A tree of halves: the marks by time stand from the middle on, and node n has the lowest number below 2n and 2n + 1.
  std::vector<u32> earliest_;
};

}  // namespace traguardo
