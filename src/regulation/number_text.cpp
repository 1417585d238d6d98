// SPDX-License-Identifier: MIT
#include "regulation/number_text.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace traguardo {

namespace {

bool is_space(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
bool is_hexadecimal_digit(char c) {
  return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

std::size_t skip_spaces(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && is_space(text[at])) ++at;
  return at;
}

bool begins_hexadecimal(std::string_view text) {
  if (text.size() < 3 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X')) return false;
  return is_hexadecimal_digit(text[2]) || (text[2] == '.' && text.size() > 3 && is_hexadecimal_digit(text[3]));
}

// The value behind the exponent's letter, held to what no text of a real file exceeds.
i64 exponent_of(std::string_view text) {
  constexpr i64 kFar = 1000000000000;
  bool negative = false;
  if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
    negative = text.front() == '-';
    text.remove_prefix(1);
  }
  i64 value = 0;
  for (const char c : text) {
    if (!is_digit(c)) break;
    value = std::min(value * 10 + (c - '0'), kFar);
  }
  return negative ? -value : value;
}

// Of a number that doesn't fit: whether it's too large, and not too small. Its first digit that isn't 0 stands so far
// from 1, by its place and the exponent, that the sign of the sum decides.
bool is_too_large(std::string_view number, bool hexadecimal) {
  i64 place = 0;
  bool behind_point = false;
  bool found = false;
  std::size_t i = 0;
  for (; i < number.size(); ++i) {
    const char c = number[i];
    if (c == '.') {
      behind_point = true;
      continue;
    }
    if (!(hexadecimal ? is_hexadecimal_digit(c) : is_digit(c))) break;
    found = found || c != '0';
    if (found && !behind_point) ++place;
    if (!found && behind_point) --place;
  }
  const i64 exponent = i < number.size() ? exponent_of(number.substr(i + 1)) : 0;
  return place * (hexadecimal ? 4 : 1) + exponent > 0;
}

}  // namespace

float float_from_text(std::string_view text, std::size_t* used) {
  if (used != nullptr) *used = 0;
  std::size_t at = skip_spaces(text);
  bool negative = false;
  if (at < text.size() && (text[at] == '+' || text[at] == '-')) negative = text[at++] == '-';
  const bool hexadecimal = begins_hexadecimal(text.substr(at));
  if (hexadecimal) at += 2;
  const std::string_view number = text.substr(at);
  // A second sign is no number, though from_chars would take it.
  if (number.empty() || number.front() == '-') return 0.0F;

  float value = 0.0F;
  const std::from_chars_result result =
      std::from_chars(number.data(), number.data() + number.size(), value,
                      hexadecimal ? std::chars_format::hex : std::chars_format::general);
  if (result.ec == std::errc::invalid_argument) return 0.0F;
  const std::size_t length = static_cast<std::size_t>(result.ptr - number.data());
  if (result.ec == std::errc::result_out_of_range) {
    value = is_too_large(number.substr(0, length), hexadecimal) ? std::numeric_limits<float>::infinity() : 0.0F;
  }
  if (used != nullptr) *used = at + length;
  return negative ? -value : value;
}

u32 u32_from_text(std::string_view text) {
  constexpr u64 kHighest = std::numeric_limits<u32>::max();
  std::size_t at = skip_spaces(text);
  bool negative = false;
  if (at < text.size() && (text[at] == '+' || text[at] == '-')) negative = text[at++] == '-';
  u64 value = 0;
  for (; at < text.size() && is_digit(text[at]); ++at) {
    value = std::min(value * 10 + static_cast<u64>(text[at] - '0'), kHighest);
  }
  const u32 number = static_cast<u32>(value);
  return negative ? 0U - number : number;
}

void append_number(std::string* text, float value) {
  char buffer[32];
  const std::to_chars_result result =
      std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 6);
  text->append(buffer, result.ptr);
}

void append_thousandths(std::string* text, float value) {
  // The largest float has 39 digits before its point.
  char buffer[64];
  const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 3);
  text->append(buffer, result.ptr);
}

}  // namespace traguardo
