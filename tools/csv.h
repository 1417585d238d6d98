// SPDX-License-Identifier: MIT
// Comma-separated values.
#pragma once

#include <string>

namespace traguardo::tool {

// A field with separators, quotes or line ends goes in quotes, its own quotes doubled.
inline std::string csv_field(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string field = "\"";
  for (const char c : text) {
    if (c == '"') field += '"';
    field += c;
  }
  return field + '"';
}

}  // namespace traguardo::tool
