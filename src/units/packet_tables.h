// SPDX-License-Identifier: MIT
// The packets of the logger family: which sub-channels stand at which place of a packet's sample.
#pragma once

#include <span>

#include "units/sample_reader.h"
#include "units/sample_texts.h"

namespace traguardo {

// One field of a packet. A `fid` of 0 marks a reserved place.
struct SubChannelRow {
  u32 fid;
  u32 byte_offset;  // Where a plain field stands; for a computed one only what it is about.
  i32 format;       // kComputedFormat: `read` takes the whole sample.
  ReaderPair read;  // Empty: the reader of the format.
  TextForm text;    // kNone: the text of the format.
  const char* short_name;
  const char* long_name;
};
using PacketTable = std::span<const SubChannelRow>;

// A packet: which function words have it, and its fields.
struct PacketRow {
  u32 object;
  u32 position;  // kAnyPosition: whatever it is
  i32 format;    // kAnyFormat: whatever it is
  PacketTable fields;
};

namespace packets {

inline constexpr u32 kAnyPosition = 0xFFFFFFFF;
inline constexpr i32 kAnyFormat = -2;

std::span<const PacketRow> all();

// The fields of a packet by its function word; those of the timing packets, which share one word, by their sample
// format. Empty for words that are no packet and for packets without fields.
PacketTable table_of(u32 packet_fid, i32 format);
// The same by the object and the position of the word.
PacketTable table_of_kind(u32 object, u32 position, i32 format);

}  // namespace packets

}  // namespace traguardo
