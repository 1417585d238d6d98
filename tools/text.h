// SPDX-License-Identifier: MIT
// Texts of a session as the outside wants them. The library hands out 8-bit texts of no particular encoding; all text
// that leaves the tool is UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace traguardo::tool {

// Valid UTF-8 stays; anything else is taken as Latin-1.
std::string to_utf8(std::string_view text);

// A unit in UTF-8: the single byte that stands for lambda becomes its letter.
std::string readable_unit(std::string_view unit);

// How many columns a UTF-8 text takes, with one per character.
std::size_t display_width(std::string_view utf8);

// The shortest decimal that reads back to the same double; "nan", "inf" and "-inf" where there is none.
std::string shortest(double value);
// The same for a value that the library widened from 32 bits: shortest among those that read back to the same 32 bits.
std::string shortest_f32(double value);
// The same at the end of a text, for tables of millions of values.
void append_shortest_f32(std::string* text, float value);

// Minutes, seconds and milliseconds, as in "1:23.456".
std::string lap_clock(double seconds);

}  // namespace traguardo::tool
