// SPDX-License-Identifier: MIT
#include "support/platform/process.h"

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>
#endif

#include <cstdlib>

#include "support/platform/platform.h"

namespace traguardo::platform {

std::string environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

#ifdef _WIN32

// A file gets no number of a stream that is missing here.
void occupy_standard_streams() {}

bool is_terminal(std::FILE* stream) {
  return ::_isatty(::_fileno(stream)) != 0;
}

bool show_colours(std::FILE* stream) {
  const HANDLE console = reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stream)));
  DWORD mode = 0;
  return ::GetConsoleMode(console, &mode) != 0 &&
         ::SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

void set_environment_if_unset(const char* name, const std::string& value) {
  if (environment(name).empty()) ::_putenv_s(name, value.c_str());
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

#else

void occupy_standard_streams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // The lowest free number is taken, which is the missing one. Nothing can be written to it.
    if (::fcntl(stream, F_GETFD) < 0 && ::open("/dev/null", O_RDONLY) < 0) return;
  }
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

#endif

}  // namespace traguardo::platform
