// SPDX-License-Identifier: MIT
// logger/ reads the .qlt and .qlc files: tags, header, channel table, data stream, chunks, laps and the report. It
// stands on model, gps, units and support; api makes its reader.
//
// This header: the tags. A file is one flat sequence of self-delimiting tags with the data stream between them. A tag
// is believed when its closing mark and its checksum confirm it, never before, so that a stray "<h" in sample data
// costs one failed test and nothing else.
#pragma once

#include <list>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "support/bytes.h"

namespace traguardo {

// One tag, pointing into the buffer that it was found in, or into a window of the file that is good until the next look
// into the file.
struct SAtomTag {
  std::string name;  // cut at the first NUL, at most 4 characters
  u32 offset = 0;    // of its start in what it was found in
  const u8* start = nullptr;
  const u8* payload = nullptr;
  u32 payloadSize = 0;
  u32 totalSize = 0;  // payload and both marks
  u8 version = 0;
};

// Marks, in bytes.
inline constexpr u32 kTagOpeningSize = 12;
inline constexpr u32 kTagClosingSize = 8;
inline constexpr u32 kTagFrameSize = kTagOpeningSize + kTagClosingSize;
// A scan ends this far before the end of its buffer: a tag that begins later stays unseen.
inline constexpr u32 kUnscannedTail = 20;
// What ends a walk at once.
inline constexpr u32 kStopWalk = 0xFFFFFFFF;

// The owner of a walk.
class IExternalHelper {
 public:
  virtual ~IExternalHelper() = default;
  // Whether OnTag wants the bytes of a tag: one that reads them by itself may save the memory for a large one.
  virtual bool wants_bytes_of(const SAtomTag&) const { return true; }
  // False ends the walk.
  virtual bool OnTag(const SAtomTag& tag) = 0;
  // No valid tag begins at this offset. Gives the number of bytes to advance, at least 1, or kStopWalk.
  virtual u32 OnUntaggedBytes(u32 offset) = 0;
};

// Finds tags in a buffer. "Next" operations give the offset behind what they found, or 0 when nothing more was found.
class IAtomTagDecoderBin {
 public:
  virtual ~IAtomTagDecoderBin() = default;
  // The buffer begins with a valid tag of that name and exactly that payload size: copies the payload to `out` (as many
  // bytes) and stores the version. No scanning; false copies nothing.
  virtual bool DecodeExactTag(const u8* buffer, u32 size, const std::string& name, u8* out, u32 expectedPayloadSize,
                              u8* version) = 0;
  // The next tag of that name from `offset` on; `out` becomes its payload.
  virtual u32 FindNamedTag(const u8* buffer, u32 size, const std::string& name, std::vector<u8>& out, u8* version,
                           u32 offset) = 0;
  // Append every valid tag (whose name is in `names`), in file order.
  virtual void ListTagsNamed(const u8* buffer, u32 size, const std::set<std::string>& names,
                             std::list<SAtomTag>& out) = 0;
  virtual void VectorTagsNamed(const u8* buffer, u32 size, const std::set<std::string>& names,
                               std::vector<SAtomTag>& out) = 0;
  virtual void ListAllTags(const u8* buffer, u32 size, std::list<SAtomTag>& out) = 0;
  virtual void VectorAllTags(const u8* buffer, u32 size, std::vector<SAtomTag>& out) = 0;
  // The walk: every tag and everything between them goes to the helper. False when the helper ended it.
  virtual bool ParseAll(const u8* buffer, u32 size, IExternalHelper& helper) = 0;
  virtual u32 NextTag(const u8* buffer, u32 size, SAtomTag& out, u32 offset) = 0;
  // One step of the walk; kStopWalk when the helper ended it.
  virtual u32 NextTagOrBytes(const u8* buffer, u32 size, u32 offset, IExternalHelper& helper) = 0;
  virtual u32 NextTagNamed(const u8* buffer, u32 size, const std::set<std::string>& names, SAtomTag& out,
                           u32 offset) = 0;
};

class CAtomTagDecoder : public IAtomTagDecoderBin {
 public:
  bool DecodeExactTag(const u8* buffer, u32 size, const std::string& name, u8* out, u32 expectedPayloadSize,
                      u8* version) override;
  u32 FindNamedTag(const u8* buffer, u32 size, const std::string& name, std::vector<u8>& out, u8* version,
                   u32 offset) override;
  void ListTagsNamed(const u8* buffer, u32 size, const std::set<std::string>& names, std::list<SAtomTag>& out) override;
  void VectorTagsNamed(const u8* buffer, u32 size, const std::set<std::string>& names,
                       std::vector<SAtomTag>& out) override;
  void ListAllTags(const u8* buffer, u32 size, std::list<SAtomTag>& out) override;
  void VectorAllTags(const u8* buffer, u32 size, std::vector<SAtomTag>& out) override;
  bool ParseAll(const u8* buffer, u32 size, IExternalHelper& helper) override;
  u32 NextTag(const u8* buffer, u32 size, SAtomTag& out, u32 offset) override;
  u32 NextTagOrBytes(const u8* buffer, u32 size, u32 offset, IExternalHelper& helper) override;
  u32 NextTagNamed(const u8* buffer, u32 size, const std::set<std::string>& names, SAtomTag& out, u32 offset) override;
};

// Null if the memory can't be had.
std::unique_ptr<IAtomTagDecoderBin> CreaAtomTagDecoder();

}  // namespace traguardo
