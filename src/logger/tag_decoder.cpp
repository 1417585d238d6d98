#include "logger/tag_decoder.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace traguardo {

namespace {

constexpr u32 kNameOffset = 2;
constexpr u32 kNameWidth = 4;
constexpr u32 kSizeOffset = 6;
constexpr u32 kVersionOffset = 10;
constexpr u32 kOpeningEnd = 11;
constexpr u32 kClosingNameOffset = 1;
constexpr u32 kChecksumOffset = 5;
constexpr u32 kClosingEnd = 7;

u16 sum_of(const u8* bytes, u64 count) {
  u32 sum = 0;
  for (u64 i = 0; i < count; ++i) sum += bytes[i];
  return static_cast<u16>(sum);
}

// Checksums of payloads of one buffer. Large payloads are summed by way of sums of whole blocks, so that a file full of
// opening marks which all lead to one closing mark costs no more than its size.
class PayloadSums {
 public:
  // Payloads begin at `from` or behind.
  PayloadSums(const u8* buffer, u64 size, u64 from = 0) : buffer_(buffer), size_(size), first_(from / kBlock) {}

  u16 operator()(u64 from, u64 to) {
    if (to - from <= kDirect) return sum_of(buffer_ + from, to - from);
    const u64 first_block = from / kBlock + 1;
    const u64 last_block = to / kBlock;
    Reach(last_block);
    const u32 whole = static_cast<u32>(before_[last_block - first_]) - before_[first_block - first_];
    return static_cast<u16>(whole + sum_of(buffer_ + from, first_block * kBlock - from) +
                            sum_of(buffer_ + last_block * kBlock, to - last_block * kBlock));
  }

 private:
  static constexpr u64 kBlock = 2048;
  static constexpr u64 kDirect = 4 * kBlock;

  void Reach(u64 block) {
    if (before_.empty()) before_.push_back(0);
    while (first_ + before_.size() <= block) {
      const u64 at = (first_ + before_.size() - 1) * kBlock;
      before_.push_back(static_cast<u16>(before_.back() + sum_of(buffer_ + at, std::min(kBlock, size_ - at))));
    }
  }

  const u8* buffer_;
  u64 size_;
  u64 first_;                // block that the sums begin with
  std::vector<u16> before_;  // sum of all bytes before each block
};

bool names_equal(const u8* a, const u8* b) {
  return std::strncmp(reinterpret_cast<const char*>(a), reinterpret_cast<const char*>(b), kNameWidth) == 0;
}

// REQUIRES: at least kTagFrameSize bytes from `offset` on.
bool is_valid_tag(const u8* buffer, u64 size, u64 offset, PayloadSums* sums) {
  const u8* opening = buffer + offset;
  if (opening[0] != '<' || opening[1] != 'h' || opening[kOpeningEnd] != '>') return false;
  const u64 payload_size = load_u32(opening + kSizeOffset);
  const u64 closing_at = offset + kTagOpeningSize + payload_size;
  if (closing_at + kTagClosingSize > size) return false;
  const u8* closing = buffer + closing_at;
  if (closing[0] != '<' || closing[kClosingEnd] != '>') return false;
  if (!names_equal(opening + kNameOffset, closing + kClosingNameOffset)) return false;
  return load_u16(closing + kChecksumOffset) == (*sums)(offset + kTagOpeningSize, closing_at);
}

void describe(const u8* opening, SAtomTag* tag) {
  tag->name = text_field(opening + kNameOffset, kNameWidth);
  tag->start = opening;
  tag->payload = opening + kTagOpeningSize;
  tag->payloadSize = load_u32(opening + kSizeOffset);
  tag->totalSize = tag->payloadSize + kTagFrameSize;
  tag->version = opening[kVersionOffset];
}

// Names are told apart up to and including the first NUL, or over all 4 bytes.
std::string key_of(const std::string& name) {
  return name.substr(0, std::min<std::size_t>(name.find('\0'), kNameWidth));
}

bool scan(const u8* buffer, u32 size, u32* offset, SAtomTag* tag, PayloadSums* sums) {
  if (size <= kUnscannedTail) return false;
  for (u64 at = *offset; at < size - kUnscannedTail; ++at) {
    if (buffer[at] != '<' || !is_valid_tag(buffer, size, at, sums)) continue;
    describe(buffer + at, tag);
    *offset = static_cast<u32>(at) + tag->totalSize;
    return true;
  }
  return false;
}

template <typename Wanted>
u32 next_tag(const u8* buffer, u32 size, SAtomTag& out, u32 offset, PayloadSums* sums, Wanted&& wanted) {
  while (scan(buffer, size, &offset, &out, sums)) {
    if (wanted(out)) return offset;
  }
  return 0;
}

template <typename Container, typename Wanted>
void collect(const u8* buffer, u32 size, Container& out, Wanted&& wanted) {
  PayloadSums sums(buffer, size);
  SAtomTag tag;
  for (u32 offset = 0; (offset = next_tag(buffer, size, tag, offset, &sums, wanted)) != 0;) out.push_back(tag);
}

bool any(const SAtomTag&) {
  return true;
}

u32 step(const u8* buffer, u32 size, u32 offset, IExternalHelper& helper, PayloadSums* sums) {
  if (size <= kUnscannedTail) return 0;
  const u32 end = size - kUnscannedTail;
  while (offset < end) {
    if (is_valid_tag(buffer, size, offset, sums)) {
      SAtomTag tag;
      describe(buffer + offset, &tag);
      return helper.OnTag(tag) ? offset + tag.totalSize : kStopWalk;
    }
    const u32 advance = helper.OnUntaggedBytes(buffer, size, offset);
    if (advance == kStopWalk) return kStopWalk;
    if (advance >= end - offset) return 0;
    offset += advance;
  }
  return 0;
}

}  // namespace

bool CAtomTagDecoder::DecodeExactTag(const u8* buffer, u32 size, const std::string& name, u8* out,
                                     u32 expectedPayloadSize, u8* version) {
  if (size <= kUnscannedTail) return false;
  PayloadSums sums(buffer, size);
  if (load_u32(buffer + kSizeOffset) != expectedPayloadSize || !is_valid_tag(buffer, size, 0, &sums)) return false;
  SAtomTag tag;
  describe(buffer, &tag);
  if (tag.name != key_of(name)) return false;
  std::copy(tag.payload, tag.payload + tag.payloadSize, out);
  *version = tag.version;
  return true;
}

u32 CAtomTagDecoder::FindNamedTag(const u8* buffer, u32 size, const std::string& name, std::vector<u8>& out,
                                  u8* version, u32 offset) {
  PayloadSums sums(buffer, size);
  SAtomTag tag;
  const std::string key = key_of(name);
  const u32 behind = next_tag(buffer, size, tag, offset, &sums, [&](const SAtomTag& t) { return t.name == key; });
  if (behind == 0) return 0;
  out.assign(tag.payload, tag.payload + tag.payloadSize);
  *version = tag.version;
  return behind;
}

void CAtomTagDecoder::ListTagsNamed(const u8* buffer, u32 size, const std::set<std::string>& names,
                                    std::list<SAtomTag>& out) {
  collect(buffer, size, out, [&](const SAtomTag& tag) { return names.contains(tag.name); });
}

void CAtomTagDecoder::VectorTagsNamed(const u8* buffer, u32 size, const std::set<std::string>& names,
                                      std::vector<SAtomTag>& out) {
  collect(buffer, size, out, [&](const SAtomTag& tag) { return names.contains(tag.name); });
}

void CAtomTagDecoder::ListAllTags(const u8* buffer, u32 size, std::list<SAtomTag>& out) {
  collect(buffer, size, out, any);
}

void CAtomTagDecoder::VectorAllTags(const u8* buffer, u32 size, std::vector<SAtomTag>& out) {
  collect(buffer, size, out, any);
}

bool CAtomTagDecoder::ParseAll(const u8* buffer, u32 size, IExternalHelper& helper) {
  PayloadSums sums(buffer, size);
  u32 offset = 0;
  do {
    offset = step(buffer, size, offset, helper, &sums);
  } while (offset != 0 && offset != kStopWalk);
  return offset == 0;
}

u32 CAtomTagDecoder::NextTag(const u8* buffer, u32 size, SAtomTag& out, u32 offset) {
  PayloadSums sums(buffer, size, offset);
  return next_tag(buffer, size, out, offset, &sums, any);
}

u32 CAtomTagDecoder::NextTagOrBytes(const u8* buffer, u32 size, u32 offset, IExternalHelper& helper) {
  PayloadSums sums(buffer, size, offset);
  return step(buffer, size, offset, helper, &sums);
}

u32 CAtomTagDecoder::NextTagNamed(const u8* buffer, u32 size, const std::set<std::string>& names, SAtomTag& out,
                                  u32 offset) {
  PayloadSums sums(buffer, size);
  return next_tag(buffer, size, out, offset, &sums, [&](const SAtomTag& tag) { return names.contains(tag.name); });
}

std::unique_ptr<IAtomTagDecoderBin> CreaAtomTagDecoder() {
  return std::unique_ptr<IAtomTagDecoderBin>(new (std::nothrow) CAtomTagDecoder);
}

}  // namespace traguardo
