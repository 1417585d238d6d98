// SPDX-License-Identifier: MIT
// The session file as its walk sees it: bytes on demand, read a window at a time. A mapping would be as fast, but a
// file that another program cuts, or a disk that fails, would then end the host's process instead of the open.
#pragma once

#include <array>
#include <memory>

#include "support/platform/platform.h"

namespace traguardo {

class InputFile {
 public:
  explicit InputFile(platform::File file);
  explicit InputFile(const std::wstring& path) : InputFile(opened(path)) {}
  static platform::File opened(const std::wstring& path);

  // False where the file or the memory for its window could not be had.
  bool IsValido() const { return window_ != nullptr; }
  u64 size() const { return size_; }

  // `length` bytes from `offset` on in one piece, good until the next call.
  // REQUIRES: offset + length <= size(). Throws ReadFailure.
  const u8* At(u64 offset, u64 length) {
    return holds(offset, length) ? window_.get() + (offset - from_) : Load(offset, length);
  }
  // Bytes behind what At gave for `offset`, from there on.
  u64 ready(u64 offset) const { return end_ - offset; }
  // The same for a look at bytes elsewhere: what At gave stays good. REQUIRES: length <= kLongestLook.
  const u8* far(u64 offset, u64 length) {
    return holds(offset, length) ? window_.get() + (offset - from_) : Look(offset);
  }
  static constexpr u64 kLongestLook = 2048;

 private:
  static constexpr u64 kWindow = 256U << 10;
  static constexpr u64 kPage = 4096;
  static constexpr std::size_t kPages = 16;

  bool holds(u64 offset, u64 length) const { return offset >= from_ && offset + length <= end_; }
  const u8* Load(u64 offset, u64 length);
  const u8* Look(u64 offset);

  platform::File file_;
  u64 size_ = 0;
  // The bytes [from_, end_) of the file. A stretch that is longer than the window gets one of its size for once.
  std::unique_ptr<u8[]> window_;
  u64 from_ = 0;
  u64 end_ = 0;
  u64 capacity_ = 0;
  // Pages that were looked at, each with room for the beginning of the next, so that no look needs two.
  struct Page {
    u64 number = ~u64{0};
    std::array<u8, kPage + kLongestLook> bytes;
  };
  std::unique_ptr<std::array<Page, kPages>> pages_;
};

}  // namespace traguardo
