// traguardo unpack: the logger file that a compressed one holds.
#include <fmt/format.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "commands.h"
#include "failure.h"
#include "input_file.h"
#include "logger/lz77.h"
#include "output_file.h"
#include "support/platform/platform.h"

namespace traguardo::tool {

namespace fs = std::filesystem;

namespace {

// Results of the expansion.
constexpr i32 kDone = 0;
constexpr i32 kFailedIo = -1;
constexpr i32 kDamaged = -3;

// A file that goes away unless it was renamed.
class Scratch {
 public:
  explicit Scratch(std::string path) : path_(std::move(path)) {}
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  ~Scratch() {
    std::error_code ignored;
    fs::remove(path_, ignored);
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

std::string target_of(const UnpackOptions& options) {
  if (!options.output.empty()) return options.output;
  return fs::path(options.file).replace_extension(".qlt").string();
}

// Standard output, a device, a pipe: no other file may take its name.
bool is_written_through(const std::string& target) {
  std::error_code problem;
  const fs::file_status status = fs::status(target, problem);
  return target == "-" || (fs::exists(status) && !fs::is_regular_file(status));
}

// What the name stands for in the end, so that a symbolic link stays one.
std::string resolved(const std::string& target) {
  std::error_code problem;
  if (!fs::is_symlink(fs::symlink_status(target, problem))) return target;
  const fs::path path = fs::weakly_canonical(target, problem);
  return problem ? target : path.string();
}

// Beside the target where a rename brings it to its place.
std::string scratch_path(const std::string& target) {
  const std::string token = platform::unique_token();
  if (is_written_through(target)) return (fs::temp_directory_path() / ("traguardo-" + token + ".part")).string();
  return target + "." + token + ".part";
}

void refuse_bad_places(const std::string& source, const std::string& target) {
  std::error_code problem;
  if (!fs::is_regular_file(source, problem)) throw Failure(fmt::format("cannot unpack {}: not a file", source));
  if (target != "-" && fs::is_directory(target, problem)) {
    throw Failure(fmt::format("cannot write {}: Is a directory", target));
  }
  if (source == target || fs::equivalent(source, target, problem)) {
    throw Failure(fmt::format("cannot unpack {} onto itself", source));
  }
}

[[noreturn]] void fail_writing(const std::string& target, int code) {
  throw Failure(fmt::format("cannot write {}: {}", target, std::generic_category().message(code)));
}

void bring_into_place(const Scratch& scratch, const std::string& target) {
  if (is_written_through(target)) {
    OutputFile out(target);
    copy_to(out, scratch.path());
    out.keep();
    return;
  }
  std::error_code problem;
  fs::rename(scratch.path(), target, problem);
  if (problem) fail_writing(target, problem.value());
}

}  // namespace

void unpack_session(const UnpackOptions& options) {
  require_readable(options.file);
  const std::string target = resolved(target_of(options));
  refuse_bad_places(options.file, target);

  const Scratch scratch(scratch_path(target));
  const i32 result = CLz77().Decomprimi(options.file.c_str(), scratch.path().c_str());
  if (result != kDone && result != kFailedIo && result != kDamaged) {
    throw Failure(fmt::format("cannot unpack {}: out of memory", options.file));
  }
  std::error_code problem;
  const std::uintmax_t size = fs::file_size(scratch.path(), problem);
  // With nothing there to see, the file could not even be made.
  if (problem || result == kFailedIo) fail_writing(target, static_cast<int>(platform::last_error()));
  if (result == kDamaged && size == 0) {
    throw Failure(fmt::format("cannot unpack {}: it holds no compressed session", options.file));
  }
  bring_into_place(scratch, target);
  if (result == kDamaged) {
    throw Failure(fmt::format("{} is damaged or cut short: only the {} bytes in front of that are in {}", options.file,
                              size, target == "-" ? "standard output" : target));
  }
  if (target != "-") print_out(fmt::format("{}: {} bytes\n", target, size));
}

}  // namespace traguardo::tool
