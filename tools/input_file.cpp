// SPDX-License-Identifier: MIT
#include "input_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include "failure.h"
#include "output_file.h"
#include "paths.h"
#include "support/platform/process.h"

namespace traguardo::tool {

namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using InputFile = std::unique_ptr<std::FILE, CloseFile>;

}  // namespace

// Opening a pipe would wait for its other end.
std::string reason_not_readable(const std::string& path) {
  if (path == "-") return "standard input is no session: a reader goes back and forth in it, and to files beside it";
  std::error_code problem;
  const std::filesystem::file_status status = std::filesystem::status(path_of(path), problem);
  if (std::filesystem::is_directory(status)) return "Is a directory";
  if (std::filesystem::is_fifo(status) || std::filesystem::is_socket(status)) return "not a file but a pipe";
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    return "not a file but a device";
  }
  errno = 0;
  const InputFile file(platform::open_stream(path, "rb"));
  return file == nullptr ? std::generic_category().message(errno) : std::string();
}

void require_readable(const std::string& path) {
  const std::string reason = reason_not_readable(path);
  if (!reason.empty()) throw Failure(fmt::format("cannot open {}: {}", path, reason));
}

bool read_pieces(const std::string& path, const std::function<bool(std::string_view piece)>& take) {
  constexpr std::size_t kPieceSize = std::size_t{1} << 18;
  std::error_code problem;
  if (!std::filesystem::is_regular_file(path_of(path), problem)) return false;
  const InputFile file(platform::open_stream(path, "rb"));
  if (file == nullptr) return false;
  std::vector<char> piece(kPieceSize);
  for (;;) {
    const std::size_t got = std::fread(piece.data(), 1, piece.size(), file.get());
    if (got == 0) return std::ferror(file.get()) == 0;
    if (!take(std::string_view(piece.data(), got))) return true;
  }
}

bool copy_to(OutputFile& out, const std::string& path) {
  return read_pieces(path, [&out](std::string_view piece) {
    out.write(piece);
    return true;
  });
}

}  // namespace traguardo::tool
