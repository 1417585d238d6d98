// SPDX-License-Identifier: MIT
// The memory of an older logger, as files of version 500 keep it: a set-up area, and a stream of words in which the
// samples of all channels follow one another.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "wire/bytes.h"

namespace traguardo::wire {

using Words = std::vector<std::uint16_t>;

// A dump under construction. The stream keeps the logger's running sum.
class Dump {
 public:
  static constexpr std::size_t kScheduleAt = 200;
  static constexpr std::size_t kScheduleRoom = 5000;
  // The first format whose stream begins behind the whole set-up area.
  static constexpr std::uint32_t kNewerFormat = 0x10300;
  static constexpr std::uint32_t kOlderFormat = 0x10205;

  // schedule: the channels of a round; what it leaves of `room` is filled with bytes that name no channel.
  explicit Dump(const Bytes& schedule, std::size_t room = kScheduleRoom);

  Dump& set_format(std::uint32_t format);
  Dump& set_device(std::uint32_t code) { return set_dword(kIdentityAt + 4, code); }
  Dump& set_serial(std::uint32_t serial) { return set_dword(kIdentityAt + 16, serial); }
  Dump& set_byte(std::size_t at, std::uint32_t value);
  Dump& set_word(std::size_t at, std::uint32_t value);
  Dump& set_dword(std::size_t at, std::uint32_t value);

  Dump& word(std::uint32_t value);
  Dump& words(const Words& values);
  Dump& repeat(std::size_t count, std::uint16_t value);
  // How older loggers mark a block, and the end of a lap.
  Dump& mark() { return word(0x9000); }
  Dump& lap_end(std::uint8_t kind) { return word(0x9000u | kind); }
  // error: added to the right checksum.
  Dump& checksum(std::uint8_t error = 0);
  Dump& lap_record(std::uint8_t kind, std::uint32_t number, std::uint32_t time_ms, std::uint8_t error = 0);
  // Three words for others, which the logger sums up or doesn't.
  Dump& foreign(const Words& three, bool in_sum = true, std::uint8_t kind = 0);

  std::size_t set_up_size() const { return is_older_ ? kOlderSetUpSize : kSetUpSize; }
  Bytes bytes() const;

 private:
  static constexpr std::size_t kSetUpSize = 65536;
  static constexpr std::size_t kOlderSetUpSize = 24576;
  static constexpr std::size_t kIdentityAt = 32768;

  Bytes set_up_;
  Bytes stream_;
  std::uint8_t sum_ = 0;
  bool is_older_ = false;
};

}  // namespace traguardo::wire
