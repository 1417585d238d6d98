// SPDX-License-Identifier: MIT
// Numbers of configuration files, tables and reports as text. Independent of the locale that a host has set: a point is
// a point everywhere.
#pragma once

#include <string>
#include <string_view>

#include "support/bytes.h"

namespace traguardo {

// What strtof makes of the text: blanks, a sign, then as much as is a number (decimal, hexadecimal, "inf", "nan"); 0
// for a text that doesn't begin with one, infinity or 0 for one out of range. `used` takes the number of characters
// that were read, blanks and sign included, 0 without a number.
float float_from_text(std::string_view text, std::size_t* used = nullptr);

// What strtoul makes of the text in base 10, in 32 bits: 4294967295 for what is larger, 0 without a number, and a minus
// sign counts down from 2^32.
u32 u32_from_text(std::string_view text);

// As a text stream prints a float by default: six significant digits.
void append_number(std::string* text, float value);
// With three decimals.
void append_thousandths(std::string* text, float value);

}  // namespace traguardo
