// SPDX-License-Identifier: MIT
// How a tag is told from sample data, over bytes that lie in a buffer or are read from a file on demand: a source gives
// `At`, bytes in one piece that are good until the next call, and `far`, a look at bytes elsewhere.
#pragma once

#include <algorithm>
#include <cstring>
#include <vector>

#include "logger/tag_decoder.h"

namespace traguardo::tags {

inline constexpr u32 kNameOffset = 2;
inline constexpr u32 kNameWidth = 4;
inline constexpr u32 kSizeOffset = 6;
inline constexpr u32 kVersionOffset = 10;
inline constexpr u32 kOpeningEnd = 11;
inline constexpr u32 kClosingNameOffset = 1;
inline constexpr u32 kChecksumOffset = 5;
inline constexpr u32 kClosingEnd = 7;

class BufferSource {
 public:
  explicit BufferSource(const u8* buffer) : buffer_(buffer) {}
  const u8* At(u64 offset, u64) const { return buffer_ + offset; }
  const u8* far(u64 offset, u64) const { return buffer_ + offset; }

 private:
  const u8* buffer_;
};

// A stretch of another source as one of its own.
template <typename Source>
class PartSource {
 public:
  PartSource(Source* whole, u64 begin) : whole_(whole), begin_(begin) {}
  const u8* At(u64 offset, u64 length) { return whole_->At(begin_ + offset, length); }
  const u8* far(u64 offset, u64 length) { return whole_->far(begin_ + offset, length); }

 private:
  Source* whole_;
  u64 begin_;
};

// Checksums of payloads of one source. Large payloads are summed by way of sums of whole blocks, so that a file full of
// opening marks which all lead to one closing mark costs no more than its size.
template <typename Source>
class PayloadSums {
 public:
  // Payloads begin at `from` or behind.
  PayloadSums(Source* source, u64 size, u64 from = 0) : source_(source), size_(size), first_(from / kBlock) {}

  u16 operator()(u64 from, u64 to) {
    if (to - from <= kDirect) return static_cast<u16>(sum_of(from, to));
    const u64 first_block = from / kBlock + 1;
    const u64 last_block = to / kBlock;
    reach(last_block);
    const u32 whole = static_cast<u32>(before_[last_block - first_]) - before_[first_block - first_];
    return static_cast<u16>(whole + sum_of(from, first_block * kBlock) + sum_of(last_block * kBlock, to));
  }

 private:
  static constexpr u64 kBlock = 2048;
  static constexpr u64 kDirect = 4 * kBlock;

  u32 sum_of(u64 from, u64 to) {
    u32 sum = 0;
    while (from < to) {
      const u64 count = std::min(kBlock, to - from);
      const u8* bytes = source_->far(from, count);
      for (u64 i = 0; i < count; ++i) sum += bytes[i];
      from += count;
    }
    return sum;
  }

  void reach(u64 block) {
    if (before_.empty()) before_.push_back(0);
    while (first_ + before_.size() <= block) {
      const u64 at = (first_ + before_.size() - 1) * kBlock;
      before_.push_back(static_cast<u16>(before_.back() + sum_of(at, std::min(at + kBlock, size_))));
    }
  }

  Source* source_;
  u64 size_;
  u64 first_;                // block that the sums begin with
  std::vector<u16> before_;  // sum of all bytes before each block
};

inline bool names_equal(const u8* a, const u8* b) {
  return std::strncmp(reinterpret_cast<const char*>(a), reinterpret_cast<const char*>(b), kNameWidth) == 0;
}

// REQUIRES: at least kTagFrameSize bytes from `offset` on.
template <typename Source>
bool is_valid_tag(Source* source, u64 size, u64 offset, PayloadSums<Source>* sums) {
  const u8* opening = source->At(offset, kTagOpeningSize);
  if (opening[0] != '<' || opening[1] != 'h' || opening[kOpeningEnd] != '>') return false;
  const u64 payload_size = load_u32(opening + kSizeOffset);
  const u64 closing_at = offset + kTagOpeningSize + payload_size;
  if (closing_at + kTagClosingSize > size) return false;
  const u8* closing = source->far(closing_at, kTagClosingSize);
  if (closing[0] != '<' || closing[kClosingEnd] != '>') return false;
  if (!names_equal(opening + kNameOffset, closing + kClosingNameOffset)) return false;
  const u16 stated = load_u16(closing + kChecksumOffset);
  return stated == (*sums)(offset + kTagOpeningSize, closing_at);
}

// REQUIRES: a valid tag at `offset`. Its bytes are not looked up: `start` and `payload` stay null.
template <typename Source>
SAtomTag tag_without_bytes(Source* source, u64 offset) {
  const u8* opening = source->At(offset, kTagOpeningSize);
  SAtomTag tag;
  tag.name = text_field(opening + kNameOffset, kNameWidth);
  tag.offset = static_cast<u32>(offset);
  tag.payloadSize = load_u32(opening + kSizeOffset);
  tag.totalSize = tag.payloadSize + kTagFrameSize;
  tag.version = opening[kVersionOffset];
  return tag;
}

template <typename Source>
SAtomTag tag_at(Source* source, u64 offset) {
  SAtomTag tag = tag_without_bytes(source, offset);
  tag.start = source->At(offset, tag.totalSize);
  tag.payload = tag.start + kTagOpeningSize;
  return tag;
}

// Calls take(tag without bytes) for each tag of a stretch of `size` bytes, in their order.
template <typename Source, typename Take>
void for_each(Source* source, u32 size, Take&& take) {
  if (size <= kUnscannedTail) return;
  PayloadSums<Source> sums(source, size);
  for (u64 at = 0; at < size - kUnscannedTail;) {
    if (*source->At(at, 1) != '<' || !is_valid_tag(source, size, at, &sums)) {
      ++at;
      continue;
    }
    const SAtomTag tag = tag_without_bytes(source, at);
    take(tag);
    at += tag.totalSize;
  }
}

// One step of a walk from `offset` on: the offset behind it, 0 at the end, kStopWalk when the helper ended it.
template <typename Source>
u32 step(Source* source, u32 size, u32 offset, IExternalHelper& helper, PayloadSums<Source>* sums) {
  if (size <= kUnscannedTail) return 0;
  const u32 end = size - kUnscannedTail;
  while (offset < end) {
    if (is_valid_tag(source, size, offset, sums)) {
      SAtomTag tag = tag_without_bytes(source, offset);
      if (helper.wants_bytes_of(tag)) tag = tag_at(source, offset);
      return helper.OnTag(tag) ? offset + tag.totalSize : kStopWalk;
    }
    const u32 advance = helper.OnUntaggedBytes(offset);
    if (advance == kStopWalk) return kStopWalk;
    if (advance >= end - offset) return 0;
    offset += advance;
  }
  return 0;
}

// Every tag and everything between them goes to the helper. False when the helper ended it.
template <typename Source>
bool walk(Source* source, u32 size, IExternalHelper& helper) {
  PayloadSums<Source> sums(source, size);
  u32 offset = 0;
  do {
    offset = step(source, size, offset, helper, &sums);
  } while (offset != 0 && offset != kStopWalk);
  return offset == 0;
}

}  // namespace traguardo::tags
