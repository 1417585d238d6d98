// SPDX-License-Identifier: MIT
// One channel record of a logger file's channel table: 112 bytes that say what a channel measures and how its samples
// are stored. A value: copied, compared byte for byte.
#pragma once

#include <array>
#include <span>
#include <string>

#include "support/bytes.h"

namespace traguardo {

class ChannelRecord {
 public:
  static constexpr std::size_t kSize = 112;
  static constexpr std::size_t kNameWidth = 32;

  ChannelRecord() : bytes_{} {}
  // REQUIRES: at least kSize bytes; what is missing reads as zero.
  explicit ChannelRecord(std::span<const u8> bytes) : bytes_{} {
    const std::size_t count = bytes.size() < kSize ? bytes.size() : kSize;
    if (count > 0) std::memcpy(bytes_.data(), bytes.data(), count);
  }

  // Key of the channel in frames and descriptors.
  u16 id() const { return load_u16(at(0)); }
  u16 device_code() const { return load_u16(at(4)); }
  u16 id_in_device() const { return load_u16(at(6)); }
  u32 device_serial() const { return load_u32(at(8)); }
  // The function word of the channel, see fid.h.
  u32 fp_code() const { return load_u32(at(12)); }
  u32 channel_type() const { return load_u32(at(16)); }
  i32 format() const { return load_i32(at(20)); }
  // 8-bit text up to its NUL, or the whole field.
  std::string name() const { return text_field(at(32), kNameWidth); }
  // Microseconds between two samples; 0 without a fixed rate.
  u32 period_us() const { return load_u32(at(64)); }
  // Where the value stands in a sample, for a field that is read out of a wider packet.
  u32 offset_in_packet() const { return load_u32(at(68)); }
  // Bytes of one sample in the data stream: a claim of the file, not checked against the format.
  u32 sample_size() const { return load_u32(at(72)); }
  u32 flags() const { return load_u32(at(80)); }
  // Format of the raw value at its source; for reports only.
  i32 raw_format() const { return load_i32(at(84)); }

  u32 quantity() const { return fp_code() & 0x7F; }
  u32 object() const { return fp_code() >> 7 & 0xFF; }
  u32 variant() const { return fp_code() >> 15 & 0x1F; }

  std::span<const u8, kSize> bytes() const { return bytes_; }
  friend bool operator==(const ChannelRecord&, const ChannelRecord&) = default;

 private:
  const u8* at(std::size_t offset) const { return bytes_.data() + offset; }

  std::array<u8, kSize> bytes_;
};

static_assert(sizeof(ChannelRecord) == ChannelRecord::kSize);

}  // namespace traguardo
