// SPDX-License-Identifier: MIT
#include "wire/samples.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace traguardo::wire {

namespace {

template <typename Integer>
Integer nearest(double value) {
  constexpr double low = static_cast<double>(std::numeric_limits<Integer>::min());
  constexpr double high = static_cast<double>(std::numeric_limits<Integer>::max());
  return static_cast<Integer>(std::clamp(std::floor(value + 0.5), low, high));
}

// Loggers say "no value" by these.
bool is_reserved(std::uint16_t bits) {
  return bits >= 0xCFFDu && bits <= 0xCFFFu;
}
bool is_reserved(std::uint32_t bits) {
  return bits >= 0xFFFFCFFDu && bits <= 0xFFFFCFFFu;
}

void put_word(Byte* at, std::uint16_t bits) {
  put_u16(at, is_reserved(bits) ? 0xCFFCu : std::uint32_t{bits});
}
void put_double_word(Byte* at, std::uint32_t bits) {
  put_u32(at, is_reserved(bits) ? 0xFFFFCFFCu : bits);
}

// Half precision, rounded to the nearest; beyond its range the largest finite value.
std::uint16_t half_bits(float value) {
  const std::uint32_t bits = std::bit_cast<std::uint32_t>(value);
  const std::uint32_t sign = (bits >> 16) & 0x8000u;
  const std::int32_t exponent = static_cast<std::int32_t>((bits >> 23) & 0xFFu) - 127 + 15;
  const std::uint32_t mantissa = bits & 0x7FFFFFu;
  std::uint32_t half = 0;
  if (exponent >= 31) {
    half = 0x7BFFu;
  } else if (exponent > 0) {
    // A carry out of the mantissa raises the exponent, as it should.
    half = std::min(0x7BFFu, (static_cast<std::uint32_t>(exponent) << 10) + ((mantissa + 0x1000u) >> 13));
  } else if (exponent >= -10) {
    const std::uint32_t shift = static_cast<std::uint32_t>(14 - exponent);
    half = ((mantissa | 0x800000u) + (1u << (shift - 1))) >> shift;
  }
  return static_cast<std::uint16_t>(sign | half);
}

// A code as a number and, behind it, as text in `width` characters.
void put_code(Byte* at, double value, std::size_t width) {
  const std::int16_t code = nearest<std::int16_t>(value);
  put_u16(at, static_cast<std::uint16_t>(code));
  std::memset(at + 2, 0, width);
  char text[8];
  const auto end = std::to_chars(text, text + sizeof text, static_cast<int>(code)).ptr;
  std::memcpy(at + 2, text, std::min(width, static_cast<std::size_t>(end - text)));
}

}  // namespace

std::size_t sample_size(Format format) {
  switch (format) {
    case Format::signed_8:
    case Format::unsigned_8:
    case Format::bits_8:
      return 1;
    case Format::signed_16:
    case Format::unsigned_16:
    case Format::gear:
    case Format::float_16:
      return 2;
    case Format::signed_32:
    case Format::unsigned_32:
    case Format::float_32:
    case Format::lap_time:
    case Format::time_difference:
      return 4;
    case Format::code_and_6_characters:
      return 8;
    case Format::total_odometer:
    case Format::rolling_time:
      return 12;
    case Format::code_and_30_characters:
      return 32;
  }
  return 0;
}

void encode_sample(Format format, double value, Byte* at) {
  switch (format) {
    case Format::signed_8:
      put_u8(at, static_cast<std::uint8_t>(nearest<std::int8_t>(value)));
      return;
    case Format::unsigned_8:
    case Format::bits_8:
      put_u8(at, nearest<std::uint8_t>(value));
      return;
    case Format::signed_16:
    case Format::gear:
      put_word(at, static_cast<std::uint16_t>(nearest<std::int16_t>(value)));
      return;
    case Format::unsigned_16:
      put_word(at, nearest<std::uint16_t>(value));
      return;
    case Format::signed_32:
    case Format::lap_time:
    case Format::time_difference:
      put_double_word(at, static_cast<std::uint32_t>(nearest<std::int32_t>(value)));
      return;
    case Format::unsigned_32:
      put_double_word(at, nearest<std::uint32_t>(value));
      return;
    case Format::float_32:
      put_f32(at, static_cast<float>(value));
      return;
    case Format::float_16:
      put_u16(at, half_bits(static_cast<float>(value)));
      return;
    case Format::code_and_6_characters:
      put_code(at, value, 6);
      return;
    case Format::code_and_30_characters:
      put_code(at, value, 30);
      return;
    case Format::total_odometer:
      put_double_word(at, nearest<std::uint32_t>(value));
      std::memset(at + 4, 0, 8);
      return;
    case Format::rolling_time:
      put_double_word(at, static_cast<std::uint32_t>(nearest<std::int32_t>(value)));
      std::memset(at + 4, 0, 8);
      return;
  }
}

}  // namespace traguardo::wire
