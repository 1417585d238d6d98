// SPDX-License-Identifier: MIT
#include "support/exe_path.h"

#include <new>
#include <utility>

#include "support/event_log.h"
#include "support/host_folders.h"
#include "support/platform/platform.h"

namespace traguardo {

using platform::is_separator;

namespace {

// First each "\.\" loses its ".\", then each "\..\" goes together with the path element before it.
std::wstring normalised(std::wstring path) {
  for (std::size_t i = 0; i + 2 < path.size();) {
    if (is_separator(path[i]) && path[i + 1] == L'.' && is_separator(path[i + 2])) {
      path.erase(i + 1, 2);
    } else {
      ++i;
    }
  }
  for (std::size_t i = 0; i + 3 < path.size();) {
    if (is_separator(path[i]) && path[i + 1] == L'.' && path[i + 2] == L'.' && is_separator(path[i + 3])) {
      std::size_t from = i;
      while (from > 0 && !is_separator(path[--from])) {
      }
      path.erase(from, i + 3 - from);
      i = from;
    } else {
      ++i;
    }
  }
  return path;
}

void lower(std::wstring* text) {
  for (wchar_t& c : *text) {
    if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c - L'A' + L'a');
  }
}

}  // namespace

namespace {

// Where TRAGUARDO_HOME names a folder, that one stands for the executable's own.
std::wstring executable_at_home() {
  std::wstring executable = platform::executable_path();
  const std::wstring home = home_folder();
  if (home.empty()) return executable;
  // The name joined as it is, whatever it begins with.
  return platform::path_in_folder(home, L"").append(executable, platform::folder_of(executable).size());
}

}  // namespace

CExePathName::CExePathName(bool lower_case) : CExePathName(executable_at_home(), lower_case) {}

CExePathName::CExePathName(std::wstring path, bool lower_case) {
  if (lower_case) lower(&path);
  zepGetDir(std::move(path));
}

void CExePathName::zepGetDir(std::wstring path) {
  if (path.empty()) {
    TRAGUARDO_LOG("CExePathName::zepGetDir", "%s [%d] ERROR = Unavailable current path directory\n");
    return;
  }
  path_w_ = normalised(std::move(path));
  for (wchar_t& c : path_w_) {
    if (is_separator(c)) c = L'/';
  }
  const std::size_t slash = path_w_.rfind(L'/');
  name_w_ = slash == std::wstring::npos ? path_w_ : path_w_.substr(slash + 1);
  if (slash != std::wstring::npos) {
    folder_slash_w_ = path_w_.substr(0, slash + 1);
    folder_w_ = path_w_.substr(0, slash);
  }
  path_a_ = platform::host_bytes_from_path(path_w_);
  name_a_ = platform::host_bytes_from_path(name_w_);
  folder_a_ = platform::host_bytes_from_path(folder_w_);
  folder_slash_a_ = platform::host_bytes_from_path(folder_slash_w_);
}

std::unique_ptr<IExePathName> CreaExePathName(bool lower_case) {
  return std::unique_ptr<IExePathName>(new (std::nothrow) CExePathName(lower_case));
}

}  // namespace traguardo
