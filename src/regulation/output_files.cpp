// SPDX-License-Identifier: MIT
#include "regulation/output_files.h"

#include <optional>

#include "math/math_channel_store.h"
#include "regulation/boost_limit.h"
#include "regulation/config_file.h"
#include "regulation/exporter.h"
#include "regulation/limiter.h"
#include "support/event_log.h"
#include "support/platform/platform.h"

namespace traguardo {

std::vector<std::wstring> configuration_paths(const std::wstring& working_folder) {
  const std::wstring boost = platform::path_in_folder(working_folder, kBoostConfigurationName);
  std::vector<std::wstring> paths = {boost, platform::path_in_folder(working_folder, kLimiterConfigurationName),
                                     platform::path_in_folder(working_folder, kExporterConfigurationName)};
  paths.push_back(CMathChanIni::disk_path(working_folder, CMathChanIni::kFileName));
  const std::optional<ConfigFile> file = ConfigFile::read(boost);
  LineWalk lines(file ? file->text() : std::string_view());
  for (std::string_view line; lines.next(&line);) {
    const auto name = value_of(line, kBoostLimitFileKey);
    if (!name || name->empty()) continue;
    paths.push_back(platform::path_in_folder(working_folder, platform::path_from_host_bytes(*name)));
  }
  return paths;
}

bool may_be_written(const SessionView& session, const std::wstring& path) {
  const auto is_input = [&path](const std::wstring& input) {
    if (!platform::is_same_file(input, path)) return false;
    TRAGUARDO_LOG("may_be_written", "%s [%d] WARNING = %s is not written: it is %s, which is read\n", path, input);
    return true;
  };
  for (const std::wstring& input : session.input_paths()) {
    if (is_input(input)) return false;
  }
  // The limiter adds to its own configuration.
  const std::wstring grows = platform::path_in_folder(session.working_folder(), kLimiterConfigurationName);
  for (const std::wstring& input : configuration_paths(session.working_folder())) {
    if ((input != grows || path != grows) && is_input(input)) return false;
  }
  return true;
}

}  // namespace traguardo
