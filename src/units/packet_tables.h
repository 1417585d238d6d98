// SPDX-License-Identifier: MIT
// The packets of the logger family: which sub-channels stand at which place of a packet's sample.
#pragma once

#include <span>

#include "units/sample_reader.h"
#include "units/value_text.h"

namespace traguardo {

// One field of a packet. A `fid` of 0 marks a reserved place.
struct SubChannelRow {
  u32 fid;
  u32 byte_offset;  // Where a plain field stands; for a computed one only what it is about.
  i32 format;       // kComputedFormat: `read` takes the whole sample.
  ReaderPair read;  // Empty: the reader of the format.
  TextKind text;    // kNone: the text of the format.
  const char* short_name;
  const char* long_name;
};
using PacketTable = std::span<const SubChannelRow>;

namespace packets {
PacketTable lap_2g();  // Also for the second form of 32 bytes.
PacketTable lap_2g_v3();
PacketTable lap_1g();
PacketTable gps_zep();
PacketTable gps_ubx();
PacketTable kestrel_measures();
PacketTable total_odometer();
PacketTable resettable_odometer();
PacketTable best_time();
PacketTable roll_time();
PacketTable mylaps_lap_time();
PacketTable mylaps_gap();
PacketTable mylaps_personal();

// The table of a packet by its function word; the timing packets, which share one word, by their sample format. Empty
// for words that are no packet and for packets without fields.
PacketTable table_of(u32 packet_fid, i32 format);
}  // namespace packets

}  // namespace traguardo
