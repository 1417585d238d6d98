// SPDX-License-Identifier: MIT
// Builds the bytes of a logger file, tag by tag and frame by frame, for tests of the reader. Written from the format,
// with nothing of the reader in it.
#pragma once

#include <string>
#include <vector>

#include "support/bytes.h"

namespace traguardo::test {

using Bytes = std::vector<u8>;

inline void put(Bytes* out, u64 value, int width) {
  for (int i = 0; i < width; ++i) out->push_back(static_cast<u8>(i < 8 ? value >> (8 * i) : 0));
}
inline Bytes bytes_of(const std::string& text) {
  return Bytes(text.begin(), text.end());
}
inline Bytes float_bytes(float value) {
  Bytes out(4);
  store_f32(out.data(), value);
  return out;
}
inline Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

inline Bytes tag(const std::string& name, const Bytes& payload, u8 version = 1) {
  Bytes out = bytes_of("<h");
  for (std::size_t i = 0; i < 4; ++i) out.push_back(i < name.size() ? static_cast<u8>(name[i]) : 0);
  put(&out, payload.size(), 4);
  out.push_back(version);
  out.push_back('>');
  u32 sum = 0;
  for (const u8 byte : payload) sum += byte;
  out.insert(out.end(), payload.begin(), payload.end());
  out.push_back('<');
  for (std::size_t i = 0; i < 4; ++i) out.push_back(i < name.size() ? static_cast<u8>(name[i]) : 0);
  put(&out, sum & 0xFFFF, 2);
  out.push_back('>');
  return out;
}
inline Bytes tag(const std::string& name, const std::string& text, u8 version = 1) {
  return tag(name, bytes_of(text), version);
}

// A row of the channel table.
struct Channel {
  u16 index = 0;
  std::string name;
  i32 format = 4;  // U16
  u32 size = 2;
  u32 fid = 0x10;  // a speed in km/h: values as they are
  u32 period_us = 10000;
  u32 flags = 0;
  u32 type = 1;
  u16 device_code = 0;
  u16 id_in_device = 0;
  u32 device_serial = 0;
  i32 raw_format = 4;

  Bytes record() const {
    Bytes out;
    put(&out, index, 2);
    put(&out, 0, 2);
    put(&out, device_code, 2);
    put(&out, id_in_device, 2);
    put(&out, device_serial, 4);
    put(&out, fid, 4);
    put(&out, type, 4);
    put(&out, static_cast<u32>(format), 4);
    put(&out, 0, 8);
    for (std::size_t i = 0; i < 32; ++i) out.push_back(i < name.size() ? static_cast<u8>(name[i]) : 0);
    put(&out, period_us, 4);
    put(&out, 0, 4);
    put(&out, size, 4);
    put(&out, 0, 4);
    put(&out, flags, 4);
    put(&out, static_cast<u32>(raw_format), 4);
    put(&out, 0, 24);
    return out;
  }
  Bytes chs() const { return tag("CHS", record()); }
};

inline Bytes cnf(const std::vector<Channel>& channels, const Bytes& more = {}) {
  Bytes inner;
  for (const Channel& channel : channels) inner = inner + channel.chs();
  return tag("CNF", inner + more);
}
inline Bytes u16_bytes(u16 value) {
  Bytes out;
  put(&out, value, 2);
  return out;
}
// How many there are, and they themselves.
inline Bytes counted(const std::vector<u16>& values) {
  Bytes out = u16_bytes(static_cast<u16>(values.size()));
  for (const u16 value : values) put(&out, value, 2);
  return out;
}
inline Bytes acd(u16 index, u16 time_base, const std::vector<u16>& channels) {
  return tag("ACD", u16_bytes(index) + u16_bytes(time_base) + counted(channels));
}
inline Bytes grp(u16 index, const std::vector<u16>& channels) {
  return tag("GRP", u16_bytes(index) + counted(channels));
}

inline Bytes frame_head(char letter, u32 time_ms, u16 index) {
  Bytes out{static_cast<u8>('('), static_cast<u8>(letter)};
  put(&out, time_ms, 4);
  put(&out, index, 2);
  return out;
}
inline Bytes frame(char letter, u32 time_ms, u16 index, const Bytes& data) {
  return frame_head(letter, time_ms, index) + data + bytes_of(")");
}
inline Bytes frame_s(u32 time_ms, u16 index, u16 value) {
  return frame('S', time_ms, index, u16_bytes(value));
}
inline Bytes frame_m(u32 time_ms, u16 index, const std::vector<u16>& values) {
  return frame('M', time_ms, index, counted(values));
}

inline Bytes chunk(u32 kind, u32 index, u32 number, bool last, const Bytes& data) {
  Bytes out = bytes_of("(c");
  put(&out, number | (last ? 1U << 10 : 0U) | index << 11 | kind << 20, 4);
  out.push_back(static_cast<u8>(data.size()));
  return out + data + bytes_of(")");
}

// Lap records of the three forms: version 1 (28 bytes), 2 (32) and 3 (20).
struct Lap {
  u8 session = 0;
  u8 split = 0;
  u16 lap = 1;
  i32 lap_time_ms = 0;
  u32 split_time_ms = 0;
  u32 time_ms = 0;
  u8 kind0 = 0;
  u8 kind1 = 0;

  Bytes record(int version) const {
    Bytes out{session, split};
    put(&out, lap, 2);
    put(&out, static_cast<u32>(lap_time_ms), 4);
    put(&out, split_time_ms, 4);
    if (version == 3) {
      out.push_back(kind0);
      out.push_back(kind1);
      put(&out, 0, 2);
      put(&out, time_ms, 4);
      return out;
    }
    put(&out, 0, 12);
    out.push_back(kind0);
    out.push_back(kind1);
    put(&out, 0, 2);
    if (version == 2) put(&out, time_ms, 4);
    return out;
  }
  Bytes tagged(int version = 2) const { return tag("LAP", record(version), static_cast<u8>(version)); }
};

// Bytes that keep what stands before them out of the stretch at the end of a file that no walk reaches.
inline Bytes tail() {
  return tag("EVT", Bytes(32));
}

}  // namespace traguardo::test
