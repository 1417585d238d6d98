// SPDX-License-Identifier: MIT
// A file that appears under its name only when it is whole: it is written beside its place and renamed at the end.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <system_error>

#include "support/platform/unfinished_files.h"

namespace traguardo::tool {

class OutputFile {
 public:
  // "-" is standard output. Devices, pipes and what the process has open already are written to directly. What a
  // symbolic link points to is replaced, not the link. Throws Failure.
  explicit OutputFile(std::string path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  // Without keep() before, nothing stays behind.
  ~OutputFile();

  // Throws Failure when the bytes can't be written, as on a full disk. A terminal gets control characters, but for line
  // feeds, in a form that shows them.
  void write(const void* bytes, std::size_t count);
  void write(std::string_view text) { write(text.data(), text.size()); }
  // The same for a text that shows its controls already, and whose colours stay.
  void write_shown(std::string_view text) { put(text.data(), text.size()); }
  // A text that takes one place in a line, as this output should get it: with all its controls shown on a terminal.
  std::string in_place(std::string_view text) const;
  // Everything is on the disk; only the name is missing. Throws Failure.
  void finish();
  // Everything is written: the file takes its name. Throws Failure.
  void keep();

 private:
  void put(const void* bytes, std::size_t count);
  [[noreturn]] void fail(std::error_code code) const;

  std::string path_;
  platform::PartFile part_;
  std::FILE* file_ = nullptr;    // the part's, standard output, or device_
  std::FILE* device_ = nullptr;  // what is written to directly
  bool shows_controls_ = false;
  bool finished_ = false;
};

}  // namespace traguardo::tool
