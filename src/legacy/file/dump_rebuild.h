// SPDX-License-Identifier: MIT
// The raw samples of a version 500 session, rebuilt from the logger's memory dump that stands in their place.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "support/bytes.h"

namespace traguardo {

// Code of wmp_dump_messages().
inline constexpr u32 kMsgDumpNoChannels = 1001;

// A lap as the logger noted it. A session file has a lap table of its own, which is the one that counts.
struct DumpLap {
  u16 number = 0;
  u8 kind = 0;
  u32 time_ms = 0;
};

class CWMPvers500 {
 public:
  // Reads `count` bytes from an offset in the dump; gives how many there were.
  using Reader = std::function<std::size_t(u64 offset, u8* out, std::size_t count)>;

  // length: of the dump. most_words: what more samples there are is dropped. The dump is read twice, in pieces, and
  // never stands in memory; the samples do.
  CWMPvers500(Reader reader, u64 length, u64 most_words);
  virtual ~CWMPvers500();
  CWMPvers500(const CWMPvers500&) = delete;
  CWMPvers500& operator=(const CWMPvers500&) = delete;

  // family_code: of the session's header. False with a code in `error`.
  bool Rebuild(i32 family_code, u32* error);

  // The raw words of all channels that have samples, one channel behind the other: primary channels in the order of
  // their numbers, then extended ones.
  std::vector<u16> take_words();
  std::span<const DumpLap> laps() const { return laps_; }

 private:
  Reader reader_;
  u64 length_;
  u64 most_words_;
  std::vector<u16> words_;
  std::vector<DumpLap> laps_;
};

}  // namespace traguardo
