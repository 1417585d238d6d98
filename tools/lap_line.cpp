// SPDX-License-Identifier: MIT
#include "lap_line.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "failure.h"
#include "support/table_rows.h"

namespace traguardo::tool {

namespace {

// The value of one field where another has that value; the points ascend by both.
template <typename Key, typename Value>
double looked_up(const std::vector<LapLine::Point>& points, double at, Key key, Value value) {
  const auto behind =
      std::partition_point(points.begin(), points.end(), [&](const LapLine::Point& point) { return point.*key < at; });
  if (behind == points.begin()) return points.front().*value;
  if (behind == points.end()) return points.back().*value;
  const LapLine::Point& before = *std::prev(behind);
  const double span = *behind.*key - before.*key;
  return span > 0 ? on_line(before.*value, *behind.*value, at - before.*key, span) : *behind.*value;
}

double square(double value) {
  return value * value;
}

}  // namespace

void LapLine::add(double place_m, double time_s, double speed_mps) {
  // Who stands or is thrown back doesn't lose the way that he has.
  const double reached = points_.empty() ? place_m : std::max(place_m, points_.back().place_m);
  points_.push_back({reached, time_s, speed_mps});
}

double LapLine::time_at(double place_m) const {
  return looked_up(points_, place_m, &Point::place_m, &Point::time_s);
}
double LapLine::speed_at(double place_m) const {
  return looked_up(points_, place_m, &Point::place_m, &Point::speed_mps);
}
double LapLine::place_at(double time_s) const {
  return looked_up(points_, time_s, &Point::time_s, &Point::place_m);
}

LapSource::LapSource(const Session& session, const Channel& speed)
    : session_(session), walk_(session, speed), solutions_(gps_solutions_of(inside_of(session))) {
  std::stable_sort(solutions_.begin(), solutions_.end(),
                   [](const SGpsRecord* a, const SGpsRecord* b) { return a->logger_time_ms() < b->logger_time_ms(); });
}

LapLine LapSource::driven(const Lap& lap) {
  LapLine line;
  walk_.start(to_us(lap.start_s), to_us(lap.start_s + lap.duration_s));
  DistanceWalk::Stretch stretch;
  while (walk_.next(&stretch)) {
    if (line.points().empty()) line.add(0, 0, stretch.speed_mps);
    line.add(stretch.end_m, stretch.end_s, stretch.end_mps);
  }
  if (line.length_m() <= 0) {
    throw Failure(fmt::format("the car doesn't move in lap {} of {}", lap.number, session_.path()));
  }
  // The lap ends where it ends, also where its speed has no sample at that moment.
  const LapLine::Point last = line.points().back();
  const double rest_s = lap.duration_s - last.time_s;
  if (rest_s > 0) line.add(last.place_m + last.speed_mps * rest_s, lap.duration_s, last.speed_mps);
  return line;
}

std::vector<LapPlace> LapSource::places(const Lap& lap, const LapLine& own) const {
  constexpr double kBesideS = 2;
  constexpr double kMetresPerCm = 0.01;
  const auto time_of = [&lap](const SGpsRecord* record) { return record->logger_time_ms() * 0.001 - lap.start_s; };
  std::vector<LapPlace> places;
  for (auto record = std::partition_point(solutions_.begin(), solutions_.end(),
                                          [&](const SGpsRecord* early) { return time_of(early) < -kBesideS; });
       record != solutions_.end() && time_of(*record) <= lap.duration_s + kBesideS; ++record) {
    LapPlace place;
    place.x_m = (*record)->ecef_x_cm() * kMetresPerCm;
    place.y_m = (*record)->ecef_y_cm() * kMetresPerCm;
    place.z_m = (*record)->ecef_z_cm() * kMetresPerCm;
    place.time_s = time_of(*record);
    const LapLine::Point& end = place.time_s < 0 ? own.points().front() : own.points().back();
    const double beyond_s = place.time_s - std::clamp(place.time_s, 0.0, own.duration_s());
    place.own_m = own.place_at(place.time_s) + end.speed_mps * beyond_s;
    places.push_back(place);
  }
  return places;
}

ReferenceLine::ReferenceLine(LapSource* source, const Lap& lap)
    : line_(source->driven(lap)), places_(source->places(lap, line_)) {}

// The nearest place of the reference that isn't far from the expected one: the way may come by the same place twice.
bool ReferenceLine::nearest(const LapPlace& place, double expected_m, double* along_m) const {
  constexpr double kFarAlongM = 150;
  constexpr double kFarBesideM = 50;
  double least = square(kFarBesideM);
  auto begin = std::partition_point(places_.begin(), places_.end(), [expected_m](const LapPlace& other) {
    return other.own_m < expected_m - kFarAlongM;
  });
  for (; begin < places_.end() - 1 && begin->own_m <= expected_m + kFarAlongM; ++begin) {
    const LapPlace& end = *std::next(begin);
    const double dx = end.x_m - begin->x_m;
    const double dy = end.y_m - begin->y_m;
    const double dz = end.z_m - begin->z_m;
    const double length2 = square(dx) + square(dy) + square(dz);
    const double along = (place.x_m - begin->x_m) * dx + (place.y_m - begin->y_m) * dy + (place.z_m - begin->z_m) * dz;
    const double share = length2 > 0 ? std::clamp(along / length2, 0.0, 1.0) : 0;
    const double apart2 = square(place.x_m - begin->x_m - share * dx) + square(place.y_m - begin->y_m - share * dy) +
                          square(place.z_m - begin->z_m - share * dz);
    if (apart2 >= least) continue;
    least = apart2;
    *along_m = on_line(begin->own_m, end.own_m, share, 1.0);
  }
  return least < square(kFarBesideM);
}

// A second's mean each, as single solutions tremble. Empty where too few places lie beside the reference.
std::vector<ReferenceLine::Lead> ReferenceLine::leads_of(const std::vector<LapPlace>& places, double scale) const {
  constexpr double kReachS = 0.5;
  std::vector<Lead> single;
  for (const LapPlace& place : places) {
    double along_m = 0;
    const double expected_m = place.own_m * scale;
    if (nearest(place, expected_m, &along_m)) single.push_back({place.time_s, along_m - expected_m});
  }
  if (single.size() < 2 || single.size() < places.size() / 2) return {};
  std::vector<Lead> smooth;
  std::size_t first = 0;
  for (const Lead& middle : single) {
    while (single[first].time_s < middle.time_s - kReachS) ++first;
    double sum = 0;
    std::size_t last = first;
    for (; last < single.size() && single[last].time_s <= middle.time_s + kReachS; ++last) sum += single[last].ahead_m;
    smooth.push_back({middle.time_s, sum / static_cast<double>(last - first)});
  }
  return smooth;
}

ReferenceLine::Laid ReferenceLine::lay(LapSource* source, const Lap& lap) const {
  const LapLine own = source->driven(lap);
  const double scale = line_.length_m() / own.length_m();
  std::vector<Lead> leads;
  if (places_.size() > 1) leads = leads_of(source->places(lap, own), scale);
  const auto lead_at = [&leads](double time_s) {
    const auto behind =
        std::partition_point(leads.begin(), leads.end(), [time_s](const Lead& lead) { return lead.time_s < time_s; });
    if (leads.empty()) return 0.0;
    if (behind == leads.begin()) return leads.front().ahead_m;
    if (behind == leads.end()) return leads.back().ahead_m;
    const Lead& before = *std::prev(behind);
    return on_line(before.ahead_m, behind->ahead_m, time_s - before.time_s, behind->time_s - before.time_s);
  };
  // At the line nobody leads: what the receiver says there is its own error, which goes off evenly over the lap.
  const double first_m = lead_at(0);
  const double last_m = lead_at(own.duration_s());
  Laid laid;
  laid.by_places = !leads.empty();
  for (const LapLine::Point& point : own.points()) {
    const double error_m = on_line(first_m, last_m, point.time_s, own.duration_s());
    const double place_m = point.place_m * scale + lead_at(point.time_s) - error_m;
    laid.line.add(std::clamp(place_m, 0.0, line_.length_m()), point.time_s, point.speed_mps);
  }
  return laid;
}

}  // namespace traguardo::tool
