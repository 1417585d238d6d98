// SPDX-License-Identifier: MIT
#include "units/value_text.h"

#include <algorithm>
#include <cmath>

#include "units/sample_reader.h"
#include "units/text_format.h"

namespace traguardo {
namespace {

constexpr u32 kHourMs = 3600000;

double power_of_ten(int exponent) {
  double power = 1.0;
  for (int i = 0; i < exponent; ++i) power *= 10.0;
  return power;
}

// The most decimals that leave room for the whole digits. Near the room's end the number of decimals stays what it was
// for the last value, and falls where the sign turned.
int automatic_decimals(float value, int width, int highest, NumberMemory* memory) {
  const double magnitude = std::fabs(static_cast<double>(value));
  const bool negative = value < 0.0F;
  for (int k = std::clamp(highest, 0, width - 1); k >= 0; --k) {
    const double top = power_of_ten(width - k);
    const double mark = top - power_of_ten(width - k - 1);
    const bool fits = magnitude <= mark;
    if (!fits && !(magnitude < top - 1.0)) continue;
    const bool stays = memory->mark >= mark && memory->negative == negative;
    *memory = {mark, negative};
    return fits || stays ? k : std::max(k - 1, 0);
  }
  return 0;
}

// Value times 10^decimals, rounded away from zero, in single precision like all arithmetic on values.
i64 scaled_integer(float value, int decimals) {
  constexpr float kPowers[] = {1.0F, 10.0F, 100.0F, 1000.0F};
  const float scaled = value * kPowers[decimals];
  return truncate_to<i64>(scaled < 0.0F ? scaled - 0.5F : scaled + 0.5F);
}

// Turns the zeros before the last whole digit into blanks and puts the sign at the last of them. A sign without a blank
// takes the place of a lone zero before the point.
void place_sign(std::string* text, std::size_t last_whole_digit, bool negative) {
  std::size_t first = 0;
  while (first < last_whole_digit && (*text)[first] == '0') (*text)[first++] = ' ';
  if (negative) (*text)[first > 0 ? first - 1 : 0] = '-';
}

void apply_padding(std::string* text, Padding padding) {
  if (padding == Padding::kBlanks) return;
  const std::size_t blanks = std::min(text->find_first_not_of(' '), text->size());
  text->erase(0, blanks);
  if (padding == Padding::kShiftAndBlank) text->append(blanks, ' ');
}

struct ClockTime {
  u32 hours, minutes, seconds, hundredths;
};

ClockTime clock_time(u32 time_ms) {
  return {time_ms / kHourMs, time_ms / 60000 % 60, time_ms / 1000 % 60, time_ms / 10 % 100};
}

u32 magnitude_of(i32 value) {
  return value < 0 ? 0U - static_cast<u32>(value) : static_cast<u32>(value);
}

std::string short_lap_time(u32 time_ms, bool one_decimal) {
  const ClockTime t = clock_time(time_ms);
  if (t.hours > 0 && t.hours < 10) return format_text("%u:%02u.%02u", t.hours, t.minutes, t.seconds);
  if (t.hours > 0) return format_text("%3u:%02u", t.hours, t.minutes);
  if (one_decimal || t.minutes >= 10) return format_text("%2u:%02u.%u", t.minutes, t.seconds, t.hundredths / 10);
  return format_text("%u:%02u.%02u", t.minutes, t.seconds, t.hundredths);
}

std::string long_lap_time(u32 time_ms, bool one_decimal) {
  const ClockTime t = clock_time(time_ms);
  if (t.hours > 0) return format_text("%2u:%02u:%02u", t.hours, t.minutes, t.seconds);
  if (one_decimal) return format_text("%2u:%02u.%u", t.minutes, t.seconds, t.hundredths / 10);
  return format_text("%2u:%02u.%02u", t.minutes, t.seconds, t.hundredths);
}

}  // namespace

std::string status_text(u32 status) {
  if ((status & kStatusNoValue) != 0) return "---";
  if ((status & kStatusBlank) != 0) return "   ";
  if ((status & kStatusBad) != 0) return "---";
  return (status & kStatusNoText) != 0 ? kNoText : "";
}

std::string plain_number_text(float value, const DisplaySettings& display, NumberMemory* memory) {
  const int width = std::clamp(display.significant_digits, 1, static_cast<int>(kLongestValueText) - 1);
  int decimals = display.decimals;
  if (display.auto_decimals) decimals = automatic_decimals(value, width, display.highest_decimals, memory);
  decimals = std::clamp(decimals, 0, std::min(3, width - 1));

  const i64 scaled = scaled_integer(value, decimals);
  const bool negative = scaled < 0;
  std::string digits = std::to_string(negative ? 0 - static_cast<u64>(scaled) : static_cast<u64>(scaled));
  const std::size_t field = static_cast<std::size_t>(width);
  if (digits.size() > field - (negative ? 1 : 0)) return std::string(field, '-');

  digits.insert(0, field - digits.size(), '0');
  const std::size_t whole_digits = field - static_cast<std::size_t>(decimals);
  if (decimals > 0) digits.insert(whole_digits, 1, '.');
  place_sign(&digits, whole_digits - 1, negative);
  apply_padding(&digits, display.padding);
  return digits.substr(0, kLongestValueText);
}

std::string lap_text(u32 time_ms, u32 lap_number) {
  return format_text("%s (%u)", running_time_text(time_ms).c_str(), lap_number);
}

std::string running_time_text(u32 time_ms) {
  const ClockTime t = clock_time(time_ms);
  // The logger counts hundredths; the third digit is there for the look.
  if (t.hours == 0) return format_text("%2u:%02u.%03u", t.minutes, t.seconds, t.hundredths * 10);
  return format_text("%2u:%02u:%02u", t.hours, t.minutes, t.seconds);
}

std::string lap_time_text(i32 time_ms, int width, bool one_decimal) {
  if (time_ms == 0 && !one_decimal) return "--";
  const u32 magnitude = magnitude_of(time_ms);
  const std::string text = width == 5 ? short_lap_time(magnitude, one_decimal) : long_lap_time(magnitude, one_decimal);
  return time_ms < 0 ? "-" + text : text;
}

std::string time_difference_text(i32 difference_ms, int width) {
  const bool negative = difference_ms < 0;
  const u32 magnitude = magnitude_of(difference_ms);
  const u32 seconds = magnitude / 1000;
  const u32 hundredths = magnitude / 10 % 100;
  if (width >= 6) return format_text(negative ? " -%2u.%02u" : " +%2u.%02u", seconds, hundredths);
  if (width == 5) return format_text(negative ? "-%2u.%02u" : " %2u.%02u", seconds, hundredths);
  return format_text(negative ? "-%1u.%02u" : " %u.%02u", seconds, hundredths);
}

std::string odometer_time_text(u32 seconds, int decimals) {
  if (const u32 status = sentinel_status(seconds); status != kStatusGood) return status_text(status);
  const u32 hours = seconds / 3600;
  if (decimals < 5) return format_text("%4u", hours % 10000);
  if (hours >= 1000) return format_text("%5u", hours);
  return format_text("%3u:%02u", hours, seconds / 60 % 60);
}

std::string gear_text(i16 gear) {
  constexpr char kForward[] = "N123456789";
  constexpr char kLetters[] = "RDPSWdB";
  if (gear >= 0 && gear <= 9) return {kForward[gear]};
  if (gear <= -1 && gear >= -7) return {kLetters[-1 - gear]};
  return "-";
}

std::string coordinate_text(i32 position) {
  constexpr u32 kPerDegree = 10000000;
  const u32 magnitude = magnitude_of(position);
  // The sign goes in front, so that it isn't lost within a degree of the equator or of Greenwich.
  return format_text("%s%u.%07u", position < 0 ? "-" : "", magnitude / kPerDegree, magnitude % kPerDegree);
}

std::string gps_state_text(u32 fix, u32 satellites, bool knows_no_data) {
  if (fix >= 250 || satellites >= 250) return "No GPS";
  if (knows_no_data && fix == 0) return "No GPS Data";
  if (fix < 3) return "GPS Search";
  if (satellites < 4) return "GPS Low";
  return satellites < 6 ? "GPS Weak" : "GPS Good";
}

}  // namespace traguardo
