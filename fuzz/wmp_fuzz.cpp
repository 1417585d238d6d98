// SPDX-License-Identifier: MIT
// A whole .wmp from the fuzzer's bytes, beside a sound trace file: it must open, and hand out what it has.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "read_everything.h"

namespace {

// A folder with a trace of five records in it, made once.
const std::filesystem::path& folder() {
  static const std::filesystem::path made = [] {
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("traguardo-fuzz-wmp-" + std::to_string(std::rand()));
    std::filesystem::create_directories(path);
    std::string trace = "HEAD" + std::string(12, '\0') + "HEAD" + std::string(10, '\0');
    trace += std::string("\5\0\0\0", 4) + std::string(14, '\0') + "NSOL" + std::string(12, '\0');
    for (char i = 0; i < 5; ++i) {
      std::string record(64, '\0');
      record.replace(0, 4, "NSOL");
      record[5] = i;
      record[4 + 14] = 3;
      record[4 + 19] = 20;
      trace += record;
    }
    std::ofstream(path / "a.jts", std::ios::binary) << trace;
    return path;
  }();
  return made;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::filesystem::path session = folder() / "a.wmp";
  std::ofstream(session, std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  const int handle = open_file(session.string().c_str());
  if (handle <= 0) std::abort();
  read_everything(handle);
  if (close_file_i(handle) != handle) std::abort();
  std::filesystem::remove(folder() / "a.bak");
  return 0;
}
