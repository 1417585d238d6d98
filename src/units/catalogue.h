// SPDX-License-Identifier: MIT
// The constant tables of the taxonomy: which functions exist, what they are called, in which units they are shown. The
// rows stand in *_data.cpp; an end mark of the original tables is the end of the span here.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "support/bytes.h"

namespace traguardo {

// A value shown in a unit is value * scale + offset.
struct UnitRow {
  const char* name;  // As stored: a text that begins with character 9 holds 16-bit characters, see decode_unit_text.
  float scale;
  float offset;
  i32 default_decimals;
  i32 most_decimals;
  i32 least_decimals;
  i32 alias;  // Index in the same set of the row that stands for this name; -1 for none.
};
using UnitSet = std::span<const UnitRow>;

struct PositionWordRow {
  u32 fid;
  const char* short_name;
  const char* long_name;
};

struct PositionRow {
  u32 position;
  const char* short_name;
  const char* long_name;
  std::span<const PositionWordRow> words;
};

struct FunctionRow {
  u32 fid;
  const char* short_name;
  const char* long_name;
  UnitSet units;
  std::span<const PositionRow> positions;
};

struct KeyRow {
  u32 fid;
  const char* short_name;
  const char* long_name;
  const char* key;
};

struct NamedChannelRow {
  u32 fid;
  const char* unit;
  double divisor;  // Turns the stored integer into the unit.
  i32 code;        // -1 where the channel has none.
  double scale;
  const char* short_name;
  const char* long_name;
  const char* key;
  i32 format;
};

// One value of an enumeration of the function word.
struct NameRow {
  u32 value;
  const char* key;
  const char* short_name;
  const char* long_name;
};

namespace catalogue {
// The order of the rows is their priority: the particular ones stand before the general one of their quantity.
std::span<const FunctionRow> functions();
std::span<const UnitSet> unit_sets();
std::span<const KeyRow> keys();
std::span<const NamedChannelRow> basic_channels();
std::span<const NamedChannelRow> external_channels();
std::span<const NamedChannelRow> derived_channels();

std::span<const NameRow> physical_quantities();
std::span<const NameRow> objects();
std::span<const NameRow> details();
std::span<const NameRow> packet_specs();
std::span<const NameRow> positions();
std::span<const NameRow> in_out();
std::span<const NameRow> left_right();
std::span<const NameRow> front_rear();
std::span<const NameRow> up_down();
}  // namespace catalogue

// A unit's name as it is handed out: 8-bit text, of a 16-bit character its low byte (0xBB for lambda).
std::string decode_unit_text(std::string_view stored);

}  // namespace traguardo
