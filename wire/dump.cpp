// SPDX-License-Identifier: MIT
#include "wire/dump.h"

#include <algorithm>

namespace traguardo::wire {

Dump::Dump(const Bytes& schedule, std::size_t room) : set_up_(kSetUpSize) {
  set_format(kNewerFormat);
  const auto begin = set_up_.begin() + std::ptrdiff_t{kScheduleAt};
  std::fill_n(begin, room, Byte{0xFF});
  std::copy(schedule.begin(), schedule.end(), begin);
}

Dump& Dump::set_format(std::uint32_t format) {
  constexpr std::size_t kFormatAt = 193;
  is_older_ = format < kNewerFormat;
  return set_byte(kFormatAt, format >> 16).set_byte(kFormatAt + 1, format >> 8).set_byte(kFormatAt + 2, format);
}

Dump& Dump::set_byte(std::size_t at, std::uint32_t value) {
  put_u8(&set_up_.at(at), value);
  return *this;
}

Dump& Dump::set_word(std::size_t at, std::uint32_t value) {
  put_u16(&set_up_.at(at), value);
  return *this;
}

Dump& Dump::set_dword(std::size_t at, std::uint32_t value) {
  put_u32(&set_up_.at(at), value);
  return *this;
}

Dump& Dump::word(std::uint32_t value) {
  const Byte low = static_cast<Byte>(value & 0xFFu);
  const Byte high = static_cast<Byte>(value >> 8 & 0xFFu);
  stream_.push_back(low);
  stream_.push_back(high);
  sum_ = static_cast<std::uint8_t>(sum_ + low + high);
  return *this;
}

Dump& Dump::words(const Words& values) {
  for (const std::uint16_t value : values) word(value);
  return *this;
}

Dump& Dump::repeat(std::size_t count, std::uint16_t value) {
  for (std::size_t i = 0; i < count; ++i) word(value);
  return *this;
}

Dump& Dump::checksum(std::uint8_t error) {
  word(0xD000u | static_cast<std::uint8_t>(sum_ + error));
  sum_ = 0;
  return *this;
}

Dump& Dump::lap_record(std::uint8_t kind, std::uint32_t number, std::uint32_t time_ms, std::uint8_t error) {
  constexpr std::uint32_t kWholeLap = 0x1000;  // more for a split
  word(0xD200u | kind).word(kWholeLap | (number & 0xFFFu));
  return word(time_ms & 0xFFFFu).word(time_ms >> 16).word(0).checksum(error);
}

Dump& Dump::foreign(const Words& three, bool in_sum, std::uint8_t kind) {
  word(0xD100u | kind);
  const std::uint8_t sum = sum_;
  words(three);
  if (!in_sum) sum_ = sum;
  return *this;
}

Bytes Dump::bytes() const {
  Bytes all(set_up_.begin(), set_up_.begin() + static_cast<std::ptrdiff_t>(set_up_size()));
  all.insert(all.end(), stream_.begin(), stream_.end());
  return all;
}

}  // namespace traguardo::wire
