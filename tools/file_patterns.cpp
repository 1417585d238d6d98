// SPDX-License-Identifier: MIT
#include "file_patterns.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "paths.h"
#include "wildcard.h"

namespace traguardo::tool {

namespace fs = std::filesystem;

namespace {

// What fits one part of a path, in each of the folders found so far. Hidden names are not meant by an open place.
std::vector<fs::path> inside(const std::vector<fs::path>& folders, const std::string& part) {
  std::vector<fs::path> found;
  std::error_code problem;
  for (const fs::path& folder : folders) {
    if (!has_wildcard(part)) {
      if (fs::exists(folder / path_of(part), problem)) found.push_back(folder / path_of(part));
      continue;
    }
    for (fs::directory_iterator entry(folder.empty() ? "." : folder, problem), end; !problem && entry != end;
         entry.increment(problem)) {
      const std::string name = bytes_of(entry->path().filename());
      if (fits(part, name) && (part.front() == '.' || name.front() != '.')) found.push_back(folder / path_of(name));
    }
  }
  return found;
}

}  // namespace

std::vector<std::string> opened_patterns(const std::vector<std::string>& arguments) {
  std::vector<std::string> files;
  std::error_code problem;
  for (const std::string& argument : arguments) {
    std::vector<fs::path> found;
    if (has_wildcard(argument) && !fs::exists(path_of(argument), problem)) {
      const fs::path pattern = path_of(argument);
      found.push_back(pattern.root_path());
      for (const fs::path& part : pattern.relative_path()) found = inside(found, bytes_of(part));
    }
    if (found.empty()) files.push_back(argument);
    std::sort(found.begin(), found.end());
    for (const fs::path& file : found) files.push_back(bytes_of(file));
  }
  return files;
}

}  // namespace traguardo::tool
