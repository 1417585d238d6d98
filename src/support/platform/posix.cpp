// SPDX-License-Identifier: MIT
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <utility>

#include "support/platform/detail.h"
#include "support/platform/unfinished_files.h"

namespace traguardo::platform {

namespace {

bool failed() {
  return detail::fail_with(static_cast<u32>(errno));
}

bool is_folder(const std::string& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

int open_descriptor(const std::string& path, int flags, mode_t mode) {
  int descriptor;
  do {
    descriptor = ::open(path.c_str(), flags, mode);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

}  // namespace

const u32 detail::kDiskFull = ENOSPC;
const u32 detail::kIoError = EIO;

std::wstring path_from_host_bytes(std::string_view bytes) {
  return widen_bytes(bytes);
}

std::string host_bytes_from_path(std::wstring_view path) {
  return narrow_low_bytes(path);
}

std::wstring path_in_folder(std::wstring_view folder, std::wstring_view name) {
  if (name.starts_with(L'\\') || name.starts_with(L'/')) name.remove_prefix(1);
  std::wstring path(folder);
  if (!path.empty() && path.back() != L'/') path.push_back(L'/');
  return path.append(name);
}

std::wstring absolute_path(const std::wstring& path) {
  if (path.empty() || path.front() == L'/') return path;
  std::string folder(256, '\0');
  while (::getcwd(folder.data(), folder.size()) == nullptr) {
    if (errno != ERANGE) return path;
    folder.resize(folder.size() * 2);
  }
  // Joined as it is: a backslash in front is a character of the name.
  return widen_bytes(folder.c_str()).append(L"/").append(path);
}

std::wstring executable_path() {
  std::string buffer(128, '\0');
  for (;;) {
    const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length < 0) return {};
    if (static_cast<std::size_t>(length) < buffer.size()) {
      return widen_bytes(std::string_view(buffer).substr(0, static_cast<std::size_t>(length)));
    }
    buffer.resize(buffer.size() * 2);
  }
}

bool is_separator(wchar_t c) {
  return c == L'/';
}

std::wstring path_from_environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::wstring() : widen_bytes(value);
}

File File::open(const std::wstring& path, Access access, Share, Creation creation) {
  // Sharing between readers and writers is no concept of this system. Opening a pipe must not wait for its other end.
  int flags = O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (access == Access::kRead ? O_RDONLY : O_RDWR);
  if (creation == Creation::kOpenOrCreate) flags |= O_CREAT;
  if (creation == Creation::kCreateOrTruncate) flags |= O_CREAT | O_TRUNC;
  if (creation == Creation::kMustBeNew) flags |= O_CREAT | O_EXCL;
  File file;
  if (!detail::may_go_on(Operation::kOpen)) return file;
  const int descriptor = open_descriptor(host_bytes_from_path(path), flags, 0666);
  if (descriptor < 0) {
    failed();
    return file;
  }
  // A pipe or a device has no samples, and reading it could wait for ever; a folder opens for reading and fails later.
  struct stat info;
  if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
    detail::fail_with(EINVAL);
    ::close(descriptor);
    return file;
  }
  file.handle_ = descriptor;
  return file;
}

File File::create_unnamed(const std::wstring& folder) {
  File file;
  if (!detail::may_go_on(Operation::kOpen)) return file;
  const std::string where = folder.empty() ? "." : host_bytes_from_path(folder);
  int descriptor = open_descriptor(where, O_TMPFILE | O_EXCL | O_RDWR | O_CLOEXEC, 0600);
  // Some file systems have no files without a name: one that nobody has is taken and given up at once.
  constexpr int kTries = 16;
  for (int i = 0; descriptor < 0 && i < kTries && errno != ENOENT && errno != EACCES && errno != EROFS; ++i) {
    const std::wstring path = path_in_folder(widen_bytes(where), L"." + widen_bytes(unique_token()) + L".tmp");
    const UnfinishedFile mark(path);
    descriptor = open_descriptor(host_bytes_from_path(path), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0600);
    const int code = errno;
    if (descriptor >= 0) ::unlink(host_bytes_from_path(path).c_str());
    errno = code;
  }
  if (descriptor < 0) failed();
  file.handle_ = descriptor < 0 ? kNone : descriptor;
  return file;
}

bool File::size(u64* bytes) const {
  if (!detail::may_go_on(Operation::kSize)) return false;
  struct stat info;
  if (::fstat(static_cast<int>(handle_), &info) != 0) return failed();
  *bytes = static_cast<u64>(info.st_size);
  return true;
}

bool File::resize(u64 bytes) {
  if (!detail::may_go_on(Operation::kResize)) return false;
  int result;
  do {
    result = ::ftruncate(static_cast<int>(handle_), static_cast<off_t>(bytes));
  } while (result != 0 && errno == EINTR);
  return result == 0 || failed();
}

std::size_t File::read_bytes(u64 offset, void* out, std::size_t count) const {
  std::size_t done = 0;
  while (done < count) {
    const ssize_t got = ::pread(static_cast<int>(handle_), static_cast<char*>(out) + done, count - done,
                                static_cast<off_t>(offset + done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) failed();
    if (got <= 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

bool File::write_bytes(u64 offset, const void* bytes, std::size_t count) {
  std::size_t done = 0;
  while (done < count) {
    const ssize_t put = ::pwrite(static_cast<int>(handle_), static_cast<const char*>(bytes) + done, count - done,
                                 static_cast<off_t>(offset + done));
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) return failed();
    if (put == 0) return detail::fail_with(detail::kDiskFull);
    done += static_cast<std::size_t>(put);
  }
  return true;
}

bool File::close() {
  if (handle_ == kNone) return true;
  // An interrupted close has closed.
  return ::close(static_cast<int>(std::exchange(handle_, kNone))) == 0 || errno == EINTR || failed();
}

bool file_exists(const std::wstring& path) {
  struct stat info;
  return ::stat(host_bytes_from_path(path).c_str(), &info) == 0;
}

bool is_same_file(const std::wstring& a, const std::wstring& b) {
  struct stat one;
  struct stat other;
  return ::stat(host_bytes_from_path(a).c_str(), &one) == 0 && ::stat(host_bytes_from_path(b).c_str(), &other) == 0 &&
         one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

bool delete_file(const std::wstring& path) {
  if (!detail::may_go_on(Operation::kDelete)) return false;
  return ::unlink(host_bytes_from_path(path).c_str()) == 0 || failed();
}

bool rename_file(const std::wstring& from, const std::wstring& to) {
  if (!detail::may_go_on(Operation::kRename)) return false;
  return std::rename(host_bytes_from_path(from).c_str(), host_bytes_from_path(to).c_str()) == 0 || failed();
}

bool create_folders(const std::wstring& folder) {
  const std::string path = host_bytes_from_path(folder);
  for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
    const std::string part = path.substr(0, slash);
    if (!part.empty() && !is_folder(part) && ::mkdir(part.c_str(), 0777) != 0 && errno != EEXIST) return failed();
    if (slash == std::string::npos) break;
  }
  return is_folder(path);
}

std::vector<std::wstring> list_files(const std::wstring& folder, std::wstring_view suffix) {
  std::vector<std::wstring> names;
  const std::string path = host_bytes_from_path(folder);
  struct Closer {
    void operator()(DIR* open) const { ::closedir(open); }
  };
  const int descriptor = open_descriptor(path.empty() ? "." : path, O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
  const std::unique_ptr<DIR, Closer> stream(descriptor < 0 ? nullptr : ::fdopendir(descriptor));
  if (stream == nullptr && descriptor >= 0) ::close(descriptor);
  if (stream == nullptr) {
    failed();
    return names;
  }
  while (const dirent* entry = ::readdir(stream.get())) {
    const std::string name = entry->d_name;
    const std::wstring wide = widen_bytes(name);
    if (name == "." || name == ".." || !detail::ends_with_ignoring_case(wide, suffix)) continue;
    if (is_folder(std::string(path).append("/").append(name))) continue;
    names.push_back(wide);
  }
  return names;
}

std::string detail::with_line_ends(std::string_view text) {
  return std::string(text);
}

bool local_time(std::time_t when, std::tm* out) {
  return ::localtime_r(&when, out) != nullptr;
}

std::string unique_token() {
  static std::atomic<unsigned> counter{0};
  return std::to_string(::getpid()) + "-" + std::to_string(++counter);
}

void* heap_allocate(HeapHandle, std::size_t bytes) noexcept {
  return std::malloc(bytes == 0 ? 1 : bytes);
}

void heap_free(HeapHandle, void* block) noexcept {
  std::free(block);
}

}  // namespace traguardo::platform
