// SPDX-License-Identifier: MIT
#include "model/store_file.h"

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

bool StoreFile::Append(const u8* bytes, std::size_t count, u64* place) {
  if (!file_ || !file_.write_at(end_, bytes, count)) {
    TRAGUARDO_LOG("MemoryMappedArray::MapFileIntoMemoryWrite",
                  "%s [%d] ERROR = Could not create File Mapping for File %s . System Error Code : 0x%x\n", L"",
                  platform::last_error());
    has_failed_ = true;
    return false;
  }
  *place = end_;
  end_ += count;
  return true;
}

}  // namespace traguardo
