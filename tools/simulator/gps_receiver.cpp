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

Bytes GpsReceiver::solution(const CarState& car, std::uint64_t tick, std::uint32_t clock_ms) {
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

  Bytes record(kRecordSize, 0);
  Byte* const at = record.data();
  put_u32(at, clock_ms);
  put_u32(at + 4, static_cast<std::uint32_t>(gps_ms % kWeekMs));
  put_u16(at + 12, kGpsWeek + static_cast<std::uint32_t>(gps_ms / kWeekMs));
  put_u8(at + 14, has_fix ? 3u : 0u);
  put_u8(at + 15, has_fix ? 0x0Du : 0u);
  if (has_fix) {
    put_i32(at + 16, in_hundredths(position.x));
    put_i32(at + 20, in_hundredths(position.y));
    put_i32(at + 24, in_hundredths(position.z));
    put_u32(at + 28, static_cast<std::uint32_t>(120 + 30 * car.waves[1]));
    put_i32(at + 32, in_hundredths(velocity.x));
    put_i32(at + 36, in_hundredths(velocity.y));
    put_i32(at + 40, in_hundredths(velocity.z));
    put_u32(at + 44, static_cast<std::uint32_t>(20 + 5 * car.waves[2]));
    put_u16(at + 48, static_cast<std::uint32_t>(150 + 20 * car.waves[0]));
  }
  put_u8(at + 51, has_fix ? static_cast<std::uint32_t>(11 + 2 * car.waves[0]) : 2u);
  return record;
}

}  // namespace traguardo::simulator
