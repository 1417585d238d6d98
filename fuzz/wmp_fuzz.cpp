// SPDX-License-Identifier: MIT
// A whole .wmp from the fuzzer's bytes, beside a sound trace file: it must open, and hand out what it has.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "read_everything.h"
#include "wire/jts.h"

namespace {

// A folder with a trace of five records in it, made once.
const std::filesystem::path& folder() {
  static const std::filesystem::path made = [] {
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("traguardo-fuzz-wmp-" + std::to_string(std::rand()));
    std::filesystem::create_directories(path);
    const traguardo::wire::Bytes trace = traguardo::wire::plain_jts(5);
    std::ofstream(path / "a.jts", std::ios::binary)
        .write(reinterpret_cast<const char*>(trace.data()), static_cast<std::streamsize>(trace.size()));
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
