// SPDX-License-Identifier: MIT
#include "simulator/car.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace traguardo::simulator {

namespace {

constexpr double kTopSpeed = 80.0;         // m/s
constexpr double kLateralGrip = 12.0;      // m/s2
constexpr double kBraking = 10.0;          // m/s2
constexpr double kTraction = 6.0;          // m/s2
constexpr double kPowerPerMass = 300.0;    // W/kg
constexpr double kDragPerSpeed2 = 0.0011;  // 1/m
constexpr double kWheelbase = 2.6;         // m
constexpr double kRackTravel = 300.0;      // mm per radian of the front wheels
constexpr double kIdleRpm = 1150.0;
constexpr double kShiftUpRpm = 7600.0;
constexpr double kShiftDownRpm = 4600.0;
constexpr double kBrakeFullBar = 85.0;
// Engine speed per m/s of car speed in each gear.
constexpr double kRpmPerSpeed[] = {345.0, 238.0, 181.0, 144.0, 117.0, 95.0};
constexpr int kGears = 6;
constexpr double kRadiansPerDegree = std::numbers::pi / 180;

double drag(double speed) {
  return kDragPerSpeed2 * speed * speed;
}

double full_throttle(double speed) {
  return std::min(kTraction, kPowerPerMass / std::max(speed, 1.0));
}

// What the bends allow.
std::vector<double> bend_speeds(const Circuit& circuit) {
  std::vector<double> speed(circuit.segments() + 1);
  for (std::size_t i = 0; i < speed.size(); ++i) {
    const double curvature = std::max(std::abs(circuit.point(i).curvature_per_m), 1e-6);
    speed[i] = std::min(kTopSpeed, std::sqrt(kLateralGrip / curvature));
  }
  return speed;
}

// The fastest the car can go around the lap without a start within such bounds: what the engine gains from each point
// on, then what the brakes must have lost before the next bend. Twice around, as the end meets the start.
std::vector<double> flying_lap(const Circuit& circuit, std::vector<double> speed) {
  const std::size_t n = circuit.segments();
  const double ds = circuit.segment_m();
  for (int round = 0; round < 2; ++round) {
    for (std::size_t i = 0; i < n; ++i) {
      const double gain = full_throttle(speed[i]) - drag(speed[i]);
      speed[i + 1] = std::min(speed[i + 1], std::sqrt(std::max(0.0, speed[i] * speed[i] + 2 * gain * ds)));
    }
    speed[0] = speed[n];
  }
  for (int round = 0; round < 2; ++round) {
    for (std::size_t i = n; i-- > 0;) {
      speed[i] = std::min(speed[i], std::sqrt(speed[i + 1] * speed[i + 1] + 2 * kBraking * ds));
    }
    speed[n] = speed[0];
  }
  return speed;
}

// The points of a lap where the speed is lowest between two places that are faster by a good deal.
std::vector<std::size_t> apexes_of(const std::vector<double>& speed) {
  constexpr double kDip = 1.5;
  std::vector<std::size_t> apexes;
  double highest = speed[0];
  std::size_t lowest = 0;
  bool is_falling = false;
  for (std::size_t i = 0; i < speed.size(); ++i) {
    if (is_falling && speed[i] < speed[lowest]) lowest = i;
    if (is_falling && speed[i] > speed[lowest] + kDip) {
      apexes.push_back(lowest);
      is_falling = false;
      highest = speed[i];
    }
    highest = std::max(highest, speed[i]);
    if (is_falling || speed[i] > highest - kDip) continue;
    is_falling = true;
    lowest = i;
  }
  return apexes;
}

// A corner that is taken with care: most of it at its apex, none of it where the next piece begins.
void slow_down(const Circuit& circuit, std::size_t apex, double percent, std::vector<double>* bounds) {
  constexpr double kReachM = 60;
  const double slowest = (*bounds)[apex];
  for (std::size_t i = 0; i < bounds->size(); ++i) {
    const double apart = std::abs(static_cast<double>(i) - static_cast<double>(apex)) * circuit.segment_m() / kReachM;
    if (apart >= 1) continue;
    const double care = percent / 100 * (1 - apart * apart);
    (*bounds)[i] = std::min((*bounds)[i], slowest + ((*bounds)[i] - slowest) * apart) * (1 - care);
  }
}

// The same lap from a standstill at the line.
std::vector<double> from_standstill(const Circuit& circuit, std::vector<double> speed) {
  double reached = 0;
  for (std::size_t i = 0; i < speed.size(); ++i) {
    speed[i] = std::min(speed[i], reached);
    const double gain = full_throttle(speed[i]) - drag(speed[i]);
    reached = std::sqrt(std::max(0.0, speed[i] * speed[i] + 2 * gain * circuit.segment_m()));
  }
  return speed;
}

// A cheap stand-in for a sine of period 1.
double wave(double turns) {
  const double x = 2 * (turns - std::floor(turns)) - 1;
  return 4 * x * (1 - std::abs(x));
}

// One millisecond of a first-order lag.
double follow(double value, double target, double time_constant_s) {
  return value + (target - value) * 0.001 / time_constant_s;
}

}  // namespace

Car::Car(const Circuit& circuit, const SimulationOptions& options)
    : circuit_(circuit),
      random_(options.seed ^ 0xCA5u),
      constant_speed_mps_(options.circle_radius_m > 0 ? options.circle_speed_mps : 0),
      fuel_kg_(options.fuel_kg),
      keeps_truth_(options.keep_truth) {
  if (constant_speed_mps_ > 0) {
    fastest_.assign(circuit_.segments() + 1, constant_speed_mps_);
  } else {
    std::vector<double> bounds = bend_speeds(circuit_);
    fastest_ = flying_lap(circuit_, bounds);
    const std::vector<std::size_t> apexes = apexes_of(fastest_);
    for (const SlowCorner& slow : options.slow_corners) {
      const std::size_t corner = static_cast<std::size_t>(slow.corner);
      if (corner >= 1 && corner <= apexes.size()) {
        slow_down(circuit_, apexes[corner - 1], slow.percent, &bounds);
      }
    }
    if (!options.slow_corners.empty()) fastest_ = flying_lap(circuit_, bounds);
    for (const std::size_t apex : apexes) truth_.apexes_m.push_back(static_cast<double>(apex) * circuit_.segment_m());
  }
  truth_.length_m = circuit_.length_m();
  truth_.step_m = circuit_.segment_m() * DrivenTruth::kStepSegments;
  begin_lap(0);
}

// What the fuel leaves of the speed: each lap burns some of it.
double Car::burden() const {
  constexpr double kPerKg = 0.0004;
  constexpr double kPerLapKg = 2;
  return 1 - kPerKg * std::max(0.0, fuel_kg_ - kPerLapKg * laps_completed_);
}

void Car::keep_truth() {
  if (!keeps_truth_) return;
  std::vector<double>& moments = truth_.laps_s.emplace_back();
  for (std::size_t i = 0; i < times_.size(); i += DrivenTruth::kStepSegments) moments.push_back(times_[i]);
  moments.push_back(times_.back());
}

void Car::begin_lap(double start_s) {
  const std::size_t n = circuit_.segments();
  const bool first = times_.empty();
  lap_start_s_ = start_s;
  next_split_ = 1;
  segment_ = 0;
  speeds_ = fastest_;
  if (constant_speed_mps_ <= 0) {
    if (first) speeds_ = from_standstill(circuit_, std::move(speeds_));
    // Nobody drives a lap twice; the new pace comes in over the first hundred metres.
    const double last_pace = pace_;
    pace_ = random_.between(0.96, 1.0) * burden();
    for (std::size_t i = 0; i <= n; ++i) {
      const double share = std::min(1.0, circuit_.segment_m() * static_cast<double>(i) / 100.0);
      speeds_[i] *= last_pace + (pace_ - last_pace) * share;
    }
  }
  times_.assign(n + 1, 0.0);
  for (std::size_t i = 0; i < n; ++i) {
    times_[i + 1] = times_[i] + 2 * circuit_.segment_m() / (speeds_[i] + speeds_[i + 1]);
  }
}

double Car::next_passage_s() const {
  const std::size_t n = circuit_.segments();
  const std::size_t point = next_split_ == 1 ? n / 3 : next_split_ == 2 ? 2 * n / 3 : n;
  return lap_start_s_ + times_[point];
}

std::vector<Passage> Car::take_passages() {
  return std::exchange(passages_, {});
}

const CarState& Car::move_to(double time_s) {
  while (next_passage_s() <= time_s) {
    const double passage_s = next_passage_s();
    const bool line = next_split_ == 3;
    if (line) ++laps_completed_;
    passages_.push_back({passage_s, line ? 0 : next_split_, laps_completed_});
    if (!line) {
      ++next_split_;
      continue;
    }
    keep_truth();
    const double lap_s = passage_s - lap_start_s_;
    best_lap_s_ = best_lap_s_ > 0 ? std::min(best_lap_s_, lap_s) : lap_s;
    begin_lap(passage_s);
  }
  state_.time_s = time_s;
  state_.lap_time_s = time_s - lap_start_s_;
  move_along(state_.lap_time_s);
  drive_engine();

  const double driven = state_.lap_time_s / times_.back();
  state_.gap_to_best_s = best_lap_s_ > 0 ? (times_.back() - best_lap_s_) * driven : 0;
  state_.warmth = time_s / (time_s + 120.0);
  state_.waves[0] = wave(time_s * 0.07);
  state_.waves[1] = wave(time_s * 0.9);
  state_.waves[2] = wave(time_s * 7.3);
  state_.waves[3] = wave(time_s * 41.0);
  return state_;
}

void Car::move_along(double lap_time_s) {
  const std::size_t n = circuit_.segments();
  while (segment_ + 1 < n && lap_time_s >= times_[segment_ + 1]) ++segment_;
  // Within a segment the speed changes evenly with time.
  const double dt = times_[segment_ + 1] - times_[segment_];
  const double share = std::clamp((lap_time_s - times_[segment_]) / dt, 0.0, 1.0);
  const double v0 = speeds_[segment_];
  const double v1 = speeds_[segment_ + 1];
  const double along = dt * share * (v0 + (v1 - v0) * share / 2);
  const double lap_distance = circuit_.segment_m() * static_cast<double>(segment_) + along;

  state_.place = circuit_.at(lap_distance);
  state_.distance_m = circuit_.length_m() * laps_completed_ + lap_distance;
  state_.speed_mps = v0 + (v1 - v0) * share;
  state_.inline_mps2 = (v1 - v0) / dt;
  state_.lateral_mps2 = state_.speed_mps * state_.speed_mps * state_.place.curvature_per_m;
  state_.yaw_rate_dps = state_.speed_mps * state_.place.curvature_per_m / kRadiansPerDegree;
  const double wheel_angle =
      kWheelbase * state_.place.curvature_per_m * (1 + state_.speed_mps * state_.speed_mps / 2500.0);
  state_.steering_mm = follow(state_.steering_mm, kRackTravel * wheel_angle, 0.05);
}

void Car::drive_engine() {
  const double speed = state_.speed_mps;
  while (state_.gear < kGears && speed * kRpmPerSpeed[state_.gear - 1] > kShiftUpRpm) ++state_.gear;
  while (state_.gear > 1 && speed * kRpmPerSpeed[state_.gear - 1] < kShiftDownRpm) --state_.gear;
  // Below idle speed the clutch slips.
  const double geared_rpm = speed * kRpmPerSpeed[state_.gear - 1];
  state_.rpm = follow(state_.rpm, std::max(geared_rpm, kIdleRpm + 20 * state_.throttle_pct), 0.03);

  state_.shaft_rpm = speed * 60000.0 / kWheelCircumferenceMm * kAxleTeeth / kShaftTeeth;

  const double wanted = (state_.inline_mps2 + drag(speed)) / full_throttle(speed);
  state_.throttle_pct = follow(state_.throttle_pct, 100 * std::clamp(wanted, 0.0, 1.0), 0.08);
  const double braking = std::clamp(-(state_.inline_mps2 + drag(speed)) / kBraking, 0.0, 1.0);
  state_.brake_bar = follow(state_.brake_bar, kBrakeFullBar * braking, 0.06);
}

}  // namespace traguardo::simulator
