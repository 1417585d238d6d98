// The logger file that a compressed one holds: one zlib stream from the first byte on.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "support/platform/unfinished_files.h"

namespace traguardo::tool {

enum class Expanded {
  whole,
  damaged,  // or cut short; what came in front of that was handed over
  unreadable,
};

// Hands over what the stream yields, piece by piece. Throws std::bad_alloc.
Expanded expand(const std::string& path, const std::function<void(std::string_view piece)>& take);

// Writes what the stream yields, damaged or not, to a file. Throws Failure if it can't be written.
void expand_to_file(const std::string& path, const std::string& target);

// The name of a file in the system's folder for temporary ones, gone with this object or with the process.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& ending);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  const std::string& path() const { return path_; }

 private:
  std::string path_;
  platform::UnfinishedFile mark_;
};

}  // namespace traguardo::tool
