// SPDX-License-Identifier: MIT
// Which channels a simulated logger records, how it samples them and which frames carry them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "simulator/car.h"
#include "simulator/random.h"
#include "simulator/simulator.h"
#include "wire/samples.h"

namespace traguardo::simulator {

using wire::Format;

// What a channel measures.
enum class Signal {
  rpm,
  gear,
  throttle_pct,
  speed_kmh,
  brake_bar,
  steering_mm,
  lateral_g,
  inline_g,
  vertical_g,
  yaw_rate_dps,
  water_c,
  oil_c,
  exhaust_c,
  air_c,
  oil_bar,
  battery_mv,
  lambda,
  gear_barrel_mv,
  suspension_mm,
  distance_m,
  lap_time_ms,
  gap_to_best_ms,
  switches,
  status_code,
  torque_nm,
  shaft_rpm,
  junction_c,               // where the thermocouple ends in the logger
  exhaust_over_junction_c,  // what a thermocouple feels
  airbox_mbar,
  auxiliary,  // any further channel: an oscillation of its own
};

enum class Carrier { single, block, group, staggered, chunked };

// Channel types as a channel record has them.
enum class ChannelType : std::uint32_t { analogue = 1, digital = 2, ecu = 3, lap_time = 6, gear = 8 };

struct PlannedChannel {
  std::string name;
  std::uint32_t function;  // the function word: quantity, object, position, sides
  ChannelType type;
  Format format;
  int rate_hz;  // a divisor of 1000
  Carrier carrier;
  int set;  // which group or staggered set it belongs to
  Signal signal;
};

// The usual set, cut or filled up to the number that the options ask for, with their frames and rate.
std::vector<PlannedChannel> plan_channels(const SimulationOptions& options);

// An auxiliary channel swings so far to both sides of zero.
inline constexpr double kAuxiliaryReach = 110;
// The name of channel number `number` beyond the usual set.
std::string auxiliary_name(std::size_t number);

// The value of a signal on channel number `number`, with the noise of its sensor.
double measure(Signal signal, std::size_t number, const CarState& car, Random& noise);
// The same in the channel's stored unit.
double measure(const PlannedChannel& channel, std::size_t number, const CarState& car, Random& noise);

}  // namespace traguardo::simulator
