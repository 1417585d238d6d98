// SPDX-License-Identifier: MIT
// The text forms of a value: numbers, times, gears, coordinates, receiver states. Pure functions over numbers;
// sample_texts.h takes the numbers from a sample.
#pragma once

#include <string>

#include "support/bytes.h"

namespace traguardo {

// What becomes of the leading zeros of a number.
enum class Padding {
  kBlanks = 0,         // Blanks in their place.
  kShiftAndBlank = 1,  // The text moves left, blanks follow it.
  kShiftAndEnd = 2,    // The text moves left and ends there.
};

struct DisplaySettings {
  // Digits that a plain number may take, its minus sign counted in and its point left out.
  int significant_digits = 5;
  // Characters of the field: times and differences choose between their short and their long form by it.
  int width = 15;
  // Negative: the unit's default.
  int decimals = -1;
  bool auto_decimals = false;
  // Bound of the automatic decimals. Negative: the most that the unit allows.
  int highest_decimals = -1;
  Padding padding = Padding::kBlanks;
};

// What the automatic decimals remember of the last value, so that their number doesn't flicker.
struct NumberMemory {
  double mark = 0.0;
  bool negative = false;
};

// What a former gives where there is no text.
inline constexpr char kNoText[] = "- -";

// "---", three blanks, or kNoText; empty for a good status.
std::string status_text(u32 status);

std::string plain_number_text(float value, const DisplaySettings& display, NumberMemory* memory);
// Times in milliseconds.
std::string lap_text(u32 time_ms, u32 lap_number);
std::string running_time_text(u32 time_ms);
// Short form for a field of 5 characters; with `one_decimal` tenths instead of hundredths, and a zero is shown.
std::string lap_time_text(i32 time_ms, int width, bool one_decimal);
std::string time_difference_text(i32 difference_ms, int width);
std::string odometer_time_text(u32 seconds, int decimals);
std::string gear_text(i16 gear);
// In 1e-7 degrees.
std::string coordinate_text(i32 position);
// `knows_no_data`: a fix of 0 has a text of its own.
std::string gps_state_text(u32 fix, u32 satellites, bool knows_no_data);

}  // namespace traguardo
