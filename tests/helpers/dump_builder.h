// SPDX-License-Identifier: MIT
// Builds memory dumps of a logger, as files of version 500 hold them. Written from the format, offset by offset, with
// nothing of the reader in it.
#pragma once

#include <algorithm>
#include <vector>

#include "support/bytes.h"

namespace traguardo::test::dump {

using Bytes = std::vector<u8>;
using Words = std::vector<u16>;

inline constexpr std::size_t kScheduleAt = 200;
inline constexpr std::size_t kScheduleRoom = 5000;

// A dump under construction: the set-up area, and a stream that keeps the logger's running sum.
class Dump {
 public:
  // schedule: what doesn't fill its room is followed by bytes that name no channel.
  explicit Dump(const Bytes& schedule) : set_up_(65536) {
    set_up_[0] = 1;
    set_format(0x10300);
    std::fill_n(set_up_.begin() + kScheduleAt, kScheduleRoom, u8{0xFF});
    std::copy(schedule.begin(), schedule.end(), set_up_.begin() + kScheduleAt);
  }

  Dump& set_byte(std::size_t at, u8 value) {
    set_up_[at] = value;
    return *this;
  }
  // 0x10300 is the first format whose stream begins behind the whole set-up area.
  Dump& set_format(u32 format) {
    set_up_[193] = static_cast<u8>(format >> 16);
    set_up_[194] = static_cast<u8>(format >> 8);
    set_up_[195] = static_cast<u8>(format);
    is_old_ = format < 0x10300;
    return *this;
  }
  Dump& set_device(u32 code) { return set_dword(32768 + 4, code); }
  Dump& set_dword(std::size_t at, u32 value) {
    store_u32(&set_up_[at], value);
    return *this;
  }

  Dump& word(u16 value) {
    stream_.push_back(static_cast<u8>(value));
    stream_.push_back(static_cast<u8>(value >> 8));
    sum_ = static_cast<u8>(sum_ + (value & 0xFF) + (value >> 8));
    return *this;
  }
  Dump& words(const Words& values) {
    for (const u16 value : values) word(value);
    return *this;
  }
  Dump& repeat(std::size_t count, u16 value) {
    for (std::size_t i = 0; i < count; ++i) word(value);
    return *this;
  }
  Dump& mark() { return word(0x9000); }
  Dump& lap_end(u8 kind) { return word(static_cast<u16>(0x9000 | kind)); }
  // error: added to the right checksum.
  Dump& checksum(u8 error = 0) {
    word(static_cast<u16>(0xD000 | static_cast<u8>(sum_ + error)));
    sum_ = 0;
    return *this;
  }
  Dump& lap_record(u8 kind, u16 number, u32 time_ms, u8 error = 0) {
    word(static_cast<u16>(0xD200 | kind)).word(static_cast<u16>(0x1000 | number));
    word(static_cast<u16>(time_ms)).word(static_cast<u16>(time_ms >> 16)).word(0);
    return checksum(error);
  }
  // Words for others, which the logger sums up or doesn't.
  Dump& foreign(const Words& three, bool in_sum) {
    word(0xD1AA);
    const u8 sum = sum_;
    words(three);
    if (!in_sum) sum_ = sum;
    return *this;
  }

  Bytes bytes() const {
    Bytes all(set_up_.begin(), set_up_.begin() + (is_old_ ? 24576 : 65536));
    all.insert(all.end(), stream_.begin(), stream_.end());
    return all;
  }

 private:
  Bytes set_up_;
  Bytes stream_;
  u8 sum_ = 0;
  bool is_old_ = false;
};

}  // namespace traguardo::test::dump
