// SPDX-License-Identifier: MIT
#include "regulation/calibrated_run.h"

#include <algorithm>

#include "regulation/elapsed_time_data.h"
#include "regulation/session_view.h"

namespace traguardo {

namespace {

constexpr i32 kModeInMetres = 4;
// Metres per second in a kilometre per hour: what the rest of a run in mode 4 goes on with.
constexpr float kMetresPerSecond = 0.2777778F;
constexpr int kMostRounds = 201;
constexpr float kTolerance = 0.01F;
constexpr float kAim = 0.005F;

class Calibration {
 public:
  Calibration(std::span<const float> speeds_mph, u32 period_ms, const RunMarks& marks, CalibratedRun* run)
      : speeds_(speeds_mph), period_ms_(period_ms), marks_(marks), run_(run) {
    run_->distances_ft.assign(speeds_.size(), 0.0F);
    rest_begins_ms_ = marks_.launch_ms;
  }

  // From one mark to the next. Searches for the factor with which the distance meets the target at the mark; the rest
  // of the run goes on with it.
  void run_segment(u32 from_ms, u32 to_ms, const RunSegmentRow& segment) {
    const float target = static_cast<float>(segment.target_ft);
    const float divisor = static_cast<float>(segment.divisor);
    float factor = 1.0F;
    for (int attempt = 0; attempt < kMostRounds; ++attempt) {
      integrate_to(from_ms, to_ms, factor);
      const float reached = value_at(run_->distances_ft, period_ms_, to_ms);
      if (reached >= target && reached - target <= kTolerance) break;
      factor -= (reached - (target + kAim)) / divisor;
    }
    run_->factor = factor;
    integrate(from_ms, factor, kFeetPerSecond);
    rest_begins_ms_ = to_ms;
  }

  void run_rest(float feet_per_s) { integrate(rest_begins_ms_, run_->factor, feet_per_s); }

  // From the launch on, as far as it is known now.
  std::optional<i64> predict(u32 length_ft, ElapsedTimePrediction* prediction) const {
    const std::size_t launch = std::min(index_of(marks_.launch_ms), speeds_.size());
    PredictionInput input;
    input.distances_ft = std::span<const float>(run_->distances_ft).subspan(launch);
    input.speeds_mph = speeds_.subspan(launch);
    input.length_ft = length_ft;
    input.period_ms = period_ms_;
    return prediction->predict(input);
  }

 private:
  std::size_t index_of(u32 time_ms) const { return time_ms / period_ms_; }
  void integrate(u32 from_ms, float factor, float feet_per_s) {
    integrate_distance(speeds_, period_ms_, factor, feet_per_s, index_of(from_ms), run_->distances_ft);
  }
  // No further than the samples around the mark.
  void integrate_to(u32 from_ms, u32 to_ms, float factor) {
    const std::size_t end = std::min(index_of(to_ms) + 2, speeds_.size());
    integrate_distance(speeds_.first(end), period_ms_, factor, kFeetPerSecond, index_of(from_ms), run_->distances_ft);
  }

  std::span<const float> speeds_;
  u32 period_ms_;
  RunMarks marks_;
  CalibratedRun* run_;
  u32 rest_begins_ms_ = 0;
};

const RunSegmentRow* segment_of(u32 target_ft) {
  for (const RunSegmentRow& segment : run_segments()) {
    if (segment.target_ft == target_ft) return &segment;
  }
  return nullptr;
}

std::vector<ModeSegmentRow> segments_of(i32 mode) {
  std::vector<ModeSegmentRow> segments;
  for (const ModeSegmentRow& segment : mode_segments()) {
    if (segment.mode == mode) segments.push_back(segment);
  }
  return segments;
}

// The mark of the segment that ends where the timing of the strip begins; 0 for none.
u32 timing_begins_ms(const std::vector<ModeSegmentRow>& segments, const RunMarks& marks, u32 length_ft) {
  for (const StripRow& strip : strips()) {
    if (strip.length != length_ft && strip.length != kAnyOtherStrip) continue;
    for (std::size_t i = 0; i < segments.size(); ++i) {
      if (segments[i].target_ft == strip.first) return marks.times_ms[i];
    }
    return 0;
  }
  return 0;
}

}  // namespace

void integrate_distance(std::span<const float> speeds_mph, u32 period_ms, float factor, float feet_per_s,
                        std::size_t first, std::span<float> distances_ft) {
  const std::size_t count = std::min(speeds_mph.size(), distances_ft.size());
  for (std::size_t i = first + 1; i < count; ++i) {
    distances_ft[i] =
        factor * speeds_mph[i - 1] * feet_per_s * static_cast<float>(period_ms) / 1000.0F + distances_ft[i - 1];
  }
}

CalibratedRun calibrate_run(std::span<const float> speeds_mph, u32 period_ms, i32 mode, const RunMarks& marks,
                            ElapsedTimePrediction* prediction) {
  CalibratedRun run;
  const std::vector<ModeSegmentRow> segments = segments_of(mode);
  if (segments.empty() || segments.size() > marks.times_ms.size() || period_ms == 0) return run;

  Calibration calibration(speeds_mph, period_ms, marks, &run);
  for (std::size_t i = 0; i < segments.size(); ++i) {
    const RunSegmentRow* segment = segment_of(segments[i].target_ft);
    const u32 from_ms = i == 0 ? marks.launch_ms : marks.times_ms[i - 1];
    const u32 to_ms = marks.times_ms[i];
    const bool begin_is_set = i == 0 || from_ms != 0;
    if (segment == nullptr || !begin_is_set || to_ms <= from_ms) continue;
    calibration.run_segment(from_ms, to_ms, *segment);

    if (!segments[i].predicted) continue;
    const u32 timing_ms = timing_begins_ms(segments, marks, segment->target_ft);
    const std::optional<i64> elapsed = calibration.predict(segment->target_ft, prediction);
    if (timing_ms == 0 || !elapsed) continue;
    run.predicted_ms = *elapsed + timing_ms;
    run.predicted_short_of_mark = *run.predicted_ms < to_ms;
  }
  calibration.run_rest(mode == kModeInMetres ? kMetresPerSecond : kFeetPerSecond);
  return run;
}

}  // namespace traguardo
