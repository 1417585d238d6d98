// SPDX-License-Identifier: MIT
#include "wildcard.h"

#include <algorithm>
#include <cstddef>

namespace traguardo::tool {

namespace {

std::size_t behind_character(std::string_view utf8, std::size_t at) {
  do ++at;
  while (at < utf8.size() && (static_cast<unsigned char>(utf8[at]) & 0xC0) == 0x80);
  return at;
}

}  // namespace

bool has_wildcard(std::string_view text) {
  return text.find_first_of("*?") != std::string_view::npos;
}

// Behind the last star everything must fit; where it doesn't, that star takes one character more.
bool fits(std::string_view pattern, std::string_view name) {
  std::size_t p = 0;
  std::size_t n = 0;
  std::size_t behind_star = std::string_view::npos;
  std::size_t star_end = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      behind_star = ++p;
      star_end = n;
    } else if (p < pattern.size() && pattern[p] == '?') {
      ++p;
      n = behind_character(name, n);
    } else if (p < pattern.size() && pattern[p] == name[n]) {
      ++p;
      ++n;
    } else if (behind_star != std::string_view::npos) {
      p = behind_star;
      n = star_end = behind_character(name, star_end);
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

std::string without_case(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return lower;
}

}  // namespace traguardo::tool
