// SPDX-License-Identifier: MIT
// The bytes of session files: little-endian numbers, sample formats, tags. Written from the writer's side; nothing here
// is shared with the reader.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace traguardo::simulator {

using Byte = std::uint8_t;
using Bytes = std::vector<Byte>;

// Each writes a number and gives the place behind it.
inline Byte* put_u8(Byte* at, std::uint32_t value) {
  *at = static_cast<Byte>(value & 0xFFu);
  return at + 1;
}
inline Byte* put_u16(Byte* at, std::uint32_t value) {
  return put_u8(put_u8(at, value), value >> 8);
}
inline Byte* put_u32(Byte* at, std::uint32_t value) {
  return put_u16(put_u16(at, value), value >> 16);
}
inline Byte* put_i32(Byte* at, std::int32_t value) {
  return put_u32(at, static_cast<std::uint32_t>(value));
}

inline Byte* put_f32(Byte* at, double value) {
  return put_u32(at, std::bit_cast<std::uint32_t>(static_cast<float>(value)));
}

// Sample formats by their numbers in a channel record.
enum class Format : std::uint32_t {
  signed_32 = 0,
  signed_16 = 1,
  signed_8 = 2,
  unsigned_32 = 3,
  unsigned_16 = 4,
  unsigned_8 = 5,
  float_32 = 6,
  gear = 11,
  lap_time = 12,
  bits_8 = 13,
  code_and_6_characters = 15,
  code_and_30_characters = 16,
  float_16 = 20,
  time_difference = 24,
  total_odometer = 26,
  rolling_time = 32,
};

std::size_t sample_size(Format format);
// Writes one sample of sample_size(format) bytes. Values outside the format's range become its nearest one, and so do
// those that a reader would take for "no value".
void encode_sample(Format format, double value, Byte* at);

// Appends a whole tag. The name has up to four characters.
void append_tag(Bytes& out, std::string_view name, std::uint8_t version, const Bytes& payload);
void append_text_tag(Bytes& out, std::string_view name, std::string_view text);

}  // namespace traguardo::simulator
