// SPDX-License-Identifier: MIT
// A whole .qlt from the fuzzer's bytes: it must open or not, hand out what it has, and leave nothing behind.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "read_everything.h"

namespace {

const std::string& session_path() {
  static const std::string path =
      (std::filesystem::temp_directory_path() / ("traguardo-fuzz-" + std::to_string(std::rand()) + ".qlt")).string();
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  {
    std::ofstream file(session_path(), std::ios::binary);
    file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  }
  const int handle = open_file(session_path().c_str());
  if (handle > 0) {
    read_everything(handle);
    if (close_file_i(handle) != handle) std::abort();
  }
  std::filesystem::remove(session_path());
  return 0;
}
