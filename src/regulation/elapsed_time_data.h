// SPDX-License-Identifier: MIT
// The tables of the predicted elapsed times: the default reference run, the reference distances of a strip, and the
// segments of the calibrated run distance.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

// One row of an elapsed-time table, one time step (50 ms in the default table) behind the row before. `Default.etp`
// holds default_elapsed_times() with their row numbers from 0 on, three decimals each.
struct ElapsedTimeRow {
  float distance_ft;  // from the start
  float speed_mph;
  float fraction;  // speed rise: 0 at the first reference distance, 1 at the last
};

// Reference distances by the length of the strip, all in feet; the last row, kAnyOtherStrip, serves every other length.
inline constexpr u32 kAnyOtherStrip = 0;
struct StripRow {
  u32 length;
  u32 first;
  u32 middle;
  u32 last;
  u32 timed_from;
  u32 timed_to;
};

// A segment of the calibrated run distance: the speed factor falls by (distance - (target + 0.005)) / divisor a round.
struct RunSegmentRow {
  u32 target_ft;
  u32 divisor;
  bool predicted;  // a prediction of that length may be asked for
};

// The segments of a calculation mode, in order.
struct ModeSegmentRow {
  i32 mode;
  u32 target_ft;
  bool predicted;  // the segment on which this mode asks for the prediction
};

std::span<const ElapsedTimeRow> default_elapsed_times();
std::span<const StripRow> strips();
std::span<const RunSegmentRow> run_segments();
std::span<const ModeSegmentRow> mode_segments();

}  // namespace traguardo
