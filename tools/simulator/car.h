// SPDX-License-Identifier: MIT
// A car on a circuit: where it is at each millisecond, how it moves, and what its engine does.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "simulator/circuit.h"
#include "simulator/random.h"
#include "simulator/simulator.h"

namespace traguardo::simulator {

// The shaft turns the axle by two gears.
inline constexpr int kShaftTeeth = 17;
inline constexpr int kAxleTeeth = 53;
inline constexpr double kWheelCircumferenceMm = 1985.0;

struct CarState {
  double time_s = 0;
  double lap_time_s = 0;
  double distance_m = 0;  // since the start of the session
  CircuitPoint place;
  double speed_mps = 0;
  double inline_mps2 = 0;   // positive when it gains speed
  double lateral_mps2 = 0;  // positive in a left-hand bend
  double yaw_rate_dps = 0;
  double steering_mm = 0;  // travel of the rack
  double throttle_pct = 0;
  double brake_bar = 0;
  int gear = 1;
  double rpm = 0;
  double shaft_rpm = 0;            // behind the gearbox
  double gap_to_best_s = 0;        // of the running lap, scaled from the laps so far
  double warmth = 0;               // 0 with everything cold, towards 1 as the session goes on
  double waves[4] = {0, 0, 0, 0};  // slow and fast oscillations between -1 and 1, for whatever trembles
};

// The car has passed a timing line.
struct Passage {
  double time_s = 0;
  int split = 0;           // 1 and 2 within the lap; 0: the line
  int laps_completed = 0;  // this one included, at the line
};

class Car {
 public:
  Car(const Circuit& circuit, const SimulationOptions& options);

  // REQUIRES: called for each millisecond in turn.
  const CarState& move_to(double time_s);
  // What was passed since the last call.
  std::vector<Passage> take_passages();
  // Of the laps that are over.
  const DrivenTruth& truth() const { return truth_; }
  // When the running lap will be complete.
  double lap_end_s() const { return lap_start_s_ + times_.back(); }

 private:
  void begin_lap(double start_s);
  double burden() const;
  void keep_truth();
  double next_passage_s() const;
  void move_along(double lap_time_s);
  void drive_engine();

  const Circuit& circuit_;
  Random random_;
  double constant_speed_mps_;
  double fuel_kg_;
  bool keeps_truth_;
  DrivenTruth truth_;
  std::vector<double> fastest_;  // speed at each point of a flying lap
  std::vector<double> speeds_;   // of the running lap, at each point
  std::vector<double> times_;    // since its start
  double pace_ = 1;
  double lap_start_s_ = 0;
  int laps_completed_ = 0;
  int next_split_ = 1;
  double best_lap_s_ = 0;
  std::size_t segment_ = 0;
  std::vector<Passage> passages_;
  CarState state_;
};

}  // namespace traguardo::simulator
