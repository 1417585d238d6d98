// SPDX-License-Identifier: MIT
// Two laps compared over the way of the first, the reference: where which of them was faster.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "lap_line.h"

namespace traguardo::tool {

// Differences of times are the other lap's less the reference's: above 0 the other one is behind.
struct DeltaPoint {
  double place_m = 0;
  double delta_s = 0;
  double reference_mps = 0;
  double other_mps = 0;
};
// Every so many metres from the line on, and at its end.
std::vector<DeltaPoint> deltas_between(const LapLine& reference, const LapLine& other, double step_m);

// A piece of the way, and what the other lap lost on it.
struct Gain {
  double from_m = 0;
  double to_m = 0;
  double lost_s = 0;
};
// The ten pieces between neighbouring points on which most was won or lost, the largest first.
std::vector<Gain> largest_gains(const std::vector<DeltaPoint>& deltas);

// The slowest place of a corner in both laps.
struct Apex {
  double reference_m = 0;
  double reference_mps = 0;
  double other_m = 0;
  double other_mps = 0;
};
std::vector<Apex> apexes_of(const LapLine& reference, const LapLine& other);

// How a lap is cut into sectors: by the logger's split marks, or at equal parts of the reference's way.
struct SectorPlan {
  std::size_t count = 0;
  bool by_splits = false;
};
// equal_parts: 0 for the logger's splits, where the lap has any.
SectorPlan plan_sectors(const Session& session, const Lap& lap, int equal_parts);

// Seconds in each sector; nothing for a lap that wasn't cut so. line: the lap on the reference.
std::optional<std::vector<double>> sector_times(const SectorPlan& plan, const Session& session, const Lap& lap,
                                                const LapLine& line, double length_m);

// The best time of each sector in all finished laps of a session.
struct IdealSector {
  int lap = 0;
  double time_s = 0;
};
std::vector<IdealSector> ideal_sectors(const SectorPlan& plan, LapSource* source, const ReferenceLine& reference);

}  // namespace traguardo::tool
