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
  // Room for bytes that go behind all others, to be filled and then appended. Throws bad_alloc.
  u8* room(std::size_t bytes) {
    if (pending_.size() < pending_count_ + bytes) pending_.resize(pending_count_ + bytes);
    return pending_.data() + pending_count_;
  }
  // Appends the first bytes of that room and gives their place. False if something can't be written, as on a full disk.
  bool Append(std::size_t count, u64* place);
  // Behind the last store: what still waits goes to the disk. False if something could not be written, now or earlier.
  bool flush();
  // Throws ReadFailure.
  void Read(u64 place, u8* out, std::size_t count) const;

 private:
  // Pieces of some kilobytes are gathered: a write of this size, on a border of pages, costs the system a third.
  static constexpr std::size_t kWrite = 256U << 10;

  bool write(std::size_t count);

  platform::File file_;
  u64 written_ = 0;
  bool has_failed_ = false;
  std::vector<u8> pending_;  // what follows in the file, and room behind it
  std::size_t pending_count_ = 0;
};

}  // namespace traguardo
