// SPDX-License-Identifier: MIT
// The GPS receiver of a simulated car: a navigation solution ten times a second.
#pragma once

#include <cstdint>

#include "simulator/car.h"
#include "simulator/place_on_earth.h"
#include "simulator/random.h"
#include "simulator/simulator.h"
#include "wire/qlt.h"

namespace traguardo::simulator {

class GpsReceiver {
 public:
  static constexpr std::uint64_t kPeriodMs = 100;

  explicit GpsReceiver(const SimulationOptions& options);

  // The solution `tick` milliseconds into the session.
  wire::GpsSolution solution(const CarState& car, std::uint64_t tick, std::uint32_t clock_ms);

 private:
  bool exact_;
  PlaceOnEarth ground_;
  Random random_;
};

}  // namespace traguardo::simulator
