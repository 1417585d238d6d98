// SPDX-License-Identifier: MIT
// The one file that the samples of a session lie in while it is open. It has no name, so that nobody else can meet it
// and nothing of it stays behind, however the process ends.
#pragma once

#include <memory>
#include <string>

#include "support/platform/platform.h"

namespace traguardo {

class StoreFile {
 public:
  // In the folder that TRAGUARDO_STORE_FOLDER names, or beside the session file. IsValido tells whether it could be
  // made.
  explicit StoreFile(const std::wstring& session_path);

  bool IsValido() const { return static_cast<bool>(file_); }
  // For a record behind the last that a store takes.
  void Fail() { has_failed_ = true; }
  // It could not be made, or something could not be written.
  bool HasFailed() const { return has_failed_ || !file_; }
  // Puts bytes behind all others and gives their place. False if they can't be written, as on a full disk.
  bool Append(const u8* bytes, std::size_t count, u64* place);
  // Throws ReadFailure.
  void Read(u64 place, u8* out, std::size_t count) const { file_.read_all_at(place, out, count); }

 private:
  platform::File file_;
  u64 end_ = 0;
  bool has_failed_ = false;
};

}  // namespace traguardo
