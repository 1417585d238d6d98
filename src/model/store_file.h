// SPDX-License-Identifier: MIT
// The one file that the samples of a session lie in while it is open. It has no name, so that nobody else can meet it
// and nothing of it stays behind, however the process ends.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/platform/platform.h"

namespace traguardo {

class StoreFile {
 public:
  // In the folder that TRAGUARDO_STORE_FOLDER names, or beside the session file. IsValido tells whether it could be
  // made.
  explicit StoreFile(const std::wstring& session_path);

  bool IsValido() const { return static_cast<bool>(file_); }
  // For a record behind the last that a store takes.
  void fail() { has_failed_ = true; }
  // It could not be made, or something could not be written.
  bool has_failed() const { return has_failed_ || !file_; }
  // Puts bytes behind all others and gives their place. False if they can't be written, as on a full disk.
  bool Append(const u8* bytes, std::size_t count, u64* place);
  // Bytes to make a piece in, good until the next call. Throws bad_alloc.
  u8* scratch(std::size_t bytes) {
    if (scratch_.size() < bytes) scratch_.resize(bytes);
    return scratch_.data();
  }
  // Throws ReadFailure.
  void Read(u64 place, u8* out, std::size_t count) const { file_.read_all_at(place, out, count); }

 private:
  platform::File file_;
  u64 end_ = 0;
  bool has_failed_ = false;
  std::vector<u8> scratch_;
};

}  // namespace traguardo
