// SPDX-License-Identifier: MIT
#include "same_file.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "paths.h"
#include "support/platform/platform.h"
#include "support/platform/process.h"

namespace traguardo::tool {

namespace fs = std::filesystem;

namespace {

bool is_same_letter(char a, char b) {
  // Where folders are parted so, names know no case.
  constexpr bool kIgnoresCase = fs::path::preferred_separator == '\\';
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return a == b || (kIgnoresCase && lower(a) == lower(b));
}

bool is_same_present(const std::string& a, const std::string& b) {
  return platform::is_same_file(platform::path_from_host_bytes(a), platform::path_from_host_bytes(b));
}

fs::path folder_of(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

}  // namespace

std::string behind_links(const std::string& path) {
  constexpr int kMostLinks = 40;  // as many as the system follows
  fs::path place = path_of(path);
  std::error_code problem;
  for (int i = 0; i < kMostLinks && fs::is_symlink(fs::symlink_status(place, problem)); ++i) {
    const fs::path next = fs::read_symlink(place, problem);
    if (problem) break;
    place = next.is_absolute() ? next : place.parent_path() / next;
  }
  return bytes_of(place);
}

bool are_same_file(const std::string& a, const std::string& b) {
  if (a == "-" || b == "-") {
    return a != b && platform::is_stream_of_file(stdout, platform::path_from_host_bytes(a == "-" ? b : a));
  }
  if (is_same_present(a, b)) return true;
  std::error_code problem;
  // Only files can take each other's place: two that exist are compared already.
  const fs::path one = path_of(behind_links(a));
  const fs::path other = path_of(behind_links(b));
  if (fs::exists(one, problem) || fs::exists(other, problem)) return false;
  const std::string one_name = bytes_of(one.filename());
  const std::string other_name = bytes_of(other.filename());
  return std::equal(one_name.begin(), one_name.end(), other_name.begin(), other_name.end(), is_same_letter) &&
         is_same_present(bytes_of(folder_of(one)), bytes_of(folder_of(other)));
}

}  // namespace traguardo::tool
