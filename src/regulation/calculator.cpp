// SPDX-License-Identifier: MIT
#include "regulation/calculator.h"

#include <memory>

#include "regulation/exporter.h"
#include "regulation/limiter.h"
#include "support/exe_path.h"
#include "support/platform/platform.h"

namespace traguardo {

namespace {

std::wstring folder_of_executable() {
  const std::unique_ptr<IExePathName> executable = CreaExePathName(false);
  return executable == nullptr ? std::wstring() : executable->GetCartellaSlashW();
}

}  // namespace

RegulationCalculator::RegulationCalculator(SessionView* session, const CalculationOptions& options, i32 mode)
    : RegulationCalculator(session, options, mode, folder_of_executable()) {}

RegulationCalculator::RegulationCalculator(SessionView* session, const CalculationOptions& options, i32 mode,
                                           const std::wstring& table_root)
    : session_(session) {
  const std::size_t count = session->runs().size();
  runs_.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    runs_.emplace_back(mode == kCalibrationOff ? options.mode : mode, table_root);
  }
}

bool RegulationCalculator::has_configuration(const wchar_t* name) const {
  return platform::file_exists(platform::path_in_folder(session_->working_folder(), name));
}

bool RegulationCalculator::compute_boost_limit(const BoostOutputs& outputs) {
  if (!has_configuration(kBoostConfigurationName)) return false;
  BoostLimitCheck check(session_, outputs);
  bool all_good = true;
  for (const SessionRun& span : believed_runs(*session_)) all_good = check.run(span) && all_good;
  check.write_report();
  return all_good;
}

bool RegulationCalculator::compute_limiter(std::size_t output) {
  if (!has_configuration(kLimiterConfigurationName)) return false;
  LimiterCheck check(session_, output);
  bool all_good = true;
  for (const SessionRun& span : believed_runs(*session_)) all_good = check.run(span) && all_good;
  check.write_report();
  return all_good;
}

bool RegulationCalculator::export_channels() {
  if (!has_configuration(kExporterConfigurationName)) return false;
  // Each run would replace what the run before it wrote, and all of them have one racer and one set of columns: the
  // last one is all that stays.
  const std::vector<SessionRun> runs = believed_runs(*session_);
  return runs.empty() || export_run(*session_, runs.back());
}

}  // namespace traguardo
