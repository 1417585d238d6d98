// SPDX-License-Identifier: MIT
// The unit field of a channel record, where it isn't a text but names a unit by number.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

inline constexpr std::size_t kUnitFieldWidth = 10;
using UnitField = std::span<const u8, kUnitFieldWidth>;

struct UnitDescriptor {
  bool valid = false;      // false: the field is a text, and only `decimals` means something
  u32 unit_id = 0;         // key of unit_ids()
  i32 decimals = 1;        // 1 where they can't be read
  u8 family_override = 0;  // unit code that replaces the family of the sensor, 0 for none
};

// Both forms; the first byte alone tells which one it is: 9 decimal digits, 11 packed bits.
UnitDescriptor read_unit_descriptor(UnitField field);

}  // namespace traguardo
