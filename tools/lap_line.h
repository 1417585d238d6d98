// SPDX-License-Identifier: MIT
// Laps laid on each other: where a lap was at each moment, measured along a reference lap.
#pragma once

#include <vector>

#include "distance.h"
#include "inside.h"
#include "session.h"

namespace traguardo::tool {

// A lap along the reference lap: moments since its start, and speeds, at ascending places.
class LapLine {
 public:
  void add(double place_m, double time_s, double speed_mps);

  double length_m() const { return points_.empty() ? 0 : points_.back().place_m; }
  double duration_s() const { return points_.empty() ? 0 : points_.back().time_s; }
  // Between the points in a straight line; held to the ends of the lap.
  double time_at(double place_m) const;
  double speed_at(double place_m) const;
  // The place of a moment.
  double place_at(double time_s) const;

  struct Point {
    double place_m = 0;
    double time_s = 0;
    double speed_mps = 0;
  };
  // At least two but in a line that is only being made.
  const std::vector<Point>& points() const { return points_; }

 private:
  std::vector<Point> points_;
};

// Where the receiver saw the car in a lap.
struct LapPlace {
  double x_m = 0;
  double y_m = 0;
  double z_m = 0;
  double time_s = 0;  // since the lap's start
  double own_m = 0;   // the lap's own way until then; below 0 in front of the lap
};

// What the laps of a session are made of.
class LapSource {
 public:
  // speed: of speed_channel().
  LapSource(const Session& session, const Channel& speed);

  const Session& session() const { return session_; }
  // A lap's own way as its speed tells it. Throws Failure for a lap in which the car doesn't move.
  LapLine driven(const Lap& lap);
  // The solutions of a lap with some in front of it and behind, since the ends of another one may lie there.
  std::vector<LapPlace> places(const Lap& lap, const LapLine& own) const;

 private:
  const Session& session_;
  DistanceWalk walk_;
  std::vector<const SGpsRecord*> solutions_;  // by their times
};

// A lap on which others are laid: by the nearest place of their GPS on this one's where both have GPS, else by their
// distance, scaled to this one's length. All begin and end at the line, so their ends lie on each other.
class ReferenceLine {
 public:
  ReferenceLine(LapSource* source, const Lap& lap);

  const LapLine& line() const { return line_; }
  struct Laid {
    LapLine line;
    bool by_places = false;
  };
  Laid lay(LapSource* source, const Lap& lap) const;

 private:
  // By how much a lap's places run ahead of what its scaled distance says.
  struct Lead {
    double time_s = 0;
    double ahead_m = 0;
  };
  std::vector<Lead> leads_of(const std::vector<LapPlace>& places, double scale) const;
  bool nearest(const LapPlace& place, double expected_m, double* along_m) const;

  LapLine line_;
  std::vector<LapPlace> places_;
};

}  // namespace traguardo::tool
