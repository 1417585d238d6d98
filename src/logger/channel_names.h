// SPDX-License-Identifier: MIT
// The names of one channel table: those that come more than once get a number each.
#pragma once

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support/bytes.h"

namespace traguardo {

class ChannelNames {
 public:
  explicit ChannelNames(std::vector<std::string> in_file) : in_file_(std::move(in_file)) {
    std::sort(in_file_.begin(), in_file_.end());
  }

  // The name of the next record that has `plain` in the file: the same where no other record has it, else with the
  // first number that makes it unlike all names of the file and all given so far.
  std::string own_name(const std::string& plain) {
    const auto [first, behind] = std::equal_range(in_file_.begin(), in_file_.end(), plain);
    if (behind - first < 2) return plain;
    // The names given so far stay given, so the search goes on where it ended for this one.
    u32& number = last_number_[plain];
    std::string name;
    do {
      name = plain + " dup " + std::to_string(++number);
    } while (std::binary_search(in_file_.begin(), in_file_.end(), name) || given_.contains(name));
    given_.insert(name);
    return name;
  }

 private:
  std::vector<std::string> in_file_;  // sorted
  std::set<std::string> given_;
  std::map<std::string, u32> last_number_;
};

}  // namespace traguardo
