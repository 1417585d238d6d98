// SPDX-License-Identifier: MIT
#include "output_file.h"

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "failure.h"
#include "paths.h"
#include "same_file.h"
#include "support/platform/platform.h"
#include "support/platform/process.h"
#include "terminal.h"

namespace traguardo::tool {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 18;

}  // namespace

OutputFile::OutputFile(std::string path) : path_(std::move(path)) {
  if (path_ == "-") {
    file_ = stdout;
    shows_controls_ = platform::is_terminal(stdout);
    return;
  }
  // Through links, also those that stand for a pipe, which no other path leads to.
  std::error_code problem;
  const fs::file_status status = fs::status(path_of(path_), problem);
  if (fs::is_directory(status)) fail(std::make_error_code(std::errc::is_a_directory));
  const int number = platform::stream_number_of(path_);
  if (number >= 0 || (fs::exists(status) && !fs::is_regular_file(status))) {
    errno = 0;
    device_ = number >= 0 ? platform::open_numbered_stream(number) : platform::open_stream(path_, "wb");
    if (device_ == nullptr) fail({errno, std::generic_category()});
    file_ = device_;
    shows_controls_ = platform::is_terminal(device_);
  } else {
    const std::wstring target = platform::path_from_host_bytes(behind_links(path_));
    // A file that its owner protected is no less so for lying in a folder where names can be changed.
    if ((fs::exists(status) && !platform::can_write_to(target)) || !part_.begin(target)) {
      fail({static_cast<int>(platform::last_error()), std::system_category()});
    }
    file_ = part_.stream();
  }
  std::setvbuf(file_, nullptr, _IOFBF, kBufferSize);
}

OutputFile::~OutputFile() {
  if (device_ != nullptr) std::fclose(device_);
}

void OutputFile::write(const void* bytes, std::size_t count) {
  if (!shows_controls_) {
    put(bytes, count);
    return;
  }
  const std::string shown =
      with_visible_controls(std::string_view(static_cast<const char*>(bytes), count), LineFeeds::kept);
  put(shown.data(), shown.size());
}

std::string OutputFile::in_place(std::string_view text) const {
  return shows_controls_ ? with_visible_controls(text, LineFeeds::shown) : std::string(text);
}

void OutputFile::put(const void* bytes, std::size_t count) {
  if (count == 0) return;
  errno = 0;
  if (std::fwrite(bytes, 1, count, file_) != count) fail({errno, std::generic_category()});
}

void OutputFile::finish() {
  if (finished_) return;
  finished_ = true;
  if (part_.stream() != nullptr) {
    file_ = nullptr;
    if (!part_.finish()) fail({static_cast<int>(platform::last_error()), std::system_category()});
    return;
  }
  errno = 0;
  if (std::fflush(file_) != 0 || std::ferror(file_) != 0) fail({errno, std::generic_category()});
  if (device_ == nullptr) return;
  file_ = nullptr;
  if (std::fclose(std::exchange(device_, nullptr)) != 0) fail({errno, std::generic_category()});
}

void OutputFile::keep() {
  finish();
  if (part_.is_finished() && !part_.take_place())
    fail({static_cast<int>(platform::last_error()), std::system_category()});
}

void OutputFile::fail(std::error_code code) const {
  throw Failure("cannot write " + (path_ == "-" ? std::string("standard output") : path_) +
                (code ? ": " + code.message() : std::string()));
}

}  // namespace traguardo::tool
