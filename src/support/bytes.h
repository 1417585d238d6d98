// SPDX-License-Identifier: MIT
// support/ holds what every room stands on: bytes, texts, the event log, folders, device names and the platform.
// It includes nothing of the other rooms; all of them include it.
//
// Bytes of files are read and written here and nowhere else: little-endian, unaligned, never through a cast to a
// struct.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace traguardo {

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;
using i8 = std::int8_t;
using i16 = std::int16_t;
using i32 = std::int32_t;
using i64 = std::int64_t;

namespace detail {
template <typename T>
T load_little_endian(const u8* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof value);
  if constexpr (std::endian::native == std::endian::big && sizeof(T) > 1) {
    u8 turned[sizeof(T)];
    for (std::size_t i = 0; i < sizeof(T); ++i) turned[i] = bytes[sizeof(T) - 1 - i];
    std::memcpy(&value, turned, sizeof value);
  }
  return value;
}

template <typename T>
void store_little_endian(u8* bytes, T value) {
  std::memcpy(bytes, &value, sizeof value);
  if constexpr (std::endian::native == std::endian::big && sizeof(T) > 1) {
    for (std::size_t i = 0; i < sizeof(T) / 2; ++i) std::swap(bytes[i], bytes[sizeof(T) - 1 - i]);
  }
}
}  // namespace detail

// REQUIRES: as many readable (writable) bytes as the value is wide. Callers check the span first.
inline u16 load_u16(const u8* p) {
  return detail::load_little_endian<u16>(p);
}
inline u32 load_u32(const u8* p) {
  return detail::load_little_endian<u32>(p);
}
inline u64 load_u64(const u8* p) {
  return detail::load_little_endian<u64>(p);
}
inline i16 load_i16(const u8* p) {
  return detail::load_little_endian<i16>(p);
}
inline i32 load_i32(const u8* p) {
  return detail::load_little_endian<i32>(p);
}
inline float load_f32(const u8* p) {
  return detail::load_little_endian<float>(p);
}
inline double load_f64(const u8* p) {
  return detail::load_little_endian<double>(p);
}
inline void store_u16(u8* p, u16 v) {
  detail::store_little_endian(p, v);
}
inline void store_u32(u8* p, u32 v) {
  detail::store_little_endian(p, v);
}
inline void store_u64(u8* p, u64 v) {
  detail::store_little_endian(p, v);
}
inline void store_i16(u8* p, i16 v) {
  detail::store_little_endian(p, v);
}
inline void store_i32(u8* p, i32 v) {
  detail::store_little_endian(p, v);
}
inline void store_f32(u8* p, float v) {
  detail::store_little_endian(p, v);
}
inline void store_f64(u8* p, double v) {
  detail::store_little_endian(p, v);
}

// Text in a field of `width` bytes: up to its first NUL, or the whole field.
inline std::string text_field(const u8* bytes, std::size_t width) {
  const void* end = width == 0 ? nullptr : std::memchr(bytes, 0, width);
  const std::size_t length = end == nullptr ? width : static_cast<std::size_t>(static_cast<const u8*>(end) - bytes);
  return {reinterpret_cast<const char*>(bytes), length};
}

// Float to integer as the home platform's instruction does it: cut toward zero, and the minimum integer for a
// not-a-number and for everything out of range. Every conversion that can leave the range goes through here.
template <typename Integer, typename Float>
Integer truncate_to(Float value) {
  static_assert(std::is_signed_v<Integer>);
  constexpr Float lowest = static_cast<Float>(std::numeric_limits<Integer>::min());
  if (value >= lowest && value < -lowest) return static_cast<Integer>(value);
  return std::numeric_limits<Integer>::min();
}

// To an unsigned 32-bit integer by way of the signed 64-bit one, as the home platform's compilers do it.
template <typename Float>
u32 truncate_to_u32(Float value) {
  return static_cast<u32>(truncate_to<i64>(value));
}

// One wide character per byte, and back by the low byte of each; no code page takes part.
inline std::wstring widen_bytes(std::string_view text) {
  std::wstring wide;
  wide.reserve(text.size());
  for (const char c : text) wide.push_back(static_cast<wchar_t>(static_cast<unsigned char>(c)));
  return wide;
}
inline std::string narrow_low_bytes(std::wstring_view wide) {
  std::string text;
  text.reserve(wide.size());
  for (const wchar_t c : wide) text.push_back(static_cast<char>(static_cast<unsigned char>(c & 0xFF)));
  return text;
}

}  // namespace traguardo
