// SPDX-License-Identifier: MIT
// The prediction of elapsed times: a run that was measured over a given length is carried on with the shape of a
// reference run, and the time between two distances of what comes out is worked out.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "regulation/elapsed_time.h"
#include "regulation/elapsed_time_data.h"
#include "support/bytes.h"

namespace traguardo {

// The input: one distance and one speed per measured sample.
struct PredictionInput {
  std::span<const float> distances_ft;
  std::span<const float> speeds_mph;
  u32 length_ft = 660;
  u32 period_ms = 50;
  // Takes the predicted speed of each sample, as far as it reaches; may be empty.
  std::span<float> predicted_speeds_mph;
};

class ElapsedTimePrediction {
 public:
  // root: of the installation, with its trailing slash; empty for none. Writes the default table below it if it's
  // missing.
  explicit ElapsedTimePrediction(const std::wstring& root);

  const std::wstring& folder() const { return folder_; }

  // The elapsed time between the timing distances of the strip, in ms. Without a value, and with nothing in
  // `predicted_speeds_mph`, if there is no reference table, or if reference or run don't reach the marks of the strip.
  std::optional<i64> predict(const PredictionInput& input);

  // Keeps a run as the table "championship_run"; the default table is written in its place if that file can't be made.
  // False, without a file, for a run that doesn't reach the marks of its strip.
  bool store_run(const std::string& championship, const std::string& run_name, const PredictionInput& input);

 private:
  using Rows = std::vector<ElapsedTimeRow>;
  // Rows by their distances: the last one below the first reference distance, the first ones above the others. 0 stands
  // for none.
  struct Marks {
    std::size_t start = 0;
    std::size_t middle = 0;
    std::size_t end = 0;
  };

  static const StripRow& strip_of(u32 length_ft);
  static Rows rows_of(const PredictionInput& input);
  static Marks marks_of(const Rows& rows, const StripRow& strip);
  static void stretch(Rows* rows, u32 length_ft);
  static void smooth_speeds(Rows* rows, std::size_t half_width);

  bool load_reference();
  void prepare_reference();
  void predict_speeds();
  void rebuild_distances();
  std::optional<i64> elapsed_ms(const StripRow& strip, u32 period_ms) const;

  std::wstring folder_;
  Rows reference_;
  Rows measured_;
  Rows predicted_;
  Marks reference_marks_;
  Marks measured_marks_;
};

}  // namespace traguardo
