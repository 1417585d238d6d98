// SPDX-License-Identifier: MIT
#include "units/mylaps_bits.h"

#include <array>

#include "units/text_format.h"

namespace traguardo::mylaps {
namespace {

constexpr char kOutOfReach[] = "---";

u32 bits(u32 word, u32 lowest, u32 width) {
  return word >> lowest & ((1U << width) - 1);
}

std::string minutes_text(u32 seconds) {
  return format_text("%01u:%02u", seconds / 60, seconds % 60);
}

std::string small_number(u32 value) {
  return format_text("%2u", value);
}

std::string number(u32 value) {
  return value < 1000 ? format_text("%u", value) : kOutOfReach;
}

std::string minutes(u32 seconds) {
  if (seconds < 10 * 60) return minutes_text(seconds);
  return seconds < 1000 * 60 ? format_text("%u", seconds / 60) : kOutOfReach;
}

std::string hours(u32 seconds) {
  if (seconds < 10 * 60) return minutes_text(seconds);
  if (seconds < 36000 * 60) return format_text("%01u:%02u", seconds / 3600, seconds / 60 % 60);
  return kOutOfReach;
}

std::string tenths(u32 value) {
  if (value < 600) return format_text("%u.%01u", value / 10, value % 10);
  return minutes_text(value / 10);
}

std::string hundredths(u32 value) {
  if (value < 1000) return format_text("%01u.%02u", value / 100, value % 100);
  if (value < 6000) return format_text("%2u.%01u", value / 100, value / 10 % 10);
  return kOutOfReach;
}

// By the kind of text.
constexpr std::array<std::string (*)(u32), 7> kFormers = {small_number, number,     minutes,   hours,
                                                          tenths,       hundredths, hundredths};

u32 milliseconds_per_step(u32 kind) {
  return kind == 4 ? 100 : kind == 5 || kind == 6 ? 10 : 1000;
}

i64 with_sign(bool is_negative, i64 value) {
  return is_negative ? -value : value;
}

}  // namespace

i64 Timing::time_ms() const {
  return with_sign(time_is_negative, i64{time_s} * 1000);
}

i64 Timing::field_ms() const {
  return with_sign(field_is_negative, i64{field} * milliseconds_per_step(field_kind));
}

Timing timing_of(const u8* sample) {
  const u32 first = load_u32(sample);
  const u32 second = load_u32(sample + 4);
  return {bits(first, 0, 22),       bits(first, 22, 3),   bits(first, 31, 1) != 0,
          bits(first, 25, 6),       bits(second, 0, 12),  bits(second, 12, 3),
          bits(second, 15, 1) != 0, bits(second, 16, 12), bits(second, 28, 3)};
}

std::string value_text(u32 value, u32 kind, bool is_negative) {
  if (kind >= kFormers.size()) return kOutOfReach;
  if (value == 0) return "0";
  const std::string text = kFormers[kind](value);
  return is_negative && text != kOutOfReach ? "-" + text : text;
}

std::string field_text(u32 field, u32 kind, bool is_negative) {
  return is_error(field) ? "err" : value_text(field, kind, is_negative);
}

std::string gap_text(const Gap& gap) {
  if (gap.is_error()) return "err";
  if (gap.milliseconds() == 0) return "0";
  // A thousandths field above 999 carries over.
  const u32 seconds = gap.seconds + gap.thousandths / 1000;
  const u32 thousandths = gap.thousandths % 1000;
  const char sign = gap.is_negative ? '-' : '+';
  if (seconds < 10) return format_text("%c%1u.%02u", sign, seconds, thousandths / 10);
  if (seconds < 60) return format_text("%c%u.%01u", sign, seconds, thousandths / 100);
  return format_text("%c%u", sign, seconds);
}

}  // namespace traguardo::mylaps
