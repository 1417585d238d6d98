// SPDX-License-Identifier: MIT
#include "lap_comparison.h"

#include <algorithm>
#include <cmath>

#include "inside.h"

namespace traguardo::tool {

namespace {

constexpr int kUsualSectors = 3;

// A speed that falls and rises again by less than this trembles.
constexpr double kDipMps = 5 / 3.6;

struct Minimum {
  double place_m = 0;
  double speed_mps = 0;
};

// Where the speed has fallen by kDipMps before it rises by as much.
std::vector<Minimum> dips_of(const LapLine& line) {
  std::vector<Minimum> dips;
  bool is_falling = false;
  double highest = line.points().front().speed_mps;
  Minimum lowest{0, highest};
  for (const LapLine::Point& point : line.points()) {
    if (is_falling) {
      if (point.speed_mps < lowest.speed_mps) lowest = {point.place_m, point.speed_mps};
      if (point.speed_mps < lowest.speed_mps + kDipMps) continue;
      dips.push_back(lowest);
      is_falling = false;
      highest = point.speed_mps;
    } else {
      highest = std::max(highest, point.speed_mps);
      if (point.speed_mps > highest - kDipMps) continue;
      is_falling = true;
      lowest = {point.place_m, point.speed_mps};
    }
  }
  return dips;
}

Minimum slowest_near(const LapLine& line, double place_m) {
  constexpr double kReachM = 50;
  Minimum slowest{place_m, line.speed_at(place_m)};
  for (const LapLine::Point& point : line.points()) {
    if (point.place_m < place_m - kReachM || point.place_m > place_m + kReachM) continue;
    if (point.speed_mps < slowest.speed_mps) slowest = {point.place_m, point.speed_mps};
  }
  return slowest;
}

// Moments of the split marks since the lap's start, and its end.
std::vector<double> split_ends(const Session& session, const Lap& lap) {
  std::vector<double> ends;
  const SRkLap* found = nullptr;
  if (find_lap(inside_of(session), lap.index(), &found) != LapLookup::kFound) return ends;
  for (const auto& [number, split] : found->splits) {
    if (split == nullptr) continue;
    const double end_s = static_cast<double>(static_cast<i64>(split->end - found->start)) * 1e-6;
    if (end_s > 0 && end_s < lap.duration_s) ends.push_back(end_s);
  }
  std::sort(ends.begin(), ends.end());
  // The piece behind the last mark is a split too, without a mark of its own.
  ends.erase(std::unique(ends.begin(), ends.end()), ends.end());
  if (!ends.empty()) ends.push_back(lap.duration_s);
  return ends;
}

}  // namespace

std::vector<DeltaPoint> deltas_between(const LapLine& reference, const LapLine& other, double step_m) {
  std::vector<DeltaPoint> deltas;
  const double length_m = reference.length_m();
  for (std::size_t i = 0;; ++i) {
    const double place_m = std::min(static_cast<double>(i) * step_m, length_m);
    // At the line the marks tell the times, also where somebody stands on it.
    const double delta_s = i == 0                ? 0
                           : place_m == length_m ? other.duration_s() - reference.duration_s()
                                                 : other.time_at(place_m) - reference.time_at(place_m);
    deltas.push_back({place_m, delta_s, reference.speed_at(place_m), other.speed_at(place_m)});
    if (place_m >= length_m) return deltas;
  }
}

std::vector<Gain> largest_gains(const std::vector<DeltaPoint>& deltas) {
  constexpr std::size_t kMost = 10;
  std::vector<Gain> gains;
  for (std::size_t i = 1; i < deltas.size(); ++i) {
    gains.push_back({deltas[i - 1].place_m, deltas[i].place_m, deltas[i].delta_s - deltas[i - 1].delta_s});
  }
  std::stable_sort(gains.begin(), gains.end(),
                   [](const Gain& a, const Gain& b) { return std::abs(a.lost_s) > std::abs(b.lost_s); });
  gains.resize(std::min(gains.size(), kMost));
  return gains;
}

std::vector<Apex> apexes_of(const LapLine& reference, const LapLine& other) {
  std::vector<Apex> apexes;
  for (const Minimum& dip : dips_of(reference)) {
    const Minimum near = slowest_near(other, dip.place_m);
    apexes.push_back({dip.place_m, dip.speed_mps, near.place_m, near.speed_mps});
  }
  return apexes;
}

SectorPlan plan_sectors(const Session& session, const Lap& lap, int equal_parts) {
  if (equal_parts > 0) return {static_cast<std::size_t>(equal_parts), false};
  const std::size_t marked = split_ends(session, lap).size();
  return marked > 0 ? SectorPlan{marked, true} : SectorPlan{kUsualSectors, false};
}

std::optional<std::vector<double>> sector_times(const SectorPlan& plan, const Session& session, const Lap& lap,
                                                const LapLine& line, double length_m) {
  std::vector<double> ends;
  if (plan.by_splits) {
    ends = split_ends(session, lap);
    if (ends.size() != plan.count) return std::nullopt;
  } else {
    for (std::size_t i = 1; i < plan.count; ++i) {
      ends.push_back(line.time_at(length_m * static_cast<double>(i) / static_cast<double>(plan.count)));
    }
    ends.push_back(line.duration_s());
  }
  for (std::size_t i = ends.size() - 1; i > 0; --i) ends[i] -= ends[i - 1];
  return ends;
}

std::vector<IdealSector> ideal_sectors(const SectorPlan& plan, LapSource* source, const ReferenceLine& reference) {
  std::vector<IdealSector> best;
  for (const Lap& lap : source->session().laps()) {
    if (!lap.finished || lap.duration_s <= 0) continue;
    // The marks tell their times themselves.
    const LapLine line = plan.by_splits ? LapLine() : reference.lay(source, lap).line;
    const auto times = sector_times(plan, source->session(), lap, line, reference.line().length_m());
    if (!times) continue;
    best.resize(plan.count);
    for (std::size_t i = 0; i < plan.count; ++i) {
      if (best[i].lap == 0 || (*times)[i] < best[i].time_s) best[i] = {lap.number, (*times)[i]};
    }
  }
  return best;
}

}  // namespace traguardo::tool
