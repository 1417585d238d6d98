// SPDX-License-Identifier: MIT
#include "text.h"

#include <fmt/compile.h>
#include <fmt/format.h>

#include <cmath>

namespace traguardo::tool {

namespace {

unsigned byte_at(std::string_view text, std::size_t i) {
  return static_cast<unsigned char>(text[i]);
}

// Length of the valid UTF-8 sequence at i, 0 if there is none.
std::size_t utf8_sequence(std::string_view text, std::size_t i) {
  const unsigned first = byte_at(text, i);
  if (first < 0x80) return 1;
  const std::size_t length = first >= 0xC2 && first <= 0xDF   ? 2
                             : first >= 0xE0 && first <= 0xEF ? 3
                             : first >= 0xF0 && first <= 0xF4 ? 4
                                                              : 0;
  if (length == 0 || i + length > text.size()) return 0;
  for (std::size_t k = 1; k < length; ++k) {
    if ((byte_at(text, i + k) & 0xC0) != 0x80) return 0;
  }
  const unsigned second = byte_at(text, i + 1);
  const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
  const bool surrogate = first == 0xED && second > 0x9F;
  const bool too_high = first == 0xF4 && second > 0x8F;
  return overlong || surrogate || too_high ? 0 : length;
}

bool is_utf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = utf8_sequence(text, i);
    if (length == 0) return false;
    i += length;
  }
  return true;
}

std::string special_value(double value) {
  if (std::isnan(value)) return "nan";
  return value > 0 ? "inf" : "-inf";
}

}  // namespace

std::string to_utf8(std::string_view text) {
  if (is_utf8(text)) return std::string(text);
  std::string result;
  result.reserve(text.size() * 2);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned code = byte_at(text, i);
    if (code < 0x80) {
      result.push_back(static_cast<char>(code));
    } else {
      result.push_back(static_cast<char>(0xC0 | (code >> 6)));
      result.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    }
  }
  return result;
}

std::string readable_unit(std::string_view unit) {
  // Each of the two has bytes of another character set than all other units.
  if (unit == "\xBB") return "\u03BB";
  if (unit == "\xA1/sec") return "\u00B0/sec";
  return to_utf8(unit);
}

std::size_t display_width(std::string_view utf8) {
  std::size_t width = 0;
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    if ((byte_at(utf8, i) & 0xC0) != 0x80) ++width;
  }
  return width;
}

std::string shortest(double value) {
  return std::isfinite(value) ? fmt::format("{}", value) : special_value(value);
}

std::string shortest_f32(double value) {
  return std::isfinite(value) ? fmt::format("{}", static_cast<float>(value)) : special_value(value);
}

void append_shortest_f32(std::string* text, float value) {
  char buffer[32];
  if (std::isfinite(value)) {
    text->append(buffer, fmt::format_to(buffer, FMT_COMPILE("{}"), value));
  } else {
    text->append(special_value(static_cast<double>(value)));
  }
}

std::string lap_clock(double seconds) {
  if (!std::isfinite(seconds) || std::abs(seconds) > 1e9) return shortest(seconds);
  const long long total_ms = std::llround(std::abs(seconds) * 1000);
  const char* const sign = seconds < 0 && total_ms > 0 ? "-" : "";
  return fmt::format("{}{}:{:02}.{:03}", sign, total_ms / 60000, total_ms / 1000 % 60, total_ms % 1000);
}

}  // namespace traguardo::tool
