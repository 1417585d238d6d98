// SPDX-License-Identifier: MIT
// File offsets of one kind of damage: the first hundred as they come, then a count of the rest, so that no damage makes
// the list grow.
#pragma once

#include <vector>

#include "support/bytes.h"

namespace traguardo {

class ErrorList {
 public:
  static constexpr std::size_t kListedOffsets = 100;

  void Append(u64 offset) {
    if (elements_.size() < kListedOffsets) {
      elements_.push_back(offset);
    } else if (elements_.size() == kListedOffsets) {
      elements_.push_back(1);
    } else {
      ++elements_.back();
    }
  }
  // As `times` calls of Append.
  void Append(u64 offset, u64 times) {
    for (; times > 0 && elements_.size() <= kListedOffsets; --times) Append(offset);
    if (times > 0) elements_.back() += times;
  }
  // As Append for each of `count` offsets from `first` on.
  void append_run(u64 first, u64 count) {
    for (; count > 0 && elements_.size() <= kListedOffsets; --count) Append(first++);
    if (count > 0) elements_.back() += count;
  }
  void Clear() { elements_.clear(); }
  bool empty() const { return elements_.empty(); }
  // At most 101: the offsets, and behind the hundredth the count of those that are not listed.
  const std::vector<u64>& elements() const { return elements_; }

 private:
  std::vector<u64> elements_;
};

}  // namespace traguardo
