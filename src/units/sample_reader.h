// SPDX-License-Identifier: MIT
// What a reader of a sample is: a plain function over bytes, chosen once per channel.
#pragma once

#include <type_traits>

#include "support/bytes.h"

namespace traguardo {

// What a sample says besides its value. Bit 2 wins over bit 1, bit 1 over bit 3.
enum SampleStatus : u32 {
  kStatusGood = 0,
  kStatusNoText = 1,
  kStatusBlank = 2,
  kStatusNoValue = 4,
  kStatusBad = 8,
};

// Reads the value at `sample` and applies gain and offset where the format has them.
using ValueFunction = float (*)(const u8* sample, float gain, float offset);
// The same, with the status of the sample.
using StatusFunction = float (*)(const u8* sample, float gain, float offset, u32* status);

// The status that a stored 16-bit or 32-bit word gives a value: its sentinels are the logger's ways to say that there
// is none.
constexpr u32 sentinel_status(u32 word) {
  if (word - 0xFFFFCFFD > 2) return kStatusGood;  // The one test that an ordinary sample costs.
  if (word == 0xFFFFCFFF) return kStatusNoValue;
  return word == 0xFFFFCFFE ? kStatusBlank : kStatusBad;
}
constexpr u32 sentinel_status(u16 word) {
  return sentinel_status(0xFFFF0000U | word);
}

namespace detail {

// A plain value is v * gain + offset in single precision; a sentinel is 0.0, whatever gain and offset are.
template <typename T>
float plain_value(const u8* sample, float gain, float offset, u32* status) {
  const T value = load_little_endian<T>(sample);
  *status = kStatusGood;
  if constexpr (sizeof(T) == 4) {
    *status = sentinel_status(static_cast<u32>(value));
  } else if constexpr (sizeof(T) == 2) {
    *status = sentinel_status(static_cast<u16>(value));
  }
  if (*status != kStatusGood) return 0.0F;
  return static_cast<float>(value) * gain + offset;
}

}  // namespace detail

// The formats that nearly all samples have: loops read them without a call through a pointer.
enum class CommonFormat : u8 { none, u16_value, s16_value };

// Both forms of one reader; null where a format has none. `width` bytes are read, from `sample` on.
struct ReaderPair {
  ValueFunction value = nullptr;
  StatusFunction with_status = nullptr;
  u32 width = 0;
  CommonFormat common = CommonFormat::none;
};

// The form without a status of a function that gives one.
template <StatusFunction function>
float value_only(const u8* sample, float gain, float offset) {
  u32 status;
  return function(sample, gain, offset, &status);
}
template <StatusFunction function>
constexpr ReaderPair reader_pair(u32 width) {
  return {value_only<function>, function, width, CommonFormat::none};
}
template <typename T>
constexpr ReaderPair plain_pair() {
  constexpr CommonFormat kCommon = std::is_same_v<T, u16>   ? CommonFormat::u16_value
                                   : std::is_same_v<T, i16> ? CommonFormat::s16_value
                                                            : CommonFormat::none;
  return {value_only<detail::plain_value<T>>, detail::plain_value<T>, sizeof(T), kCommon};
}

// A converter's reader in the open, for loops that want no virtual call per sample.
struct SampleReader {
  ValueFunction read = nullptr;
  float gain = 1.0F;
  float offset = 0.0F;
  u32 byte_offset = 0;
  // Bytes that must be readable from the start of the sample. Where a file's samples are shorter, CConverter::Converti
  // reads zeros behind their end; this bare form doesn't.
  u32 bytes_needed = 0;
  CommonFormat common = CommonFormat::none;

  explicit operator bool() const { return read != nullptr; }
  float operator()(const u8* sample) const {
    u32 status;
    switch (common) {
      case CommonFormat::u16_value:
        return detail::plain_value<u16>(sample + byte_offset, gain, offset, &status);
      case CommonFormat::s16_value:
        return detail::plain_value<i16>(sample + byte_offset, gain, offset, &status);
      case CommonFormat::none:
        break;
    }
    return read(sample + byte_offset, gain, offset);
  }
};

}  // namespace traguardo
