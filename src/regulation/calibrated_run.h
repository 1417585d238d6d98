// SPDX-License-Identifier: MIT
// The calibrated run distance: the distance of a run on a strip, integrated from its speed and held to the times at
// which the run passed the strip's marks.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <vector>

#include "regulation/prediction.h"
#include "support/bytes.h"

namespace traguardo {

// Calculation modes: strips of 660, 1320, 330 and 500 feet, each with a prediction of its length, then 150 feet.
inline constexpr i32 kCalibrationOff = -1;

// When a run passed its marks, in ms on the time axis of the speed's samples.
struct RunMarks {
  u32 launch_ms = 0;
  // By the segments of the mode: 60, 330, 660, 1000 and 1320 feet for modes 0 to 2, 60 and 500 for mode 3, 150 for
  // mode 4. 0 stands for a mark that isn't set.
  std::array<u32, 5> times_ms{};
};

struct CalibratedRun {
  // One per sample of the speed; 0 up to the launch.
  std::vector<float> distances_ft;
  // Of the last segment; the rest of the run goes on with it.
  float factor = 1.0F;
  // Where the mode asks for a prediction and it could be made: when the run passes the end of the strip, and whether
  // that is before the measured mark.
  std::optional<i64> predicted_ms;
  bool predicted_short_of_mark = false;
};

// distances[i] for i above `first`, each from the one before: factor * speed * feet_per_s * period / 1000. Distances up
// to `first` stay.
void integrate_distance(std::span<const float> speeds_mph, u32 period_ms, float factor, float feet_per_s,
                        std::size_t first, std::span<float> distances_ft);
// Feet per second in a mile per hour.
inline constexpr float kFeetPerSecond = 1.466667F;

// A mode outside 0 to 4 gives a run without distances.
CalibratedRun calibrate_run(std::span<const float> speeds_mph, u32 period_ms, i32 mode, const RunMarks& marks,
                            ElapsedTimePrediction* prediction);

}  // namespace traguardo
