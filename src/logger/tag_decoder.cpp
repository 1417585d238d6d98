// SPDX-License-Identifier: MIT
#include "logger/tag_decoder.h"

#include <algorithm>
#include <new>

#include "logger/tag_scan.h"

namespace traguardo {

namespace {

using tags::BufferSource;
using Sums = tags::PayloadSums<BufferSource>;

// Names are told apart up to and including the first NUL, or over all 4 bytes.
std::string key_of(const std::string& name) {
  return name.substr(0, std::min<std::size_t>(name.find('\0'), tags::kNameWidth));
}

bool scan(BufferSource* source, u32 size, u32* offset, SAtomTag* tag, Sums* sums) {
  if (size <= kUnscannedTail) return false;
  for (u64 at = *offset; at < size - kUnscannedTail; ++at) {
    if (*source->At(at, 1) != '<' || !tags::is_valid_tag(source, size, at, sums)) continue;
    *tag = tags::tag_at(source, at);
    *offset = static_cast<u32>(at) + tag->totalSize;
    return true;
  }
  return false;
}

template <typename Wanted>
u32 next_tag(const u8* buffer, u32 size, SAtomTag& out, u32 offset, Wanted&& wanted) {
  BufferSource source(buffer);
  Sums sums(&source, size, offset);
  while (scan(&source, size, &offset, &out, &sums)) {
    if (wanted(out)) return offset;
  }
  return 0;
}

template <typename Container, typename Wanted>
void collect(const u8* buffer, u32 size, Container& out, Wanted&& wanted) {
  BufferSource source(buffer);
  tags::for_each(&source, size, [&](const SAtomTag& tag) {
    if (wanted(tag)) out.push_back(tags::tag_at(&source, tag.offset));
  });
}

bool any(const SAtomTag&) {
  return true;
}

}  // namespace

bool CAtomTagDecoder::DecodeExactTag(const u8* buffer, u32 size, const std::string& name, u8* out,
                                     u32 expectedPayloadSize, u8* version) {
  if (size <= kUnscannedTail) return false;
  BufferSource source(buffer);
  Sums sums(&source, size);
  if (load_u32(buffer + tags::kSizeOffset) != expectedPayloadSize) return false;
  if (!tags::is_valid_tag(&source, size, 0, &sums)) return false;
  const SAtomTag tag = tags::tag_at(&source, 0);
  if (tag.name != key_of(name)) return false;
  std::copy(tag.payload, tag.payload + tag.payloadSize, out);
  *version = tag.version;
  return true;
}

u32 CAtomTagDecoder::FindNamedTag(const u8* buffer, u32 size, const std::string& name, std::vector<u8>& out,
                                  u8* version, u32 offset) {
  SAtomTag tag;
  const std::string key = key_of(name);
  const u32 behind = next_tag(buffer, size, tag, offset, [&](const SAtomTag& t) { return t.name == key; });
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
  BufferSource source(buffer);
  return tags::walk(&source, size, helper);
}

u32 CAtomTagDecoder::NextTag(const u8* buffer, u32 size, SAtomTag& out, u32 offset) {
  return next_tag(buffer, size, out, offset, any);
}

u32 CAtomTagDecoder::NextTagOrBytes(const u8* buffer, u32 size, u32 offset, IExternalHelper& helper) {
  BufferSource source(buffer);
  Sums sums(&source, size, offset);
  return tags::step(&source, size, offset, helper, &sums);
}

u32 CAtomTagDecoder::NextTagNamed(const u8* buffer, u32 size, const std::set<std::string>& names, SAtomTag& out,
                                  u32 offset) {
  return next_tag(buffer, size, out, offset, [&](const SAtomTag& tag) { return names.contains(tag.name); });
}

std::unique_ptr<IAtomTagDecoderBin> CreaAtomTagDecoder() {
  return std::unique_ptr<IAtomTagDecoderBin>(new (std::nothrow) CAtomTagDecoder);
}

}  // namespace traguardo
