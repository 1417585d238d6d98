// SPDX-License-Identifier: MIT
#include "inputs.h"

#include <fmt/format.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>

#include "failure.h"
#include "legacy/wmp_parser.h"
#include "paths.h"
#include "regulation/boost_limit.h"
#include "regulation/config_file.h"
#include "regulation/exporter.h"
#include "regulation/limiter.h"
#include "same_file.h"
#include "support/platform/platform.h"

namespace traguardo::tool {

namespace fs = std::filesystem;

namespace {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Configurations have their names with a backslash in front.
std::string beside(const std::string& path, std::wstring_view name) {
  return bytes_of(path_of(path).parent_path() / path_of(platform::host_bytes_from_path(name.substr(1))));
}

}  // namespace

std::string lower_ending(const std::string& path) {
  std::string ending = bytes_of(path_of(path).extension());
  for (char& c : ending) c = lower(c);
  return ending;
}

std::string trace_file_of(const std::string& path) {
  return platform::host_bytes_from_path(CParserWMP::trace_path_of(platform::path_from_host_bytes(path)));
}

void Inputs::add_session(const std::string& path) {
  add(path);
  const std::string ending = lower_ending(path);
  if (ending == ".qlc") add(path.substr(0, path.rfind('.')) + ".qlt");
  if (ending != ".wmp") return;
  add(trace_file_of(path));
  add_boost_configuration(beside(path, kBoostConfigurationName));
  add(beside(path, kLimiterConfigurationName));
  add(beside(path, kExporterConfigurationName));
}

void Inputs::add_boost_configuration(const std::string& path) {
  constexpr std::string_view kLimitFile = "maxpboost=";
  add(path);
  const std::optional<ConfigFile> file = ConfigFile::read(platform::path_from_host_bytes(path));
  if (!file) return;
  const fs::path folder = path_of(path).parent_path();
  LineWalk lines(file->text());
  for (std::string_view line; lines.next(&line);) {
    const auto name = value_of(line, kLimitFile);
    if (name && !name->empty()) {
      add(platform::host_bytes_from_path(platform::path_in_folder(platform::path_from_host_bytes(bytes_of(folder)),
                                                                  platform::path_from_host_bytes(*name))));
    }
  }
}

void Inputs::refuse(const std::string& output) const {
  for (const std::string& input : paths_) {
    if (!are_same_file(input, output)) continue;
    const std::string named = output == "-" ? "standard output" : output;
    throw Failure(input == output ? fmt::format("cannot write {}: the command reads it", named)
                                  : fmt::format("cannot write {}: it is {}, which the command reads", named, input));
  }
}

void refuse_equal_outputs(const std::vector<std::string>& outputs) {
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    for (std::size_t k = 0; k < i; ++k) {
      if (are_same_file(outputs[k], outputs[i])) {
        throw Failure(fmt::format("cannot write both {} and {}: they are one file", outputs[k], outputs[i]));
      }
    }
  }
}

}  // namespace traguardo::tool
