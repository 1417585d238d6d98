// SPDX-License-Identifier: MIT
// The data of a session page: rows of integers, as differences in seven bits a byte, deflated. docs/page.md describes
// the form. Nothing here knows of sessions.
#pragma once

#include <zlib.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace traguardo::tool {

// What stands in a row where a value is no number; numbers are above.
inline constexpr std::int32_t kNotANumber = INT32_MIN;
inline constexpr std::int32_t kMinusInfinity = INT32_MIN + 1;
inline constexpr std::int32_t kInfinity = INT32_MIN + 2;
inline constexpr std::int32_t kFirstNumber = INT32_MIN + 3;

// One block of the page while it is made.
class Block {
 public:
  Block();
  ~Block();
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;

  void put(std::uint64_t word) {
    if (used_ + kLongestWord > buffer_.size()) deflate_buffer(false);
    for (; word >= 0x80; word >>= 7) buffer_[used_++] = static_cast<unsigned char>(word | 0x80);
    buffer_[used_++] = static_cast<unsigned char>(word);
  }
  // Its bytes. Call it once.
  std::string finish();

 private:
  static constexpr std::size_t kLongestWord = 10;

  void deflate_buffer(bool is_last);

  z_stream stream_{};
  std::array<unsigned char, std::size_t{1} << 15> buffer_;
  std::size_t used_ = 0;
  std::string bytes_;
};

// What each step differs from the step before.
std::string block_of_times(const std::vector<std::int64_t>& times_us);
// Differences from number to number.
std::string block_of_values(const std::vector<std::int32_t>& values);
// The minima as values are, then for each how far its maximum is above it. What is no number stands in both places.
std::string block_of_extremes(const std::vector<std::int32_t>& minima, const std::vector<std::int32_t>& maxima);

// In the alphabet of RFC 4648, padded.
std::string to_base64(std::string_view bytes);

}  // namespace traguardo::tool
