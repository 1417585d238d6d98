// SPDX-License-Identifier: MIT
// traguardo unpack: the logger file that a compressed one holds.
#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <new>
#include <string>
#include <system_error>

#include "command.h"
#include "failure.h"
#include "input_file.h"
#include "logger/lz77.h"
#include "output_file.h"
#include "paths.h"
#include "print_out.h"
#include "same_file.h"
#include "support/platform/platform.h"

namespace traguardo::tool {

namespace fs = std::filesystem;

namespace {

struct UnpackOptions {
  std::string file;
  std::string output;  // empty: the file's name, ending in .qlt
};

std::string target_of(const UnpackOptions& options) {
  if (!options.output.empty()) return options.output;
  return bytes_of(path_of(options.file).replace_extension(".qlt"));
}

// What a damaged file yields is worth having only where nothing better stands.
bool is_worth_keeping(const std::string& target, std::uintmax_t size) {
  std::error_code problem;
  if (target == "-" || !fs::is_regular_file(path_of(target), problem)) return true;
  const std::uintmax_t present = fs::file_size(path_of(target), problem);
  return problem || size > present;
}

void unpack_session(const UnpackOptions& options) {
  const std::string target = target_of(options);
  if (options.file == target || are_same_file(options.file, target)) {
    throw Failure(fmt::format("cannot unpack {} onto itself", options.file));
  }
  require_readable(options.file);

  OutputFile out(target);
  std::uintmax_t size = 0;
  const platform::File source =
      platform::File::open(platform::path_from_host_bytes(options.file), platform::Access::kRead,
                           platform::Share::kRead, platform::Creation::kMustExist);
  if (!source) throw Failure(fmt::format("cannot read {}", options.file));
  const Expansion result = expand(source, [&](const u8* bytes, std::size_t count) {
    out.write(bytes, count);
    size += count;
    return true;
  });
  if (result == Expansion::kUnreadable) throw Failure(fmt::format("cannot read {}", options.file));
  if (result == Expansion::kNoMemory) throw std::bad_alloc();
  if (result == Expansion::kDamaged && size == 0) {
    throw Failure(fmt::format("cannot unpack {}: it holds no compressed session", options.file));
  }
  const std::string place = target == "-" ? "standard output" : target;
  if (result == Expansion::kDamaged) {
    const std::string damage = fmt::format("{} is damaged or cut short", options.file);
    if (!is_worth_keeping(target, size)) throw Failure(fmt::format("{}: {} has more of it and stays", damage, place));
    out.keep();
    throw Failure(fmt::format("{}: only the {} bytes in front of that are in {}", damage, size, place));
  }
  out.keep();
  if (target != "-") print_out(fmt::format("{}: {} bytes\n", target, size));
}

}  // namespace

void add_unpack_command(CLI::App& app, int& /*status*/) {
  Command command(app, "unpack", "Expand a compressed logger file");
  const auto options = std::make_shared<UnpackOptions>();
  command.add("FILE", options->file, "Compressed logger file (.qlc)").required();
  command.add_output(options->output, "File to write, - for standard output (default: FILE, ending in .qlt)");
  command.calls([options] { unpack_session(*options); });
}

}  // namespace traguardo::tool
