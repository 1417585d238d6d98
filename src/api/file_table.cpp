#include "api/file_table.h"

#include <new>

#include "api/reader_factory.h"
#include "support/platform/platform.h"

namespace traguardo {

namespace {

enum OpenResult : int { kUnreadable = 0, kNoReader = -2, kNoParser = -3, kNoView = -4, kNoRecord = -5 };

// The last handle given out. Handles are never used twice, so a stale one stays invalid.
i32 g_last_handle = 0;

int open_new(const char* path, IProgress* progress) {
  const i32 handle = ++g_last_handle;
  const std::wstring wide = platform::path_from_host_bytes(path);
  std::unique_ptr<IRkParser> reader = CreaParser(wide, file_kind_of(wide), nullptr, false);
  if (reader == nullptr) return kNoReader;
  if (dynamic_cast<CParser*>(reader.get()) == nullptr) return kNoParser;
  std::unique_ptr<CSuperParser> view(new (std::nothrow) CSuperParser);
  if (view == nullptr) return kNoView;

  SFileQLT record;
  record.path = path;
  record.view = std::move(view);
  record.reader = std::move(reader);
  open_files().emplace(handle, std::move(record));
  SFileQLT* file = find_file(handle);
  if (file == nullptr) return kNoRecord;
  if (!file->reader->ParsaFile(progress)) {
    open_files().erase(handle);
    return kUnreadable;
  }
  file->view->AggiungiParser({{0.0, file->reader.get()}});
  return handle;
}

}  // namespace

std::map<i32, SFileQLT>& open_files() {
  static std::map<i32, SFileQLT> files;
  return files;
}

SFileQLT* find_file(int handle) {
  const auto found = open_files().find(handle);
  return found == open_files().end() ? nullptr : &found->second;
}

LapLookup find_lap(const SFileQLT& file, int index, const SRkLap** lap) {
  const std::map<i32, SRkSession*>& sessions = file.view->GetSessioni();
  if (sessions.empty()) return LapLookup::kNoSession;
  i64 running = 0;
  for (const auto& [number, session] : sessions) {
    if (session == nullptr) continue;
    for (const auto& [lap_number, candidate] : session->laps) {
      if (running++ < index) continue;
      if (candidate == nullptr) return LapLookup::kNoLap;
      *lap = candidate.get();
      return LapLookup::kFound;
    }
  }
  return LapLookup::kNoLap;
}

int open_file_with_progress(const char* path, IProgress* progress) {
  if (path == nullptr) return kNoReader;
  for (const auto& [handle, file] : open_files()) {
    if (file.path == path) return handle;
  }
  try {
    return open_new(path, progress);
  } catch (const std::bad_alloc&) {
    // A file that needs more memory than there is must not take the host with it.
    open_files().erase(g_last_handle);
    return kUnreadable;
  }
}

int close_file(int handle) {
  return open_files().erase(handle) == 0 ? -1 : handle;
}

}  // namespace traguardo
