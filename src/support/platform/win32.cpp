// SPDX-License-Identifier: MIT
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <utility>

#include "support/platform/detail.h"

namespace traguardo::platform {

namespace {

bool failed() {
  return detail::fail_with(GetLastError());
}

HANDLE as_handle(std::intptr_t handle) {
  return reinterpret_cast<HANDLE>(handle);
}

std::wstring decoded(std::string_view bytes, UINT code_page, DWORD flags) {
  if (bytes.empty()) return {};
  const int length = MultiByteToWideChar(code_page, flags, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
  if (length <= 0) return {};
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(code_page, flags, bytes.data(), static_cast<int>(bytes.size()), wide.data(), length);
  return wide;
}

bool is_folder(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// False where nothing has that name.
bool identify(const std::wstring& path, BY_HANDLE_FILE_INFORMATION* identity) {
  constexpr DWORD kEverybody = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  // Folders open with that flag only.
  const HANDLE file =
      CreateFileW(path.c_str(), 0, kEverybody, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  const bool good = GetFileInformationByHandle(file, identity) != 0;
  CloseHandle(file);
  return good;
}

OVERLAPPED position(u64 offset) {
  OVERLAPPED at{};
  at.Offset = static_cast<DWORD>(offset & 0xFFFFFFFF);
  at.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return at;
}

}  // namespace

const u32 detail::kDiskFull = ERROR_DISK_FULL;
const u32 detail::kIoError = ERROR_READ_FAULT;

bool is_separator(wchar_t c) {
  return c == L'\\' || c == L'/';
}

std::wstring path_from_environment(const char* name) {
  const std::wstring wide = widen_bytes(name);
  std::wstring value(GetEnvironmentVariableW(wide.c_str(), nullptr, 0), L'\0');
  if (!value.empty())
    value.resize(GetEnvironmentVariableW(wide.c_str(), value.data(), static_cast<DWORD>(value.size())));
  return value;
}

std::wstring path_from_host_bytes(std::string_view bytes) {
  const std::wstring utf8 = decoded(bytes, CP_UTF8, MB_ERR_INVALID_CHARS);
  return utf8.empty() ? decoded(bytes, CP_ACP, 0) : utf8;
}

std::string host_bytes_from_path(std::wstring_view path) {
  if (path.empty()) return {};
  const int length =
      WideCharToMultiByte(CP_UTF8, 0, path.data(), static_cast<int>(path.size()), nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(std::max(length, 0)), '\0');
  WideCharToMultiByte(CP_UTF8, 0, path.data(), static_cast<int>(path.size()), bytes.data(), length, nullptr, nullptr);
  return bytes;
}

std::wstring path_in_folder(std::wstring_view folder, std::wstring_view name) {
  while (!name.empty() && is_separator(name.front())) name.remove_prefix(1);
  std::wstring path(folder);
  if (!path.empty() && !is_separator(path.back())) path.push_back(L'\\');
  return path.append(name);
}

std::wstring absolute_path(const std::wstring& path) {
  const DWORD length = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  if (path.empty() || length == 0) return path;
  std::wstring whole(length, L'\0');
  whole.resize(GetFullPathNameW(path.c_str(), length, whole.data(), nullptr));
  return whole.empty() ? path : whole;
}

std::wstring executable_path() {
  std::wstring buffer(128, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length == 0) return {};
    if (length < buffer.size()) {
      buffer.resize(length);
      return buffer;
    }
    buffer.resize(buffer.size() * 2);
  }
}

File File::open(const std::wstring& path, Access access, Share share, Creation creation) {
  const DWORD wanted = access == Access::kRead ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
  // Readers let others delete, so that a session can be moved away while a host looks at it.
  DWORD shared = FILE_SHARE_READ | FILE_SHARE_DELETE;
  if (share == Share::kReadWrite) shared |= FILE_SHARE_WRITE;
  DWORD how = OPEN_EXISTING;
  if (creation == Creation::kOpenOrCreate) how = OPEN_ALWAYS;
  if (creation == Creation::kCreateOrTruncate) how = CREATE_ALWAYS;
  if (creation == Creation::kMustBeNew) how = CREATE_NEW;
  File file;
  if (!detail::may_go_on(Operation::kOpen)) return file;
  const HANDLE handle = CreateFileW(path.c_str(), wanted, shared, nullptr, how, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    failed();
    return file;
  }
  // A pipe or a device has no samples, and reading it could wait for ever.
  if (GetFileType(handle) != FILE_TYPE_DISK) {
    detail::fail_with(ERROR_INVALID_FUNCTION);
    CloseHandle(handle);
    return file;
  }
  file.handle_ = reinterpret_cast<std::intptr_t>(handle);
  return file;
}

File File::create_unnamed(const std::wstring& folder) {
  File file;
  if (!detail::may_go_on(Operation::kOpen)) return file;
  const std::wstring where = folder.empty() ? L"." : folder;
  constexpr int kTries = 16;
  for (int i = 0; i < kTries && !file; ++i) {
    const std::wstring path = path_in_folder(where, widen_bytes(unique_token()) + L".tmp");
    const HANDLE handle = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_DELETE, nullptr,
                                      CREATE_NEW, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (handle != INVALID_HANDLE_VALUE) {
      file.handle_ = reinterpret_cast<std::intptr_t>(handle);
    } else if (failed() || (last_error() != ERROR_FILE_EXISTS && last_error() != ERROR_ALREADY_EXISTS)) {
      break;
    }
  }
  return file;
}

bool File::size(u64* bytes) const {
  if (!detail::may_go_on(Operation::kSize)) return false;
  LARGE_INTEGER length;
  if (!GetFileSizeEx(as_handle(handle_), &length)) return failed();
  *bytes = static_cast<u64>(length.QuadPart);
  return true;
}

bool File::resize(u64 bytes) {
  if (!detail::may_go_on(Operation::kResize)) return false;
  LARGE_INTEGER where;
  where.QuadPart = static_cast<LONGLONG>(bytes);
  if (!SetFilePointerEx(as_handle(handle_), where, nullptr, FILE_BEGIN)) return failed();
  return SetEndOfFile(as_handle(handle_)) || failed();
}

std::size_t File::read_bytes(u64 offset, void* out, std::size_t count) const {
  std::size_t done = 0;
  while (done < count) {
    OVERLAPPED at = position(offset + done);
    const DWORD piece = static_cast<DWORD>(std::min<std::size_t>(count - done, 1U << 30));
    DWORD got = 0;
    if (!ReadFile(as_handle(handle_), static_cast<char*>(out) + done, piece, &got, &at)) {
      failed();
      break;
    }
    if (got == 0) break;
    done += got;
  }
  return done;
}

bool File::write_bytes(u64 offset, const void* bytes, std::size_t count) {
  std::size_t done = 0;
  while (done < count) {
    OVERLAPPED at = position(offset + done);
    const DWORD piece = static_cast<DWORD>(std::min<std::size_t>(count - done, 1U << 30));
    DWORD put = 0;
    if (!WriteFile(as_handle(handle_), static_cast<const char*>(bytes) + done, piece, &put, &at)) return failed();
    if (put == 0) return detail::fail_with(detail::kDiskFull);
    done += put;
  }
  return true;
}

bool File::close() {
  if (handle_ == kNone) return true;
  return CloseHandle(as_handle(std::exchange(handle_, kNone))) || failed();
}

bool file_exists(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool is_same_file(const std::wstring& a, const std::wstring& b) {
  BY_HANDLE_FILE_INFORMATION one;
  BY_HANDLE_FILE_INFORMATION other;
  return identify(a, &one) && identify(b, &other) && one.dwVolumeSerialNumber == other.dwVolumeSerialNumber &&
         one.nFileIndexHigh == other.nFileIndexHigh && one.nFileIndexLow == other.nFileIndexLow;
}

bool delete_file(const std::wstring& path) {
  if (!detail::may_go_on(Operation::kDelete)) return false;
  return DeleteFileW(path.c_str()) || failed();
}

bool rename_file(const std::wstring& from, const std::wstring& to) {
  if (!detail::may_go_on(Operation::kRename)) return false;
  return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) || failed();
}

bool create_folders(const std::wstring& folder) {
  for (std::size_t i = 1; i <= folder.size(); ++i) {
    if (i < folder.size() && !is_separator(folder[i])) continue;
    const std::wstring part = folder.substr(0, i);
    if (part.back() == L':' || is_separator(part.back()) || is_folder(part)) continue;
    // A server or a volume can't be made and need not be: whether the whole folder exists decides.
    if (!CreateDirectoryW(part.c_str(), nullptr)) failed();
  }
  std::wstring whole = folder;
  while (whole.size() > 1 && is_separator(whole.back())) whole.pop_back();
  return is_folder(whole);
}

std::vector<std::wstring> list_files(const std::wstring& folder, std::wstring_view suffix) {
  std::vector<std::wstring> names;
  WIN32_FIND_DATAW entry;
  const HANDLE search = FindFirstFileW(path_in_folder(folder, L"*").c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) {
    failed();
    return names;
  }
  do {
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) continue;
    if (detail::ends_with_ignoring_case(entry.cFileName, suffix)) names.emplace_back(entry.cFileName);
  } while (FindNextFileW(search, &entry));
  FindClose(search);
  return names;
}

std::string detail::with_line_ends(std::string_view text) {
  std::string lines;
  lines.reserve(text.size() + 8);
  for (const char c : text) {
    if (c == '\n') lines.push_back('\r');
    lines.push_back(c);
  }
  return lines;
}

bool local_time(std::time_t when, std::tm* out) {
  return ::localtime_s(out, &when) == 0;
}

std::string unique_token() {
  static std::atomic<unsigned> counter{0};
  return std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++counter);
}

void* heap_allocate(HeapHandle heap, std::size_t bytes) noexcept {
  return HeapAlloc(heap == nullptr ? GetProcessHeap() : heap, 0, bytes);
}

void heap_free(HeapHandle heap, void* block) noexcept {
  if (block != nullptr) HeapFree(heap == nullptr ? GetProcessHeap() : heap, 0, block);
}

}  // namespace traguardo::platform
