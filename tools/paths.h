// SPDX-License-Identifier: MIT
// Paths between the host's bytes, which the tool has in its strings, and the standard library, which takes bytes for
// something else where paths are wide.
#pragma once

#include <filesystem>
#include <string>
#include <type_traits>

#include "support/platform/platform.h"

namespace traguardo::tool {

inline constexpr bool kPathsAreBytes = std::is_same_v<std::filesystem::path::value_type, char>;

inline std::filesystem::path path_of(const std::string& bytes) {
  if constexpr (kPathsAreBytes) {
    return bytes;
  } else {
    return platform::path_from_host_bytes(bytes);
  }
}

inline std::string bytes_of(const std::filesystem::path& path) {
  if constexpr (kPathsAreBytes) {
    return path.string();
  } else {
    return platform::host_bytes_from_path(path.wstring());
  }
}

}  // namespace traguardo::tool
