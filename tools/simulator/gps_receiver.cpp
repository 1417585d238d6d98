// SPDX-License-Identifier: MIT
#include "simulator/gps_receiver.h"

#include <cmath>

#include "simulator/session_header.h"

namespace traguardo::simulator {

namespace {

constexpr std::uint64_t kColdStartMs = 2000;  // until there is a fix
constexpr std::uint32_t kWeekMs = 7u * 24 * 3600 * 1000;

std::int32_t in_hundredths(double value) {
  return static_cast<std::int32_t>(std::floor(value * 100 + 0.5));
}

}  // namespace

GpsReceiver::GpsReceiver(const SimulationOptions& options)
    : exact_(options.circle_radius_m > 0),
      ground_(options.latitude_deg, options.longitude_deg, options.altitude_m),
      random_(options.seed ^ 0x6B5u) {}

wire::GpsSolution GpsReceiver::solution(const CarState& car, std::uint64_t tick, std::uint32_t clock_ms) {
  const bool has_fix = exact_ || tick >= kColdStartMs;
  // The position wanders by some decimetres, the velocity trembles by some centimetres per second.
  const double wander = exact_ ? 0 : 0.3;
  const double tremble = exact_ ? 0 : 0.02;
  const double heading = car.place.heading_rad;
  const Vector3 position =
      ground_.position(car.place.east_m + wander * car.waves[0], car.place.north_m + wander * car.waves[1] * 0.5,
                       car.place.up_m + wander * (car.waves[0] + car.waves[1]));
  const double east_error = tremble * random_.between(-1, 1);
  const double north_error = tremble * random_.between(-1, 1);
  const double up_error = tremble * random_.between(-1, 1);
  const Vector3 velocity =
      ground_.direction(car.speed_mps * std::cos(heading) + east_error, car.speed_mps * std::sin(heading) + north_error,
                        car.speed_mps * car.place.slope + up_error);
  const std::uint64_t gps_ms = kGpsTimeOfWeekMs + tick;

  wire::GpsSolution solution;
  solution.time_ms = clock_ms;
  solution.time_of_week_ms = static_cast<std::uint32_t>(gps_ms % kWeekMs);
  solution.week = static_cast<std::int16_t>(kGpsWeek + gps_ms / kWeekMs);
  if (!has_fix) {
    solution.fix = 0;
    solution.x_cm = solution.y_cm = solution.z_cm = 0;
    solution.position_accuracy_cm = solution.speed_accuracy_cm_s = 0;
    solution.dop = 0;
    solution.satellites = 2;
    return solution;
  }
  solution.flags = 0x0D;
  solution.x_cm = in_hundredths(position.x);
  solution.y_cm = in_hundredths(position.y);
  solution.z_cm = in_hundredths(position.z);
  solution.position_accuracy_cm = static_cast<std::uint32_t>(120 + 30 * car.waves[1]);
  solution.vx_cm_s = in_hundredths(velocity.x);
  solution.vy_cm_s = in_hundredths(velocity.y);
  solution.vz_cm_s = in_hundredths(velocity.z);
  solution.speed_accuracy_cm_s = static_cast<std::uint32_t>(20 + 5 * car.waves[2]);
  solution.dop = static_cast<std::uint16_t>(150 + 20 * car.waves[0]);
  solution.satellites = static_cast<std::uint8_t>(11 + 2 * car.waves[0]);
  return solution;
}

}  // namespace traguardo::simulator
