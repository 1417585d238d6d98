// SPDX-License-Identifier: MIT
// wire: the independent writer of session files. What lives here turns descriptions of sessions into bytes, offset by
// offset as the formats say; it includes nothing of src/, so that an error of the reader doesn't hide in the files that
// it is tried with. The simulator, tests, benchmarks and fuzzers call it. It writes what it is told: also what no
// logger would write.
//
// This header: little-endian numbers, and records made of them.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace traguardo::wire {

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
inline Byte* put_f32(Byte* at, float value) {
  return put_u32(at, std::bit_cast<std::uint32_t>(value));
}

// Over what stands there.
inline void set_u16(Bytes* bytes, std::size_t at, std::uint32_t value) {
  put_u16(&bytes->at(at), value);
}
inline void set_u32(Bytes* bytes, std::size_t at, std::uint32_t value) {
  put_u32(&bytes->at(at), value);
}

inline Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}
inline Bytes text_bytes(std::string_view text) {
  return Bytes(text.begin(), text.end());
}
inline Bytes u16_bytes(std::uint32_t value) {
  Bytes out(2);
  put_u16(out.data(), value);
  return out;
}
inline Bytes f32_bytes(float value) {
  Bytes out(4);
  put_f32(out.data(), value);
  return out;
}

std::uint32_t sum_of(const Bytes& bytes);

// A record under construction: zero bytes with fields put into them.
class Record {
 public:
  explicit Record(std::size_t size) : bytes_(size) {}

  Record& u8(std::size_t at, std::uint32_t value) {
    put_u8(&bytes_.at(at), value);
    return *this;
  }
  Record& u16(std::size_t at, std::uint32_t value) {
    put_u16(&bytes_.at(at), value);
    return *this;
  }
  Record& u32(std::size_t at, std::uint32_t value) {
    put_u32(&bytes_.at(at), value);
    return *this;
  }
  Record& i32(std::size_t at, std::int32_t value) { return u32(at, static_cast<std::uint32_t>(value)); }
  Record& f32(std::size_t at, float value) { return u32(at, std::bit_cast<std::uint32_t>(value)); }
  // As many bytes as there is room for.
  Record& text(std::size_t at, std::size_t width, std::string_view value);

  const Bytes& bytes() const { return bytes_; }

 private:
  Bytes bytes_;
};

}  // namespace traguardo::wire
