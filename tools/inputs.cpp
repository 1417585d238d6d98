// SPDX-License-Identifier: MIT
#include "inputs.h"

#include <fmt/format.h>

#include <cstddef>
#include <filesystem>
#include <memory>

#include "failure.h"
#include "legacy/wmp_parser.h"
#include "paths.h"
#include "regulation/output_files.h"
#include "same_file.h"
#include "support/app_folders.h"
#include "support/exe_path.h"
#include "support/platform/platform.h"

namespace traguardo::tool {

namespace fs = std::filesystem;

namespace {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
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
  const std::unique_ptr<IExePathName> home = CreaExePathName(false);
  if (home == nullptr) return;
  add_configurations(home->GetCartellaA());
  add_tables(CAppFolders(home->GetCartellaSlashW()).GetCartellaEtPrediction());
}

void Inputs::add_configurations(const std::string& folder) {
  for (const std::wstring& path : configuration_paths(platform::path_from_host_bytes(folder))) {
    add(platform::host_bytes_from_path(path));
  }
}

void Inputs::add_tables(const std::wstring& folder) {
  for (const std::wstring& name : platform::list_files(folder, L".etp")) {
    add(platform::host_bytes_from_path(platform::path_in_folder(folder, name)));
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
