// SPDX-License-Identifier: MIT
#include "near_names.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

namespace traguardo::tool {

namespace {

std::string folded(const std::string& name) {
  std::string result;
  for (const char c : name) {
    if (c != ' ' && c != '_') result += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return result;
}

// Letters to put in, take out or change to get from one to the other.
std::size_t distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t k = 0; k < b.size(); ++k) {
      const std::size_t changed = diagonal + (a[i] == b[k] ? 0 : 1);
      diagonal = row[k + 1];
      row[k + 1] = std::min({changed, row[k] + 1, diagonal + 1});
    }
  }
  return row.back();
}

constexpr std::size_t kFar = 100;
constexpr std::size_t kLongestName = 200;

// 0 for another case or other blanks; kFar where nobody would mix the two up.
std::size_t how_far(const std::string& wanted, const std::string& name) {
  constexpr std::size_t kContained = 3;
  constexpr std::size_t kShortestPart = 3;
  if (wanted.empty() || wanted.size() > kLongestName || name.size() > kLongestName) return kFar;
  const std::size_t apart = distance(wanted, name);
  if (apart <= std::min<std::size_t>(2, wanted.size() / 3)) return apart;
  const bool is_part = wanted.size() >= kShortestPart && name.find(wanted) != std::string::npos;
  return is_part ? kContained : kFar;
}

}  // namespace

std::string question_about_names(const std::string& wanted, const std::vector<std::string>& names) {
  constexpr std::size_t kMost = 3;
  std::vector<std::pair<std::size_t, std::string>> near;
  for (const std::string& name : names) {
    const std::size_t far = how_far(folded(wanted), folded(name));
    if (far < kFar) near.emplace_back(far, name);
  }
  std::stable_sort(near.begin(), near.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  if (near.empty()) return {};
  near.resize(std::min(near.size(), kMost));
  std::string text = "; did you mean ";
  for (std::size_t i = 0; i < near.size(); ++i) {
    if (i > 0) text += i + 1 == near.size() ? " or " : ", ";
    text += '"' + near[i].second + '"';
  }
  return text + "?";
}

}  // namespace traguardo::tool
