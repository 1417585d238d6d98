// SPDX-License-Identifier: MIT
#include "simulator/circuit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "simulator/random.h"

namespace traguardo::simulator {

namespace {

constexpr double kTurn = 2 * std::numbers::pi;

// The centre line in polar form: a circle with waves on it.
struct Wave {
  double order;
  double amplitude;
  double phase;
};

struct Outline {
  double radius_m;
  std::array<Wave, 6> waves;
};

Outline random_outline(std::uint64_t seed) {
  Random random(seed);
  Outline outline{};
  outline.radius_m = random.between(480.0, 600.0);
  constexpr std::array<Wave, 6> kLargest = {
      {{2, 0.24, 0}, {3, 0.17, 0}, {4, 0.09, 0}, {5, 0.06, 0}, {8, 0.03, 0}, {11, 0.015, 0}}};
  for (std::size_t i = 0; i < kLargest.size(); ++i) {
    outline.waves[i].order = kLargest[i].order;
    outline.waves[i].amplitude = kLargest[i].amplitude * random.between(0.5, 1.0);
    outline.waves[i].phase = random.between(0.0, kTurn);
  }
  return outline;
}

CircuitPoint outline_point(const Outline& outline, double angle) {
  double r = 1;
  double first = 0;  // derivatives by the angle
  double second = 0;
  for (const Wave& wave : outline.waves) {
    const double phase = wave.order * angle + wave.phase;
    r += wave.amplitude * std::cos(phase);
    first -= wave.amplitude * wave.order * std::sin(phase);
    second -= wave.amplitude * wave.order * wave.order * std::cos(phase);
  }
  r *= outline.radius_m;
  first *= outline.radius_m;
  second *= outline.radius_m;

  CircuitPoint point;
  point.east_m = r * std::cos(angle);
  point.north_m = r * std::sin(angle);
  const double east_rate = first * std::cos(angle) - r * std::sin(angle);
  const double north_rate = first * std::sin(angle) + r * std::cos(angle);
  point.heading_rad = std::atan2(north_rate, east_rate);
  const double rate = std::hypot(east_rate, north_rate);
  point.curvature_per_m = (r * r + 2 * first * first - r * second) / (rate * rate * rate);
  return point;
}

double straightest_angle(const Outline& outline) {
  constexpr int kSteps = 4096;
  double best = 0;
  double least = std::abs(outline_point(outline, 0).curvature_per_m);
  for (int i = 1; i < kSteps; ++i) {
    const double angle = kTurn * i / kSteps;
    const double curvature = std::abs(outline_point(outline, angle).curvature_per_m);
    if (curvature < least) {
      least = curvature;
      best = angle;
    }
  }
  return best;
}

// Hills that come back to their start.
void add_hills(std::vector<CircuitPoint>& points) {
  const std::size_t segments = points.size() - 1;
  for (std::size_t i = 0; i <= segments; ++i) {
    const double turn = kTurn * static_cast<double>(i) / static_cast<double>(segments);
    points[i].up_m = 6.0 * std::sin(2 * turn) + 2.0 * std::sin(5 * turn);
  }
}

void measure_slopes(std::vector<CircuitPoint>& points, double segment_m) {
  const std::size_t segments = points.size() - 1;
  for (std::size_t i = 0; i < segments; ++i) {
    const double before = points[i == 0 ? segments - 1 : i - 1].up_m;
    points[i].slope = (points[i + 1].up_m - before) / (2 * segment_m);
  }
  points[segments].slope = points[0].slope;
}

void unwrap_headings(std::vector<CircuitPoint>& points) {
  for (std::size_t i = 1; i < points.size(); ++i) {
    while (points[i].heading_rad - points[i - 1].heading_rad > std::numbers::pi) points[i].heading_rad -= kTurn;
    while (points[i].heading_rad - points[i - 1].heading_rad < -std::numbers::pi) points[i].heading_rad += kTurn;
  }
}

double between(double a, double b, double share) {
  return a + (b - a) * share;
}

}  // namespace

Circuit Circuit::winding(std::uint64_t seed) {
  const Outline outline = random_outline(seed);
  const double start = straightest_angle(outline);

  // The length at fine steps of the angle, to find the angles that lie at equal distances.
  constexpr std::size_t kSteps = 16384;
  std::vector<double> length(kSteps + 1, 0.0);
  CircuitPoint previous = outline_point(outline, start);
  for (std::size_t i = 1; i <= kSteps; ++i) {
    const double angle = start + kTurn * static_cast<double>(i) / static_cast<double>(kSteps);
    const CircuitPoint point = outline_point(outline, angle);
    length[i] = length[i - 1] + std::hypot(point.east_m - previous.east_m, point.north_m - previous.north_m);
    previous = point;
  }

  Circuit circuit;
  const std::size_t segments = static_cast<std::size_t>(length[kSteps]);
  circuit.segment_m_ = length[kSteps] / static_cast<double>(segments);
  circuit.points_.reserve(segments + 1);
  std::size_t step = 0;
  for (std::size_t i = 0; i <= segments; ++i) {
    const double distance = circuit.segment_m_ * static_cast<double>(i);
    while (step + 1 < kSteps && length[step + 1] < distance) ++step;
    const double share = std::clamp((distance - length[step]) / (length[step + 1] - length[step]), 0.0, 1.0);
    const double angle = start + kTurn * (static_cast<double>(step) + share) / static_cast<double>(kSteps);
    circuit.points_.push_back(outline_point(outline, angle));
  }
  unwrap_headings(circuit.points_);
  add_hills(circuit.points_);
  measure_slopes(circuit.points_, circuit.segment_m_);
  return circuit;
}

Circuit Circuit::circle(double radius_m) {
  Circuit circuit;
  const double length = kTurn * radius_m;
  const std::size_t segments = std::max<std::size_t>(360, static_cast<std::size_t>(length));
  circuit.segment_m_ = length / static_cast<double>(segments);
  circuit.points_.resize(segments + 1);
  for (std::size_t i = 0; i <= segments; ++i) {
    const double angle = kTurn * static_cast<double>(i) / static_cast<double>(segments);
    CircuitPoint& point = circuit.points_[i];
    point.east_m = radius_m * std::cos(angle);
    point.north_m = radius_m * std::sin(angle);
    point.heading_rad = angle + kTurn / 4;
    point.curvature_per_m = 1 / radius_m;
  }
  return circuit;
}

CircuitPoint Circuit::at(double distance_m) const {
  const double place = std::clamp(distance_m / segment_m_, 0.0, static_cast<double>(segments()));
  const std::size_t i = std::min(static_cast<std::size_t>(place), segments() - 1);
  const double share = place - static_cast<double>(i);
  const CircuitPoint& a = points_[i];
  const CircuitPoint& b = points_[i + 1];
  CircuitPoint point;
  point.east_m = between(a.east_m, b.east_m, share);
  point.north_m = between(a.north_m, b.north_m, share);
  point.up_m = between(a.up_m, b.up_m, share);
  point.heading_rad = between(a.heading_rad, b.heading_rad, share);
  point.curvature_per_m = between(a.curvature_per_m, b.curvature_per_m, share);
  point.slope = between(a.slope, b.slope, share);
  return point;
}

}  // namespace traguardo::simulator
