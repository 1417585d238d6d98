#include "output_file.h"

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "failure.h"

namespace traguardo::tool {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 18;

// A name in the same folder that nobody uses, so that the rename stays within one file system.
std::string free_name_beside(const std::string& path) {
  std::string name = path + ".part";
  std::error_code ignored;
  for (int n = 1; n < 1000 && fs::exists(fs::symlink_status(name, ignored)); ++n) {
    name = path + ".part" + std::to_string(n);
  }
  return name;
}

}  // namespace

OutputFile::OutputFile(std::string path) : path_(std::move(path)), target_(path_) {
  if (path_ == "-") {
    file_ = stdout;
    return;
  }
  std::error_code problem;
  if (fs::is_symlink(fs::symlink_status(path_, problem))) {
    const fs::path resolved = fs::weakly_canonical(path_, problem);
    if (!problem) target_ = resolved.string();
  }
  const fs::file_status status = fs::status(target_, problem);
  if (fs::is_directory(status)) fail(EISDIR);
  const bool is_file = !fs::exists(status) || fs::is_regular_file(status);
  written_ = is_file ? free_name_beside(target_) : target_;
  errno = 0;
  file_ = std::fopen(written_.c_str(), "wb");
  if (file_ == nullptr) fail(errno);
  std::setvbuf(file_, nullptr, _IOFBF, kBufferSize);
}

OutputFile::~OutputFile() {
  if (file_ == nullptr || file_ == stdout) return;
  std::fclose(file_);
  if (written_ != target_) {
    std::error_code ignored;
    fs::remove(written_, ignored);
  }
}

void OutputFile::write(const void* bytes, std::size_t count) {
  if (count == 0) return;
  errno = 0;
  if (std::fwrite(bytes, 1, count, file_) != count) fail(errno);
}

void OutputFile::keep() {
  errno = 0;
  if (std::fflush(file_) != 0 || std::ferror(file_) != 0) fail(errno);
  if (file_ == stdout) return;
  std::FILE* const finished = std::exchange(file_, nullptr);
  std::error_code problem;
  if (std::fclose(finished) != 0) {
    const int code = errno;
    if (written_ != target_) fs::remove(written_, problem);
    fail(code);
  }
  if (written_ == target_) return;
  fs::rename(written_, target_, problem);
  if (problem) {
    std::error_code ignored;
    fs::remove(written_, ignored);
    fail(problem.value());
  }
}

void OutputFile::fail(int code) const {
  throw Failure("cannot write " + (path_ == "-" ? std::string("standard output") : path_) +
                (code == 0 ? std::string() : ": " + std::generic_category().message(code)));
}

}  // namespace traguardo::tool
