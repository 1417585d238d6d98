// SPDX-License-Identifier: MIT
// What the legacy reader calls: the regulation calculators of one session, one object per run.
#pragma once

#include <string>
#include <vector>

#include "regulation/boost_limit.h"
#include "regulation/calibrated_run.h"
#include "regulation/prediction.h"
#include "regulation/session_view.h"
#include "support/bytes.h"

namespace traguardo {

struct CalculationOptions {
  // Of the calibrated run distance: 0 to 4, or kCalibrationOff.
  i32 mode = kCalibrationOff;
};

// The calculator of one run. Making it writes the default elapsed-time table if that is missing.
class RunCalculator {
 public:
  // table_root: of the installation, with its trailing slash.
  RunCalculator(i32 mode, const std::wstring& table_root) : mode_(mode), prediction_(table_root) {}

  i32 mode() const { return mode_; }
  ElapsedTimePrediction& prediction() { return prediction_; }
  // By the calculator's mode; a run without distances while that is off.
  CalibratedRun calibrate(std::span<const float> speeds_mph, u32 period_ms, const RunMarks& marks) {
    return calibrate_run(speeds_mph, period_ms, mode_, marks, &prediction_);
  }

 private:
  i32 mode_;
  ElapsedTimePrediction prediction_;
};

// All runs of a session. Results of the runs are combined with a logical and. Nothing of the channel table is kept
// between two calls, so that a change of it needs no word to the calculators.
class RegulationCalculator {
 public:
  // session: borrowed, for the life of the object. mode: that of the opening; kCalibrationOff leaves it to the options.
  // The elapsed-time tables lie beside the executable of the process.
  RegulationCalculator(SessionView* session, const CalculationOptions& options, i32 mode);
  // The same with the tables below a folder of the caller's choice, given with its trailing slash.
  RegulationCalculator(SessionView* session, const CalculationOptions& options, i32 mode,
                       const std::wstring& table_root);

  // One per record of the run table at the time of construction.
  std::size_t run_count() const { return runs_.size(); }
  RunCalculator& run(std::size_t index) { return runs_[index]; }

  // Fills the six channels of the boost limit from all runs; deletes the report of an earlier computation first. False
  // without FIA.txt, with nothing done at all, and where a run could not be computed. The caller has zeroed the
  // channels.
  bool compute_boost_limit(const BoostOutputs& outputs);
  // Fills the channel of the limiter from all runs. False without FMI-limiter.txt, with nothing done at all, and where
  // a run could not be computed. The caller has zeroed the channel.
  bool compute_limiter(std::size_t output);
  // Runs the exporter. False without Exporter.txt, with nothing done at all, and where no table could be made.
  bool export_channels();

 private:
  bool has_configuration(const wchar_t* name) const;

  SessionView* session_;
  std::vector<RunCalculator> runs_;
};

}  // namespace traguardo
