// SPDX-License-Identifier: MIT
#include "support/platform/process.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
// Behind the header that it needs.
#include <shellapi.h>
#else
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <string_view>

#include "support/platform/detail.h"
#include "support/platform/platform.h"

namespace traguardo::platform {

std::string environment(const char* name) {
  return host_bytes_from_path(path_from_environment(name));
}

#ifdef _WIN32

// A file gets no number of a stream that is missing here.
void occupy_standard_streams() {}

namespace {

HANDLE handle_of(std::FILE* stream) {
  return reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stream)));
}

UINT g_code_page = 0;  // what the console had before

}  // namespace

std::vector<std::string> command_line(int count, char** words) {
  std::vector<std::string> line(words, words + count);
  int wide_count = 0;
  wchar_t** const wide = ::CommandLineToArgvW(::GetCommandLineW(), &wide_count);
  if (wide == nullptr) return line;
  line.clear();
  for (int i = 0; i < wide_count; ++i) line.push_back(host_bytes_from_path(wide[i]));
  ::LocalFree(wide);
  return line;
}

void write_utf8() {
  for (std::FILE* const stream : {stdout, stderr}) ::_setmode(::_fileno(stream), _O_BINARY);
  g_code_page = ::GetConsoleOutputCP();
  if (g_code_page == 0 || g_code_page == CP_UTF8 || ::SetConsoleOutputCP(CP_UTF8) == 0) return;
  std::atexit([] { ::SetConsoleOutputCP(g_code_page); });
}

std::FILE* open_stream(const std::string& path, const char* mode) {
  return ::_wfopen(path_from_host_bytes(path).c_str(), widen_bytes(mode).c_str());
}

bool is_stream_of_file(std::FILE* stream, const std::wstring& path) {
  BY_HANDLE_FILE_INFORMATION mine;
  if (::GetFileType(handle_of(stream)) != FILE_TYPE_DISK) return false;
  if (::GetFileInformationByHandle(handle_of(stream), &mine) == 0) return false;
  const HANDLE file = ::CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  BY_HANDLE_FILE_INFORMATION other;
  const bool is_known = ::GetFileInformationByHandle(file, &other) != 0;
  ::CloseHandle(file);
  return is_known && mine.dwVolumeSerialNumber == other.dwVolumeSerialNumber &&
         mine.nFileIndexHigh == other.nFileIndexHigh && mine.nFileIndexLow == other.nFileIndexLow;
}

// The null device is one that the C library takes for a terminal.
bool is_terminal(std::FILE* stream) {
  DWORD mode = 0;
  return ::GetConsoleMode(handle_of(stream), &mode) != 0;
}

bool show_colours(std::FILE* stream) {
  DWORD mode = 0;
  return ::GetConsoleMode(handle_of(stream), &mode) != 0 &&
         ::SetConsoleMode(handle_of(stream), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

void set_environment_if_unset(const char* name, const std::string& value) {
  if (environment(name).empty()) ::_wputenv_s(widen_bytes(name).c_str(), path_from_host_bytes(value).c_str());
}

std::wstring user_configuration_folder() {
  const wchar_t* const folder = ::_wgetenv(L"APPDATA");
  return folder == nullptr ? L"NUL" : folder;
}

// Permissions don't tell here: a file that goes as soon as it is closed does.
bool can_make_files_in(const std::wstring& folder) {
  const std::wstring path = path_in_folder(folder, path_from_host_bytes(unique_token()) + L".traguardo");
  const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  return file != INVALID_HANDLE_VALUE && ::CloseHandle(file) != 0;
}

bool can_write_to(const std::wstring& path) {
  constexpr int kWrite = 2;
  return ::_waccess(path.c_str(), kWrite) == 0 || detail::fail_with(ERROR_ACCESS_DENIED);
}

int stream_number_of(const std::string&) {
  return -1;
}

std::FILE* open_numbered_stream(int) {
  return nullptr;
}

#else

void occupy_standard_streams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // The lowest free number is taken, which is the missing one. Nothing can be written to it.
    if (::fcntl(stream, F_GETFD) < 0 && ::open("/dev/null", O_RDONLY) < 0) return;
  }
}

std::vector<std::string> command_line(int count, char** words) {
  return {words, words + count};
}

void write_utf8() {}

std::FILE* open_stream(const std::string& path, const char* mode) {
  return std::fopen(path.c_str(), mode);
}

bool is_stream_of_file(std::FILE* stream, const std::wstring& path) {
  struct stat mine;
  struct stat other;
  return ::fstat(::fileno(stream), &mine) == 0 && S_ISREG(mine.st_mode) &&
         ::stat(host_bytes_from_path(path).c_str(), &other) == 0 && mine.st_dev == other.st_dev &&
         mine.st_ino == other.st_ino;
}

bool is_terminal(std::FILE* stream) {
  return ::isatty(::fileno(stream)) != 0;
}

bool show_colours(std::FILE* stream) {
  return is_terminal(stream);
}

void set_environment_if_unset(const char* name, const std::string& value) {
  if (environment(name).empty()) ::setenv(name, value.c_str(), 1);
}

std::wstring user_configuration_folder() {
  const std::string chosen = environment("XDG_CONFIG_HOME");
  // A relative path is none, by the rule for these folders.
  if (chosen.starts_with('/')) return path_from_host_bytes(chosen);
  std::string home = environment("HOME");
  if (home.empty()) {
    const passwd* const user = ::getpwuid(::getuid());
    if (user != nullptr && user->pw_dir != nullptr) home = user->pw_dir;
  }
  if (::access(home.c_str(), X_OK) != 0) return L"/dev/null";
  return path_in_folder(path_from_host_bytes(home), L".config");
}

bool can_make_files_in(const std::wstring& folder) {
  return ::access(folder.empty() ? "." : host_bytes_from_path(folder).c_str(), W_OK | X_OK) == 0;
}

bool can_write_to(const std::wstring& path) {
  return ::access(host_bytes_from_path(path).c_str(), W_OK) == 0 || detail::fail_with(static_cast<u32>(errno));
}

int stream_number_of(const std::string& path) {
  constexpr const char* kNames[] = {"/dev/stdin", "/dev/stdout", "/dev/stderr"};
  for (int number = 0; number < 3; ++number) {
    if (path == kNames[number]) return number;
  }
  for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"}) {
    if (!path.starts_with(folder)) continue;
    int number = -1;
    const char* const end = path.data() + path.size();
    const auto result = std::from_chars(path.data() + folder.size(), end, number);
    if (result.ec == std::errc{} && result.ptr == end) return number;
  }
  return -1;
}

std::FILE* open_numbered_stream(int number) {
  const int descriptor = ::fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  return descriptor < 0 ? nullptr : ::fdopen(descriptor, "wb");
}

#endif

}  // namespace traguardo::platform
