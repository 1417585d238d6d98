// SPDX-License-Identifier: MIT
// A lap record as the logger writes it, in one of three forms that share their first 12 bytes.
#pragma once

#include "support/bytes.h"

namespace traguardo {

class LapRecord {
 public:
  static constexpr u32 kSizeV1 = 28;
  static constexpr u32 kSizeV2 = 32;
  static constexpr u32 kSizeV3 = 20;

  // `size` is one of the three above; as many bytes are readable.
  LapRecord(const u8* bytes, u32 size) : bytes_(bytes), size_(size) {}

  u8 session() const { return bytes_[0]; }
  u8 split() const { return bytes_[1]; }  // 0: the mark that closes a lap
  u16 lap() const { return load_u16(bytes_ + 2); }
  i32 lap_time_ms() const { return load_i32(bytes_ + 4); }
  u32 split_time_ms() const { return load_u32(bytes_ + 8); }
  // Logger time of the mark, 0 in the form that has none.
  u32 time_ms() const {
    if (size_ == kSizeV2) return load_u32(bytes_ + 28);
    return size_ == kSizeV3 ? load_u32(bytes_ + 16) : 0;
  }
  u8 kind(int which) const { return bytes_[(size_ == kSizeV3 ? 12 : 24) + which]; }
  u32 size() const { return size_; }
  const u8* bytes() const { return bytes_; }

 private:
  const u8* bytes_;
  u32 size_;
};

}  // namespace traguardo
