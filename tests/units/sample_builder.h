// SPDX-License-Identifier: MIT
// Channel records and sample bytes for the tests of this room.
#pragma once

#include <initializer_list>
#include <vector>

#include "units/channel_record.h"

namespace traguardo {

inline ChannelRecord make_record(u32 fp_code, i32 format, u32 sample_size) {
  std::vector<u8> bytes(ChannelRecord::kSize);
  store_u32(&bytes[12], fp_code);
  store_i32(&bytes[20], format);
  store_u32(&bytes[72], sample_size);
  return ChannelRecord(bytes);
}

// A sample of stated bytes with 32-bit words put into it.
inline std::vector<u8> make_sample(std::size_t size, std::initializer_list<std::pair<std::size_t, u32>> words) {
  std::vector<u8> bytes(size);
  for (const auto& [offset, word] : words) store_u32(&bytes[offset], word);
  return bytes;
}

}  // namespace traguardo
