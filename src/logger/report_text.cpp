// SPDX-License-Identifier: MIT
#include "logger/report_text.h"

#include <algorithm>
#include <charconv>

#include "logger/error_list.h"

namespace traguardo {

ReportText& ReportText::padded(std::string_view text, std::size_t width) {
  text_ += text;
  if (text.size() < width) text_.append(width - text.size(), ' ');
  return *this;
}

ReportText& ReportText::right_aligned(std::string_view text, std::size_t width) {
  if (text.size() < width) text_.append(width - text.size(), ' ');
  text_ += text;
  return *this;
}

ReportText& ReportText::Digits(i64 value, std::size_t width) {
  std::string digits = std::to_string(value);
  const std::size_t sign = value < 0 ? 1 : 0;
  if (digits.size() < width) digits.insert(sign, width - digits.size(), '0');
  return Text(digits);
}

ReportText& ReportText::real(double value, std::size_t width) {
  constexpr int kSignificantDigits = 6;
  char digits[32];
  const std::to_chars_result result =
      std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, kSignificantDigits);
  return right_aligned(std::string_view(digits, static_cast<std::size_t>(result.ptr - digits)), width);
}

ReportText& ReportText::Offset(u64 offset) {
  constexpr std::size_t kWidth = 10;
  char digits[16];
  const std::to_chars_result result = std::to_chars(digits, digits + sizeof digits, offset, 16);
  const std::size_t count = static_cast<std::size_t>(result.ptr - digits);
  text_ += " 0x";
  if (count < kWidth) text_.append(kWidth - count, '0');
  text_.append(digits, count);
  return *this;
}

ReportText& ReportText::percentage(u64 count, u64 total) {
  const float percentage = static_cast<float>(count) * 100.0F / static_cast<float>(total);
  return Text(" [").real(percentage).Text(" pct]");
}

ReportText& ReportText::error_line(std::string_view label, const std::vector<u64>& elements) {
  if (elements.empty()) return *this;
  Text(label).Text(" ").Number(elements.size()).Text(" ");
  if (elements.size() > ErrorList::kListedOffsets) Text("(first ").Number(ErrorList::kListedOffsets).Text(" here) ");
  // A stretch of damaged bytes shows by its first offset. An offset 0 at the head counts as part of such a stretch.
  u64 before = ~u64{0};
  const std::size_t shown = std::min(elements.size(), ErrorList::kListedOffsets);
  for (std::size_t i = 0; i < shown; ++i) {
    if (elements[i] != before + 1) listed_offset(elements[i]);
    before = elements[i];
  }
  return line_end();
}

}  // namespace traguardo
