// SPDX-License-Identifier: MIT
#include "rows.h"

#include <algorithm>
#include <new>
#include <string_view>

namespace traguardo::tool {

namespace {

// Small numbers of either sign become small words.
std::uint64_t zigzag(std::int64_t number) {
  return (static_cast<std::uint64_t>(number) << 1) ^ static_cast<std::uint64_t>(number >> 63);
}

// 0 announces what is no number; the words of numbers begin at 1.
class ValueRow {
 public:
  explicit ValueRow(Block* block) : block_(*block) {}

  void put(std::int32_t value) {
    if (value < kFirstNumber) {
      put_no_number(value);
      return;
    }
    block_.put(zigzag(std::int64_t{value} - last_) + 1);
    last_ = value;
  }
  void put_no_number(std::int32_t value) {
    block_.put(0);
    block_.put(static_cast<std::uint64_t>(std::int64_t{value} - kNotANumber));
  }

 private:
  Block& block_;
  std::int64_t last_ = 0;
};

}  // namespace

// Differences have few long repetitions: runs and short codes give all of what a search gives, in a third of its time.
Block::Block() {
  constexpr int kNoHeader = -15;
  constexpr int kMostMemory = 9;
  if (deflateInit2(&stream_, 1, Z_DEFLATED, kNoHeader, kMostMemory, Z_RLE) != Z_OK) throw std::bad_alloc();
}

Block::~Block() {
  deflateEnd(&stream_);
}

void Block::deflate_buffer(bool is_last) {
  std::array<unsigned char, std::size_t{1} << 15> out;
  stream_.next_in = buffer_.data();
  stream_.avail_in = static_cast<uInt>(used_);
  do {
    stream_.next_out = out.data();
    stream_.avail_out = static_cast<uInt>(out.size());
    deflate(&stream_, is_last ? Z_FINISH : Z_NO_FLUSH);
    bytes_.append(reinterpret_cast<const char*>(out.data()), out.size() - stream_.avail_out);
  } while (stream_.avail_out == 0);
  used_ = 0;
}

std::string Block::finish() {
  deflate_buffer(true);
  return std::move(bytes_);
}

std::string block_of_times(const std::vector<std::int64_t>& times_us) {
  Block block;
  std::int64_t last = 0;
  std::int64_t last_step = 0;
  for (const std::int64_t time : times_us) {
    const std::int64_t step = time - last;
    block.put(zigzag(step - last_step));
    last_step = step;
    last = time;
  }
  return block.finish();
}

std::string block_of_values(const std::vector<std::int32_t>& values) {
  Block block;
  ValueRow row(&block);
  for (const std::int32_t value : values) row.put(value);
  return block.finish();
}

std::string block_of_extremes(const std::vector<std::int32_t>& minima, const std::vector<std::int32_t>& maxima) {
  Block block;
  ValueRow row(&block);
  for (const std::int32_t minimum : minima) row.put(minimum);
  for (std::size_t i = 0; i < minima.size(); ++i) {
    if (minima[i] < kFirstNumber) {
      row.put_no_number(minima[i]);
    } else {
      block.put(zigzag(std::int64_t{maxima[i]} - minima[i]) + 1);
    }
  }
  return block.finish();
}

std::string to_base64(std::string_view bytes) {
  constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text((bytes.size() + 2) / 3 * 4, '=');
  const auto byte = [bytes](std::size_t i) {
    return i < bytes.size() ? static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) : 0U;
  };
  char* out = text.data();
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::uint32_t three = byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2);
    for (const int shift : {18, 12, 6, 0}) *out++ = kAlphabet[three >> shift & 0x3F];
  }
  std::fill_n(text.rbegin(), (3 - bytes.size() % 3) % 3, '=');
  return text;
}

}  // namespace traguardo::tool
