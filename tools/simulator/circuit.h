// SPDX-License-Identifier: MIT
// A closed circuit as a row of points at equal distances along its centre line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace traguardo::simulator {

struct CircuitPoint {
  double east_m = 0;
  double north_m = 0;
  double up_m = 0;
  double heading_rad = 0;      // anticlockwise from east; runs on over a lap
  double curvature_per_m = 0;  // positive in a left-hand bend
  double slope = 0;            // metres up per metre along
};

class Circuit {
 public:
  // A circuit of three to five kilometres, another one for each seed; its line lies on its straightest piece.
  static Circuit winding(std::uint64_t seed);
  // A level circle, driven anticlockwise.
  static Circuit circle(double radius_m);

  // Points 0 to segments(); the last is the first again, one turn further in heading.
  std::size_t segments() const { return points_.size() - 1; }
  double segment_m() const { return segment_m_; }
  double length_m() const { return segment_m_ * static_cast<double>(segments()); }
  const CircuitPoint& point(std::size_t i) const { return points_[i]; }
  // Between the points; the distance is held to 0 .. length_m().
  CircuitPoint at(double distance_m) const;

 private:
  std::vector<CircuitPoint> points_;
  double segment_m_ = 1;
};

}  // namespace traguardo::simulator
