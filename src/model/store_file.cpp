// SPDX-License-Identifier: MIT
#include "model/store_file.h"

#include <algorithm>
#include <cstring>

#include "support/event_log.h"
#include "support/host_folders.h"

namespace traguardo {

StoreFile::StoreFile(const std::wstring& session_path) {
  std::wstring folder = store_folder();
  if (folder.empty()) folder = platform::folder_of(session_path);
  file_ = platform::File::create_unnamed(folder);
  if (!file_) {
    TRAGUARDO_LOG("MemoryMappedArray::MapFileIntoMemoryWrite",
                  "%s [%d] ERROR = Could not Open File %s for Memory Mapping. System Error Code : 0x%x\n", folder,
                  platform::last_error());
  }
}

bool StoreFile::Append(std::size_t count, u64* place) {
  *place = written_ + pending_count_;
  pending_count_ += count;
  return pending_count_ < kWrite || write(pending_count_ / kWrite * kWrite);
}

bool StoreFile::flush() {
  const bool good = !has_failed() && (pending_count_ == 0 || write(pending_count_));
  pending_ = {};
  pending_count_ = 0;
  return good;
}

// The oldest `count` bytes that wait.
bool StoreFile::write(std::size_t count) {
  if (!file_ || !file_.write_at(written_, pending_.data(), count)) {
    TRAGUARDO_LOG("MemoryMappedArray::MapFileIntoMemoryWrite",
                  "%s [%d] ERROR = Could not create File Mapping for File %s . System Error Code : 0x%x\n", L"",
                  platform::last_error());
    has_failed_ = true;
    return false;
  }
  written_ += count;
  pending_count_ -= count;
  std::memmove(pending_.data(), pending_.data() + count, pending_count_);
  return true;
}

void StoreFile::Read(u64 place, u8* out, std::size_t count) const {
  const std::size_t on_disk = place < written_ ? static_cast<std::size_t>(std::min<u64>(count, written_ - place)) : 0;
  if (on_disk != 0) file_.read_all_at(place, out, on_disk);
  if (on_disk == count) return;
  std::memcpy(out + on_disk, pending_.data() + (place + on_disk - written_), count - on_disk);
}

}  // namespace traguardo
