// SPDX-License-Identifier: MIT
#include "regulation/prediction.h"

#include <algorithm>
#include <utility>

#include "regulation/first_above.h"
#include "support/app_folders.h"
#include "support/platform/platform.h"

namespace traguardo {

namespace {

// The first row above the distance, less `step_back`. A result of 0 doesn't count, so that the search goes on behind
// it; in the end it stands for none.
std::size_t row_above(std::span<const ElapsedTimeRow> rows, float distance_ft, std::size_t step_back) {
  for (std::size_t i = step_back + 1; i < rows.size(); ++i) {
    if (rows[i].distance_ft > distance_ft) return i - step_back;
  }
  return 0;
}

// Cut to a whole number: how far into a step of `period_ms` a distance lies.
i64 ms_into_step(u32 period_ms, float distance_ft, const ElapsedTimeRow& from, const ElapsedTimeRow& to) {
  const float part =
      static_cast<float>(period_ms) * (distance_ft - from.distance_ft) / (to.distance_ft - from.distance_ft);
  return truncate_to<i32>(part);
}

}  // namespace

ElapsedTimePrediction::ElapsedTimePrediction(const std::wstring& root) {
  // An installation whose place isn't known has no tables.
  if (root.empty()) return;
  folder_ = CAppFolders(root).GetCartellaEtPrediction();
  ensure_default_table(folder_);
}

const StripRow& ElapsedTimePrediction::strip_of(u32 length_ft) {
  const std::span<const StripRow> all = strips();
  for (const StripRow& strip : all) {
    if (strip.length == length_ft && strip.length != kAnyOtherStrip) return strip;
  }
  return all.back();
}

ElapsedTimePrediction::Rows ElapsedTimePrediction::rows_of(const PredictionInput& input) {
  Rows rows(std::min(input.distances_ft.size(), input.speeds_mph.size()));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    rows[i].distance_ft = input.distances_ft[i];
    rows[i].speed_mph = input.speeds_mph[i];
    rows[i].fraction = 0.0F;
  }
  return rows;
}

ElapsedTimePrediction::Marks ElapsedTimePrediction::marks_of(const Rows& rows, const StripRow& strip) {
  Marks marks;
  marks.start = row_above(rows, static_cast<float>(strip.first), 1);
  marks.middle = row_above(rows, static_cast<float>(strip.middle), 0);
  marks.end = row_above(rows, static_cast<float>(strip.last), 0);
  return marks;
}

// A run that ends too early is drawn out to a hundredth more than the strip.
void ElapsedTimePrediction::stretch(Rows* rows, u32 length_ft) {
  const float length = static_cast<float>(length_ft);
  if (rows->empty() || rows->back().distance_ft > length) return;
  const float factor = length * 1.01F / rows->back().distance_ft;
  for (ElapsedTimeRow& row : *rows) row.distance_ft *= factor;
}

// In place and in ascending order: a mean holds values that the pass has smoothed already.
void ElapsedTimePrediction::smooth_speeds(Rows* rows, std::size_t half_width) {
  const float width = static_cast<float>(2 * half_width + 1);
  for (std::size_t k = half_width; k + half_width < rows->size(); ++k) {
    float sum = 0.0F;
    for (std::size_t i = k - half_width; i <= k + half_width; ++i) sum += (*rows)[i].speed_mph;
    (*rows)[k].speed_mph = sum / width;
  }
}

// The table without a name goes before the default one.
bool ElapsedTimePrediction::load_reference() {
  reference_.clear();
  if (folder_.empty()) return false;
  std::optional<Rows> table = read_table(folder_, L"");
  if (!table) table = read_table(folder_, kDefaultTableName);
  if (!table || table->size() < kFewestTableRows) return false;
  reference_ = std::move(*table);
  return true;
}

std::optional<i64> ElapsedTimePrediction::predict(const PredictionInput& input) {
  if (!load_reference()) return std::nullopt;
  measured_ = rows_of(input);
  predicted_ = measured_;
  for (const std::size_t half_width : {1U, 2U, 3U, 4U}) smooth_speeds(&measured_, half_width);

  const StripRow& strip = strip_of(input.length_ft);
  stretch(&reference_, input.length_ft);
  reference_marks_ = marks_of(reference_, strip);
  measured_marks_ = marks_of(measured_, strip);
  if (reference_marks_.start == 0 || reference_marks_.middle == 0 || reference_marks_.end == 0) return std::nullopt;
  if (measured_marks_.start == 0 || measured_marks_.middle == 0) return std::nullopt;

  prepare_reference();
  predict_speeds();
  rebuild_distances();
  const std::optional<i64> elapsed = elapsed_ms(strip, input.period_ms);
  if (!elapsed) return std::nullopt;
  const std::size_t count = std::min(input.predicted_speeds_mph.size(), predicted_.size());
  for (std::size_t i = 0; i < count; ++i) input.predicted_speeds_mph[i] = predicted_[i].speed_mph;
  return elapsed;
}

// The range is that of the table as it was read, the fractions are those of the smoothed speeds.
void ElapsedTimePrediction::prepare_reference() {
  const float range = reference_[reference_marks_.end].speed_mph - reference_[reference_marks_.start].speed_mph;
  smooth_speeds(&reference_, 1);
  smooth_speeds(&reference_, 2);
  const float start_speed = reference_[reference_marks_.start].speed_mph;
  for (std::size_t i = reference_marks_.start; i <= reference_marks_.end; ++i) {
    reference_[i].fraction = reference_[i].speed_mph / range - start_speed / range;
  }
}

void ElapsedTimePrediction::predict_speeds() {
  const std::size_t start = measured_marks_.start;
  const std::size_t middle = measured_marks_.middle;
  const float start_speed = measured_[start].speed_mph;
  const float gain = (measured_[middle].speed_mph - start_speed) / reference_[reference_marks_.middle].fraction;

  std::vector<float> reference_distances;
  for (std::size_t i = reference_marks_.start; i < reference_.size(); ++i) {
    reference_distances.push_back(reference_[i].distance_ft);
  }
  const FirstAbove reference_above(reference_distances);

  float offset = 0.0F;
  for (std::size_t j = start; j < measured_.size(); ++j) {
    const float distance = measured_[j].distance_ft;
    const std::size_t above = reference_marks_.start + reference_above.find(distance);
    // Behind the reference its last speed holds.
    float fraction = reference_.back().fraction;
    if (above < reference_.size()) {
      const ElapsedTimeRow& to = reference_[above];
      const ElapsedTimeRow& from = reference_[above - 1];
      fraction = from.fraction +
                 (to.fraction - from.fraction) * (distance - from.distance_ft) / (to.distance_ft - from.distance_ft);
    }
    predicted_[j].fraction = fraction;
    predicted_[j].speed_mph = gain * fraction + start_speed + offset;
    // A run that beats the reference lifts the rest of the prediction.
    if (measured_[j].speed_mph > predicted_[j].speed_mph && j > middle) {
      offset += measured_[j].speed_mph - predicted_[j].speed_mph;
    }
  }
}

// Each step keeps its time and takes the predicted speed.
void ElapsedTimePrediction::rebuild_distances() {
  for (std::size_t j = measured_marks_.start + 1; j < measured_.size(); ++j) {
    const ElapsedTimeRow& before = measured_[j - 1];
    predicted_[j].distance_ft = before.speed_mph > 0.0F ? (measured_[j].distance_ft - before.distance_ft) /
                                                                  before.speed_mph * predicted_[j - 1].speed_mph +
                                                              predicted_[j - 1].distance_ft
                                                        : 0.0F;
  }
}

std::optional<i64> ElapsedTimePrediction::elapsed_ms(const StripRow& strip, u32 period_ms) const {
  const float timed_from = static_cast<float>(strip.timed_from);
  const float timed_to = static_cast<float>(strip.timed_to);
  const std::size_t a = row_above(predicted_, timed_from, 1);
  const std::size_t b = row_above(predicted_, timed_to, 0);
  if (a == 0 || b == 0) return std::nullopt;
  const i64 period = period_ms;
  const i64 from_ms =
      period * static_cast<i64>(a) + ms_into_step(period_ms, timed_from, predicted_[a], predicted_[a + 1]);
  const i64 to_ms = ms_into_step(period_ms, timed_to, predicted_[b - 1], predicted_[b]);
  return to_ms - from_ms + period * static_cast<i64>(b - 1);
}

bool ElapsedTimePrediction::store_run(const std::string& championship, const std::string& run_name,
                                      const PredictionInput& input) {
  if (folder_.empty()) return false;
  Rows rows = rows_of(input);
  for (const std::size_t half_width : {1U, 2U, 3U}) smooth_speeds(&rows, half_width);
  stretch(&rows, input.length_ft);
  const Marks marks = marks_of(rows, strip_of(input.length_ft));
  if (marks.start == 0 || marks.middle == 0 || marks.end == 0) return false;
  const float start_speed = rows[marks.start].speed_mph;
  const float range = rows[marks.end].speed_mph - start_speed;
  for (std::size_t i = marks.start; i <= marks.end; ++i) {
    rows[i].fraction = (rows[i].speed_mph - start_speed) / range;
  }
  const std::string name = championship + "_" + run_name;
  // Names come out of session files: one that would leave the folder is none that can be made.
  const bool leaves_folder = name.find_first_of("/\\:") != std::string::npos;
  if (leaves_folder || !write_table(folder_, platform::path_from_host_bytes(name), rows)) {
    write_table(folder_, kDefaultTableName, default_elapsed_times());
  }
  return true;
}

}  // namespace traguardo
