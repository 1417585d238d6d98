// SPDX-License-Identifier: MIT
// Units of the legacy family, as `CDBSensori` knows them: the text of a unit code, the unit code of a descriptor's unit
// id, and the way from one unit code to another. `CDBSensori` makes an ordered map of each at construction, in this
// order and before the sensors and the curves.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

// Answers "unit text of a unit code". A code may stand in the other tables without having a text.
struct UnitTextRow {
  u8 code;
  const char* text;  // 8-bit
};

// Answers "unit code of a unit id": the unit id is what the unit descriptor of a channel record names. Each row covers
// a range of ids.
struct UnitIdRow {
  u32 first_id;
  u32 last_id;  // inclusive
  u8 code;
};

// Answers "conversion of a pair of unit codes". `CSensori::ConvertiCampioni` takes scale, offset and flag as k, o and
// f.
struct UnitConversionRow {
  u8 from;         // unit code, the family of a sensor
  u8 to;           // unit code, that of the channel's descriptor
  float scale;     // k
  float offset;    // o, in the unit `to`
  u32 reciprocal;  // f: 1 gives 1 / (value * k + o) in place of value * k + o, and 0.0 unless k is above 0
};

std::span<const UnitTextRow> unit_texts();
std::span<const UnitIdRow> unit_ids();
std::span<const UnitConversionRow> unit_conversions();

}  // namespace traguardo
