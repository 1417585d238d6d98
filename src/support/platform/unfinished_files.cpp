// SPDX-License-Identifier: MIT
#include "support/platform/unfinished_files.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <random>
#include <system_error>
#include <utility>

#include "support/platform/detail.h"

namespace traguardo::platform {

namespace {

#ifdef _WIN32
using PathText = std::wstring;
using ProcessId = DWORD;

ProcessId this_process() noexcept {
  return ::GetCurrentProcessId();
}
PathText path_text(const std::wstring& path) {
  return path;
}
std::wstring wide_text(const PathText& path) {
  return path;
}
void remove_now(const PathText& path) noexcept {
  if (::DeleteFileW(path.c_str()) == 0) ::RemoveDirectoryW(path.c_str());
}
bool failed() {
  return detail::fail_with(::GetLastError());
}
bool is_separator(wchar_t c) {
  return c == L'/' || c == L'\\' || c == L':';
}
#else
using PathText = std::string;
using ProcessId = pid_t;

ProcessId this_process() noexcept {
  return ::getpid();
}
PathText path_text(const std::wstring& path) {
  return host_bytes_from_path(path);
}
std::wstring wide_text(const PathText& path) {
  return path_from_host_bytes(path);
}
void remove_now(const PathText& path) noexcept {
  if (::unlink(path.c_str()) != 0) ::rmdir(path.c_str());
}
bool failed() {
  return detail::fail_with(static_cast<u32>(errno));
}
bool is_separator(wchar_t c) {
  return c == L'/';
}
#endif

// --- The registry ----------------------------------------------------------------------------------------------------

struct Entry {
  ProcessId owner;
  PathText path;
};

// Whoever takes an entry out of its place owns it, so that no two touch it at a time.
std::array<std::atomic<Entry*>, 64> g_entries;
static_assert(std::atomic<Entry*>::is_always_lock_free);

int enter(const std::wstring& path) {
  Entry* const entry = new (std::nothrow) Entry{this_process(), path_text(absolute_path(path))};
  if (entry == nullptr) return -1;
  for (std::size_t i = 0; i < g_entries.size(); ++i) {
    Entry* none = nullptr;
    if (g_entries[i].compare_exchange_strong(none, entry)) return static_cast<int>(i);
  }
  delete entry;
  return -1;
}

}  // namespace

UnfinishedFile::UnfinishedFile(const std::wstring& path) : place_(enter(path)) {}

UnfinishedFile::UnfinishedFile(UnfinishedFile&& other) noexcept : place_(std::exchange(other.place_, kNotEntered)) {}

UnfinishedFile& UnfinishedFile::operator=(UnfinishedFile&& other) noexcept {
  if (this != &other) {
    end();
    place_ = std::exchange(other.place_, kNotEntered);
  }
  return *this;
}

UnfinishedFile::~UnfinishedFile() {
  end();
}

void UnfinishedFile::end() noexcept {
  const int place = std::exchange(place_, kNotEntered);
  if (place != kNotEntered) delete g_entries[static_cast<std::size_t>(place)].exchange(nullptr);
}

void remove_all_unfinished() noexcept {
  for (std::size_t i = g_entries.size(); i-- > 0;) {
    const Entry* const entry = g_entries[i].exchange(nullptr);
    // Not given back: this is no moment for the heap.
    if (entry != nullptr && entry->owner == this_process()) remove_now(entry->path);
  }
}

// --- The end of the process ------------------------------------------------------------------------------------------

#ifdef _WIN32

namespace {

BOOL WINAPI end_by_event(DWORD event) {
  constexpr UINT kHangUp = 128 + 1;
  constexpr UINT kInterrupt = 128 + 2;
  remove_all_unfinished();
  ::TerminateProcess(::GetCurrentProcess(), event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT ? kInterrupt : kHangUp);
  return TRUE;
}

}  // namespace

void remove_unfinished_when_killed() {
  ::SetConsoleCtrlHandler(end_by_event, TRUE);
}

#else

namespace {

extern "C" void end_by_signal(int number) {
  remove_all_unfinished();
  ::_exit(128 + number);
}

}  // namespace

void remove_unfinished_when_killed() {
  for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM}) {
    struct sigaction present;
    if (::sigaction(number, nullptr, &present) != 0 || present.sa_handler == SIG_IGN) continue;
    struct sigaction action {};
    action.sa_handler = end_by_signal;
    ::sigfillset(&action.sa_mask);
    ::sigaction(number, &action, nullptr);
  }
  ::signal(SIGXFSZ, SIG_IGN);
}

#endif

// --- Files on their way ----------------------------------------------------------------------------------------------

namespace {

// TARGET.traguardo-0123456789abcdef.part
constexpr std::wstring_view kMiddle = L".traguardo-";
constexpr std::wstring_view kEnding = L".part";
constexpr std::size_t kTokenLength = 16;
constexpr std::wstring_view kDigits = L"0123456789abcdef";

std::size_t name_begin(const std::wstring& path) {
  return static_cast<std::size_t>(
      std::find_if(path.rbegin(), path.rend(), [](wchar_t c) { return is_separator(c); }).base() - path.begin());
}

// What stands in front of the token in a name; a long name of the target is cut, as names have a longest length.
std::wstring name_stem(const std::wstring& target) {
  constexpr std::size_t kLongest = 200;
  return target.substr(name_begin(target), kLongest).append(kMiddle);
}

bool is_token(std::wstring_view text) {
  return text.size() == kTokenLength && text.find_first_not_of(kDigits) == std::wstring_view::npos;
}

#ifdef _WIN32

// Nobody may open the file while a living process has it.
void remove_if_dead(const std::wstring& path) {
  const HANDLE file =
      ::CreateFileW(path.c_str(), DELETE, 0, nullptr, OPEN_EXISTING, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  if (file != INVALID_HANDLE_VALUE) ::CloseHandle(file);
}

#else

bool is_still_named(int descriptor, const std::string& path, mode_t kind) {
  struct stat open;
  struct stat named;
  return ::fstat(descriptor, &open) == 0 && ::lstat(path.c_str(), &named) == 0 && (named.st_mode & S_IFMT) == kind &&
         open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

// A file system may refuse locks altogether; then nobody takes anything on it for dead.
enum class Lock { kTaken, kHeldByAnother, kRefused };

Lock lock(int descriptor) {
  if (!detail::may_go_on(Operation::kLock)) return Lock::kRefused;
  if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0) return Lock::kTaken;
  return errno == EWOULDBLOCK ? Lock::kHeldByAnother : Lock::kRefused;
}

// A lock dies with its process, wherever that ran.
void remove_if_dead(const std::wstring& path) {
  const std::string bytes = host_bytes_from_path(path);
  const int descriptor = ::open(bytes.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (descriptor < 0) return;
  if (lock(descriptor) == Lock::kTaken && is_still_named(descriptor, bytes, S_IFREG)) ::unlink(bytes.c_str());
  ::close(descriptor);
}

#endif

void remove_dead_parts(const std::wstring& target) {
  const std::wstring folder = target.substr(0, name_begin(target));
  const std::wstring stem = name_stem(target);
  for (const std::wstring& name : list_files(folder, kEnding)) {
    if (!name.starts_with(stem) || !name.ends_with(kEnding) || name.size() < stem.size() + kEnding.size()) continue;
    const std::wstring_view token = std::wstring_view(name).substr(stem.size());
    if (is_token(token.substr(0, token.size() - kEnding.size()))) remove_if_dead(folder + name);
  }
}

// Digits that nobody guesses, for the name of a file in a folder that others write to.
std::wstring random_token() {
  std::random_device random;
  std::wstring token;
  for (std::size_t i = 0; i < kTokenLength; ++i) token.push_back(kDigits[random() % kDigits.size()]);
  return token;
}

}  // namespace

// --- Folders to work in ----------------------------------------------------------------------------------------------

namespace {

constexpr std::wstring_view kWorkFolder = L"traguardo-";

std::filesystem::path file_system_path(const std::wstring& path) {
  return path_text(path);
}

}  // namespace

bool WorkFolder::begin(const std::wstring& place) {
  std::error_code problem;
  std::vector<std::wstring> found;
  std::filesystem::directory_iterator entry(file_system_path(place), problem);
  for (; !problem && entry != std::filesystem::directory_iterator(); entry.increment(problem)) {
    const std::wstring name = wide_text(entry->path().filename().native());
    if (name.starts_with(kWorkFolder) && is_token(std::wstring_view(name).substr(kWorkFolder.size()))) {
      found.push_back(name);
    }
  }
  for (const std::wstring& name : found) remove_if_dead(path_in_folder(place, name));
  constexpr int kTries = 100;
  for (int i = 0; i < kTries; ++i) {
    if (begin_as(path_in_folder(place, std::wstring(kWorkFolder).append(random_token())))) return true;
    if (last_error() != 0) return false;
  }
  return false;
}

void WorkFolder::expect(const std::wstring& name) {
  marks_.emplace_back(path_in_folder(path_, name));
}

#ifdef _WIN32

namespace {

HANDLE open_folder(const std::wstring& path, DWORD shared) {
  return ::CreateFileW(path.c_str(), FILE_LIST_DIRECTORY, shared, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS,
                       nullptr);
}

}  // namespace

WorkFolder::~WorkFolder() {
  if (life_ != -1) ::CloseHandle(reinterpret_cast<HANDLE>(life_));
  std::error_code ignored;
  if (!path_.empty()) std::filesystem::remove_all(file_system_path(path_), ignored);
}

bool WorkFolder::begin_as(const std::wstring& path) {
  marks_.emplace_back(path);
  if (::CreateDirectoryW(path.c_str(), nullptr) == 0) {
    const u32 code = ::GetLastError();
    marks_.clear();
    return detail::fail_with(code == ERROR_ALREADY_EXISTS ? 0 : code);
  }
  path_ = path;
  const HANDLE life = open_folder(path, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
  if (life != INVALID_HANDLE_VALUE) life_ = reinterpret_cast<std::intptr_t>(life);
  return true;
}

// Nobody opens it alone while a living process has it.
void WorkFolder::remove_if_dead(const std::wstring& path) {
  const HANDLE folder = open_folder(path, 0);
  if (folder == INVALID_HANDLE_VALUE) return;
  ::CloseHandle(folder);
  std::error_code ignored;
  std::filesystem::remove_all(file_system_path(path), ignored);
}

#else

namespace {

int open_folder(const std::string& path) {
  return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

}  // namespace

WorkFolder::~WorkFolder() {
  std::error_code ignored;
  if (!path_.empty()) std::filesystem::remove_all(file_system_path(path_), ignored);
  if (life_ >= 0) ::close(static_cast<int>(life_));
}

bool WorkFolder::begin_as(const std::wstring& path) {
  const std::string bytes = host_bytes_from_path(path);
  marks_.emplace_back(path);
  if (::mkdir(bytes.c_str(), 0700) != 0) {
    const u32 code = static_cast<u32>(errno);
    marks_.clear();
    return detail::fail_with(code == EEXIST ? 0 : code);
  }
  life_ = open_folder(bytes);
  // Who looks for dead folders may have come between.
  const bool has_rival = life_ >= 0 && lock(static_cast<int>(life_)) == Lock::kHeldByAnother;
  if (life_ >= 0 && !has_rival && is_still_named(static_cast<int>(life_), bytes, S_IFDIR)) {
    path_ = path;
    return true;
  }
  if (life_ >= 0) ::close(static_cast<int>(std::exchange(life_, -1)));
  marks_.clear();
  return detail::fail_with(0);
}

// A lock dies with its process. What others own is theirs to remove, also for the superuser.
void WorkFolder::remove_if_dead(const std::wstring& path) {
  const std::string bytes = host_bytes_from_path(path);
  const int descriptor = open_folder(bytes);
  if (descriptor < 0) return;
  struct stat folder;
  const bool is_own = ::fstat(descriptor, &folder) == 0 && folder.st_uid == ::geteuid();
  if (is_own && lock(descriptor) == Lock::kTaken && is_still_named(descriptor, bytes, S_IFDIR)) {
    std::error_code ignored;
    std::filesystem::remove_all(file_system_path(path), ignored);
  }
  ::close(descriptor);
}

#endif

// --- One file --------------------------------------------------------------------------------------------------------

bool PartFile::write(const void* bytes, std::size_t count) {
  return detail::may_go_on(Operation::kWrite) && detail::disk_takes(count) && write_bytes(bytes, count);
}

bool PartFile::begin(const std::wstring& target) {
  if (!detail::may_go_on(Operation::kOpen)) return false;
  constexpr int kTries = 100;
  target_ = target;
  remove_dead_parts(target);
  const std::wstring stem = target.substr(0, name_begin(target)) + name_stem(target);
  for (int i = 0; i < kTries; ++i) {
    if (begin_as(std::wstring(stem).append(random_token()).append(kEnding))) return true;
    if (last_error() != 0) return false;
  }
  return false;
}

PartFile::~PartFile() {
  give_up();
}

#ifdef _WIN32

// Others may delete it, as the handler of an event does, but not open it for that by themselves.
bool PartFile::begin_as(const std::wstring& path) {
  path_ = path;
  mark_ = UnfinishedFile(path);
  const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_DELETE, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    const u32 code = ::GetLastError();
    path_.clear();
    mark_.end();
    return detail::fail_with(code == ERROR_FILE_EXISTS ? 0 : code);
  }
  stream_ = ::_fdopen(::_open_osfhandle(reinterpret_cast<std::intptr_t>(file), _O_WRONLY), "wb");
  return stream_ != nullptr;
}

bool PartFile::write_bytes(const void* bytes, std::size_t count) {
  errno = 0;
  return std::fwrite(bytes, 1, count, stream_) == count || detail::fail_with(static_cast<u32>(errno));
}

bool PartFile::finish() {
  const bool good = std::fflush(stream_) == 0 && std::ferror(stream_) == 0;
  return std::fclose(std::exchange(stream_, nullptr)) == 0 && good;
}

bool PartFile::take_place() {
  if (!detail::may_go_on(Operation::kRename)) return false;
  if (::MoveFileExW(path_.c_str(), target_.c_str(), MOVEFILE_REPLACE_EXISTING) == 0) return failed();
  path_.clear();
  mark_.end();
  return true;
}

void PartFile::give_up() {
  if (stream_ != nullptr) std::fclose(std::exchange(stream_, nullptr));
  if (!path_.empty()) ::DeleteFileW(path_.c_str());
  path_.clear();
  mark_.end();
}

#else

bool PartFile::begin_as(const std::wstring& path) {
  path_bytes_ = host_bytes_from_path(path);
  const std::string& bytes = path_bytes_;
  path_ = path;
  mark_ = UnfinishedFile(path);
  int descriptor;
  do {
    descriptor = ::open(bytes.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0) {
    const u32 code = static_cast<u32>(errno);
    path_.clear();
    mark_.end();
    return detail::fail_with(code == EEXIST ? 0 : code);
  }
  // Whoever looks for dead parts may have come between.
  const bool has_rival = lock(descriptor) == Lock::kHeldByAnother;
  if (has_rival || !is_still_named(descriptor, bytes, S_IFREG)) {
    ::close(descriptor);
    give_up();
    return detail::fail_with(0);
  }
  // The lock belongs to both, and outlives the stream.
  life_ = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
  stream_ = ::fdopen(descriptor, "wb");
  if (life_ >= 0 && stream_ != nullptr) return true;
  failed();
  if (stream_ == nullptr) ::close(descriptor);
  give_up();
  return false;
}

// A stream would take an interrupted write for an error.
bool PartFile::write_bytes(const void* bytes, std::size_t count) {
  const char* at = static_cast<const char*>(bytes);
  while (count > 0) {
    const ssize_t put = ::write(::fileno(stream_), at, count);
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) return failed();
    at += put;
    count -= static_cast<std::size_t>(put);
  }
  return true;
}

bool PartFile::finish() {
  errno = 0;
  const bool flushed = std::fflush(stream_) == 0 && std::ferror(stream_) == 0;
  const int code = errno;
  if (std::fclose(std::exchange(stream_, nullptr)) != 0) return failed();
  return flushed || detail::fail_with(static_cast<u32>(code));
}

bool PartFile::take_place() {
  if (!detail::may_go_on(Operation::kRename)) return false;
  const std::string target = host_bytes_from_path(target_);
  struct stat present;
  if (::stat(target.c_str(), &present) == 0) {
    const int descriptor = static_cast<int>(life_);
    // Only the superuser can give a file away; others keep its group, where it is one of theirs. A file system that
    // knows no such things has nothing to keep.
    bool kept = ::fchown(descriptor, present.st_uid, present.st_gid) == 0;
    kept = kept || ::fchown(descriptor, static_cast<uid_t>(-1), present.st_gid) == 0;
    kept = ::fchmod(descriptor, present.st_mode & (kept ? 07777U : 0777U)) == 0;
    static_cast<void>(kept);
  }
  if (std::rename(path_bytes_.c_str(), target.c_str()) != 0) return failed();
  path_.clear();
  give_up();
  return true;
}

void PartFile::give_up() {
  if (stream_ != nullptr) std::fclose(std::exchange(stream_, nullptr));
  if (!path_.empty()) ::unlink(path_bytes_.c_str());
  path_.clear();
  mark_.end();
  if (life_ >= 0) ::close(static_cast<int>(std::exchange(life_, -1)));
}

#endif

}  // namespace traguardo::platform
