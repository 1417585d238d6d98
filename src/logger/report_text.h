// SPDX-License-Identifier: MIT
// The text of a report while it is composed: its number forms and its recurring pieces. Independent of the locale that
// a host has set.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/bytes.h"

namespace traguardo {

class ReportText {
 public:
  ReportText& Text(std::string_view text) {
    text_ += text;
    return *this;
  }
  // Blanks behind the text up to `width` characters; a longer text stays whole.
  ReportText& padded(std::string_view text, std::size_t width);
  // In decimal, with blanks in front up to `width` characters.
  template <typename Integer>
  ReportText& Number(Integer value, std::size_t width = 0) {
    return right_aligned(std::to_string(value), width);
  }
  // In decimal, with zeros in front up to `width` characters. A minus sign counts as one and stands before the zeros.
  ReportText& Digits(i64 value, std::size_t width);
  // Six significant digits, as a text stream prints a float by default.
  ReportText& real(double value, std::size_t width = 0);
  // " 0x" and ten hexadecimal digits.
  ReportText& Offset(u64 offset);
  // The same as an entry of a list.
  ReportText& listed_offset(u64 offset) { return Offset(offset).Text(","); }
  // " [25 pct]". REQUIRES: total is not 0.
  ReportText& percentage(u64 count, u64 total);
  ReportText& line_end() { return Text("\n"); }
  // The offsets of one kind of damage with their number, on a line; nothing for an empty list. Elements behind the
  // hundredth are left out: in an ErrorList the one there is a count.
  ReportText& error_line(std::string_view label, const std::vector<u64>& elements);

  const std::string& text() const { return text_; }
  std::size_t size() const { return text_.size(); }
  void Clear() { text_.clear(); }

 private:
  ReportText& right_aligned(std::string_view text, std::size_t width);

  std::string text_;
};

}  // namespace traguardo
