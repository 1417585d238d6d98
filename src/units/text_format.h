// SPDX-License-Identifier: MIT
// Short texts by a printf format.
#pragma once

#include <cstdio>
#include <string>

namespace traguardo {

// Texts of values are never longer.
inline constexpr std::size_t kLongestValueText = 32;

// At most kLongestValueText characters.
template <typename... Arguments>
std::string format_text(const char* format, Arguments... arguments) {
  char text[kLongestValueText + 1];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  const int length = std::snprintf(text, sizeof text, format, arguments...);
#pragma GCC diagnostic pop
  if (length < 0) return {};
  const std::size_t shown = static_cast<std::size_t>(length);
  return {text, shown < kLongestValueText ? shown : kLongestValueText};
}

}  // namespace traguardo
