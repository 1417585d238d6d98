// SPDX-License-Identifier: MIT
#include "api/file_table.h"

#include <algorithm>
#include <map>
#include <new>
#include <utility>

#include "api/open_failure.h"
#include "api/reader_factory.h"
#include "api/results.h"
#include "support/platform/platform.h"

namespace traguardo {

namespace {

thread_local OpenFailure t_last_failure = OpenFailure::kNone;

struct FileTable {
  std::mutex lock;
  std::map<i32, std::shared_ptr<SFileQLT>> files;
  // The last handle given out. Handles are never used twice, so a stale one stays invalid.
  i32 last_handle = 0;

  // REQUIRES (all): lock is held.
  std::map<i32, std::shared_ptr<SFileQLT>>::iterator with_path(const std::string& path) {
    return std::find_if(files.begin(), files.end(), [&](const auto& entry) { return entry.second->path == path; });
  }
};

// Never destroyed: other threads may still ask while the process ends, and no open file leaves anything on a disk.
FileTable& table() {
  static FileTable* const made_once = new FileTable;
  return *made_once;
}

std::shared_ptr<SFileQLT> taken_out(int handle) {
  const std::scoped_lock held(table().lock);
  const auto found = table().files.find(handle);
  if (found == table().files.end()) return nullptr;
  std::shared_ptr<SFileQLT> file = std::move(found->second);
  table().files.erase(found);
  return file;
}

void list_laps(SFileQLT* file) {
  const std::map<i32, SRkSession*>& sessions = file->view->GetSessioni();
  file->has_sessions = !sessions.empty();
  for (const auto& [number, session] : sessions) {
    if (session == nullptr) continue;
    for (const auto& [lap_number, lap] : session->laps) file->laps.push_back(lap.get());
  }
}

OpenFailure failure_of(const SFileQLT& file, const std::wstring& path) {
  const auto* parser = dynamic_cast<const CParser*>(file.reader.get());
  switch (parser == nullptr ? ParseFailure::kContent : parser->failure()) {
    case ParseFailure::kStore:
      return OpenFailure::kNoStore;
    case ParseFailure::kMemory:
      return OpenFailure::kNoMemory;
    case ParseFailure::kReading:
      return OpenFailure::kNotReadable;
    case ParseFailure::kContent:
      break;
  }
  if (!platform::file_exists(path)) return OpenFailure::kNoSuchFile;
  const platform::File opened =
      platform::File::open(path, platform::Access::kRead, platform::Share::kReadWrite, platform::Creation::kMustExist);
  return opened ? OpenFailure::kNoSession : OpenFailure::kNotReadable;
}

// REQUIRES: the caller holds the file's lock, and nobody else has its handle.
int parse(SFileQLT* file, IProgress* progress, const std::list<std::string>* options) {
  const std::wstring path = platform::path_from_host_bytes(file->path);
  const int kind = file_kind_of(path);
  file->reader = CreaParser(path, kind, options, false);
  if (file->reader == nullptr) {
    t_last_failure = kind == kKindUnknown ? OpenFailure::kUnknownKind : OpenFailure::kNoMemory;
    return kOpenNoReader;
  }
  if (dynamic_cast<CParser*>(file->reader.get()) == nullptr) return kOpenNoParser;
  file->view.reset(new (std::nothrow) CSuperParser);
  if (file->view == nullptr) return kOpenNoView;
  if (!file->reader->ParsaFile(progress)) {
    t_last_failure = failure_of(*file, path);
    return kOpenUnreadable;
  }
  file->view->AggiungiParser({{0.0, file->reader.get()}});
  list_laps(file);
  return 1;
}

int parse_or_give_up(SFileQLT* file, IProgress* progress, const std::list<std::string>* options) noexcept {
  try {
    return parse(file, progress, options);
  } catch (const platform::ReadFailure&) {
    t_last_failure = OpenFailure::kNotReadable;
  } catch (...) {
    // A file that needs more memory than there is must not take the host with it.
    t_last_failure = OpenFailure::kNoMemory;
  }
  return kOpenUnreadable;
}

// What the path is open as already, if it is: 0 if not. Waits for another thread that is opening it.
int open_already(const std::string& path) {
  for (;;) {
    std::shared_ptr<SFileQLT> other;
    int handle = 0;
    {
      const std::scoped_lock held(table().lock);
      const auto found = table().with_path(path);
      if (found == table().files.end()) return 0;
      handle = found->first;
      other = found->second;
    }
    const std::scoped_lock held(other->lock);
    if (other->state == SFileQLT::State::kOpen) return handle;
  }
}

// Enters a record under a new handle, with its lock held. Null with the handle set if the path was entered meanwhile.
FileInUse entered(const std::string& path, i32* handle) {
  auto file = std::make_shared<SFileQLT>();
  file->path = path;
  FileInUse in_use(file);
  const std::scoped_lock held(table().lock);
  if (table().with_path(path) != table().files.end()) return {};
  *handle = ++table().last_handle;
  table().files.emplace(*handle, std::move(file));
  return in_use;
}

}  // namespace

OpenFailure last_open_failure() {
  return t_last_failure;
}

void set_last_open_failure(OpenFailure failure) {
  t_last_failure = failure;
}

FileInUse use_file(int handle) {
  std::shared_ptr<SFileQLT> file;
  {
    const std::scoped_lock held(table().lock);
    const auto found = table().files.find(handle);
    if (found == table().files.end()) return {};
    file = found->second;
  }
  FileInUse in_use(std::move(file));
  // Another thread may have closed it while this one waited.
  return in_use->state == SFileQLT::State::kOpen ? std::move(in_use) : FileInUse();
}

SFileQLT* find_file(int handle) {
  const std::scoped_lock held(table().lock);
  const auto found = table().files.find(handle);
  return found == table().files.end() ? nullptr : found->second.get();
}

LapLookup find_lap(const SFileQLT& file, int index, const SRkLap** lap) {
  if (!file.has_sessions) return LapLookup::kNoSession;
  const std::size_t at = static_cast<std::size_t>(std::max(index, 0));
  if (at >= file.laps.size() || file.laps[at] == nullptr) return LapLookup::kNoLap;
  *lap = file.laps[at];
  return LapLookup::kFound;
}

int open_file_with_progress(const char* path, IProgress* progress, const std::list<std::string>* options) {
  t_last_failure = OpenFailure::kNone;
  if (path == nullptr) {
    t_last_failure = OpenFailure::kUnknownKind;
    return kOpenNoReader;
  }
  const std::string path_text = path;
  i32 handle = 0;
  FileInUse file;
  do {
    if (const int other = open_already(path_text)) return other;
    file = entered(path_text, &handle);
  } while (!file);

  const int result = parse_or_give_up(&*file, progress, options);
  if (result > 0) {
    file->state = SFileQLT::State::kOpen;
    return handle;
  }
  file->state = SFileQLT::State::kGone;
  taken_out(handle);
  return result;
}

int close_file(int handle) {
  const std::shared_ptr<SFileQLT> file = taken_out(handle);
  if (file == nullptr) return -1;
  // Whoever works on it ends first; whoever waits for it finds it gone.
  const std::scoped_lock held(file->lock);
  file->state = SFileQLT::State::kGone;
  return handle;
}

int close_file(const char* path) {
  i32 handle = 0;
  {
    const std::scoped_lock held(table().lock);
    const auto found = table().with_path(path);
    if (found == table().files.end()) return kCloseNotOpen;
    handle = found->first;
  }
  return close_file(handle);
}

}  // namespace traguardo
