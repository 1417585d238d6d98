// A file that appears under its name only when it is whole: it is written beside its place and renamed at the end.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

namespace traguardo::tool {

class OutputFile {
 public:
  // "-" is standard output. Devices and pipes are written to directly. Throws Failure.
  explicit OutputFile(std::string path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  // Without keep() before, nothing stays behind.
  ~OutputFile();

  // Throws Failure when the bytes can't be written, as on a full disk.
  void write(const void* bytes, std::size_t count);
  void write(std::string_view text) { write(text.data(), text.size()); }
  // Everything is written: the file takes its name. Throws Failure.
  void keep();

 private:
  [[noreturn]] void fail(int code) const;

  std::string path_;
  std::string target_;   // where the bytes belong: path_, or what a symbolic link of that name points to
  std::string written_;  // where they go until keep()
  std::FILE* file_ = nullptr;
};

}  // namespace traguardo::tool
