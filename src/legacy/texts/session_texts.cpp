// SPDX-License-Identifier: MIT
#include "legacy/texts/session_texts.h"

#include <algorithm>
#include <array>
#include <limits>

namespace traguardo {
namespace {

bool is_space(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

// Takes numbers and separators off the front of a text, as a scanning format would.
class FieldScanner {
 public:
  explicit FieldScanner(std::string_view text) : text_(text) {}

  // A whole number, with blanks and a sign in front; one that is too large is held to the range.
  bool number(i64* value) {
    skip_blanks();
    const bool negative = !text_.empty() && text_.front() == '-';
    if (!text_.empty() && (text_.front() == '-' || text_.front() == '+')) text_.remove_prefix(1);
    if (text_.empty() || !is_digit(text_.front())) return false;
    constexpr i64 kMost = std::numeric_limits<i32>::max();
    i64 sum = 0;
    while (!text_.empty() && is_digit(text_.front())) {
      sum = std::min<i64>(kMost, sum * 10 + (text_.front() - '0'));
      text_.remove_prefix(1);
    }
    *value = negative ? -sum : sum;
    return true;
  }

  // A blank of the format stands for any number of blanks, also for none.
  bool separator(char expected) {
    if (expected == ' ') {
      skip_blanks();
      return true;
    }
    if (text_.empty() || text_.front() != expected) return false;
    text_.remove_prefix(1);
    return true;
  }

 private:
  void skip_blanks() {
    while (!text_.empty() && is_space(text_.front())) text_.remove_prefix(1);
  }

  std::string_view text_;
};

int held(i64 value, i64 low, i64 high) {
  return static_cast<int>(std::clamp(value, low, high));
}

}  // namespace

std::tm parse_session_date(std::string_view text) {
  enum Field { kDay, kMonth, kYear, kHour, kMinute, kSecond, kFieldCount };
  constexpr std::string_view kSeparators = "-- ::";
  std::array<i64, kFieldCount> fields{};
  FieldScanner scanner(text);
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (i > 0 && !scanner.separator(kSeparators[i - 1])) break;
    if (!scanner.number(&fields[i])) break;
  }
  const i64 year = fields[kYear] + (fields[kYear] < 90 ? 2000 : 1900);
  std::tm when{};
  when.tm_mday = held(fields[kDay], 1, 31);
  when.tm_mon = held(fields[kMonth], 1, 12) - 1;
  when.tm_year = held(year, 1900, 2100) - 1900;
  when.tm_hour = held(fields[kHour], 0, 23);
  when.tm_min = held(fields[kMinute], 0, 59);
  when.tm_sec = held(fields[kSecond], 0, 59);
  return when;
}

std::string venue_type_text(u32 code) {
  for (const VenueTypeRow& row : venue_types()) {
    if (row.code == code) return row.text;
  }
  return {};
}

std::string run_default_text(RunSection section, u16 offset, u16 run_number) {
  for (const RunDefaultTextRow& row : run_default_texts()) {
    if (row.section != section || row.offset != offset) continue;
    std::string text = row.text;
    const std::size_t number_at = text.find("%d");
    if (number_at != std::string::npos) text.replace(number_at, 2, std::to_string(run_number));
    return text;
  }
  return {};
}

}  // namespace traguardo
