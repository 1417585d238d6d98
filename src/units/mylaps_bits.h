// SPDX-License-Identifier: MIT
// The bits of the timing packets, 12 bytes each, of which the first two little-endian words carry everything.
//
// Lap time packet (kSMPL_FMT_MYLAPS_LAPTIME):
//
//   word 0  bits 0 to 21   time to go, in whole seconds
//           bits 22 to 24  kind of its text
//           bits 25 to 30  standing position
//           bit 31         set: the time is negative
//   word 1  bits 0 to 11   lap time field: tenths for kind 4, hundredths for kinds 5 and 6, else seconds
//           bits 12 to 14  kind of its text
//           bit 15         set: the field is negative
//           bits 16 to 27  lap count
//           bits 28 to 30  kind of its text
//
// Gap packet (kSMPL_FMT_MYLAPS_GAP): word 0 is the gap to the car in front, word 1 to the car behind. Personal packet
// (kSMPL_FMT_MYLAPS_PERSONAL): word 0 is the gap to the driver's lap before, word 1 to his best. Each of these words:
//
//           bits 0 to 9    thousandths of a second
//           bits 10 to 21  whole seconds
//           bit 31         set: the gap is negative
//
// A twelve-bit field of 4001 or 4095 says that there was an error; 0 is "0" in every kind of text.
#pragma once

#include <string>

#include "support/bytes.h"

namespace traguardo::mylaps {

constexpr bool is_error(u32 field) {
  return field == 4001 || field == 4095;
}

struct Timing {
  u32 time_s;
  u32 time_kind;
  bool time_is_negative;
  u32 position;
  u32 field;
  u32 field_kind;
  bool field_is_negative;
  u32 count;
  u32 count_kind;

  i64 time_ms() const;
  i64 field_ms() const;
};
// REQUIRES: 8 bytes.
Timing timing_of(const u8* sample);

struct Gap {
  u32 seconds;
  u32 thousandths;
  bool is_negative;

  constexpr bool is_error() const { return mylaps::is_error(seconds); }
  constexpr i64 milliseconds() const { return (is_negative ? -1 : 1) * (i64{seconds} * 1000 + thousandths); }
};
constexpr Gap gap_of(u32 word) {
  return {word >> 10 & 0xFFF, word & 0x3FF, (word >> 31) != 0};
}

// A value by the kind of its text; "---" for a kind that doesn't reach that far.
std::string value_text(u32 value, u32 kind, bool is_negative);
// The same for a twelve-bit field, with its errors.
std::string field_text(u32 field, u32 kind, bool is_negative);
std::string gap_text(const Gap& gap);

}  // namespace traguardo::mylaps
