// SPDX-License-Identifier: MIT
#include "units/packet_readers.h"

#include <cmath>

#include "geodesy/geodesy.h"
#include "units/mylaps_bits.h"

namespace traguardo::packet_readers {
namespace {

// Places in a receiver packet without the logger time in front.
constexpr std::size_t kFix = 10;
constexpr std::size_t kPosition = 12;
constexpr std::size_t kVelocity = 28;
constexpr std::size_t kSatellites = 47;
constexpr std::size_t kLoggerTime = 4;
constexpr std::size_t kLapStatus = 24;

bool has_position(const u8* body) {
  return body[kFix] >= 3 && body[kSatellites] >= 4;
}

// Single precision throughout, in this order: cm/s to km/h, then the unit.
float speed(const u8* body, float gain, float offset, u32* status) {
  *status = kStatusGood;
  if (!has_position(body)) return 0.0F;
  const float x = static_cast<float>(load_i32(body + kVelocity));
  const float y = static_cast<float>(load_i32(body + kVelocity + 4));
  const float z = static_cast<float>(load_i32(body + kVelocity + 8));
  return std::sqrt(x * x + y * y + z * z) * 0.036F * gain + offset;
}

template <double Geodetic::*kComponent>
float coordinate(const u8* body, float gain, float offset, u32* status) {
  if (!has_position(body)) {
    *status = kStatusNoValue;
    return 0.0F;
  }
  *status = kStatusGood;
  const double x = load_i32(body + kPosition) * 0.01;
  const double y = load_i32(body + kPosition + 4) * 0.01;
  const double z = load_i32(body + kPosition + 8) * 0.01;
  return static_cast<float>(geodetic_in_one_step({x, y, z}).*kComponent) * gain + offset;
}

float plain(u32 value, float gain, float offset, u32* status) {
  *status = kStatusGood;
  return static_cast<float>(value) * gain + offset;
}

float timing_value(bool is_good, i64 milliseconds, float gain, float offset, u32* status) {
  if (!is_good) {
    *status = kStatusBad;
    return 0.0F;
  }
  *status = kStatusGood;
  return static_cast<float>(milliseconds) * gain + offset;
}

float gap(u32 word, float gain, float offset, u32* status) {
  const mylaps::Gap value = mylaps::gap_of(word);
  return timing_value(!value.is_error(), value.milliseconds(), gain, offset, status);
}

}  // namespace

float gps_zep_speed(const u8* sample, float gain, float offset, u32* status) {
  return speed(sample + kLoggerTime, gain, offset, status);
}

float gps_ubx_speed(const u8* sample, float gain, float offset, u32* status) {
  return speed(sample, gain, offset, status);
}

float gps_zep_latitude(const u8* sample, float gain, float offset, u32* status) {
  return coordinate<&Geodetic::latitude_deg>(sample + kLoggerTime, gain, offset, status);
}

float gps_zep_longitude(const u8* sample, float gain, float offset, u32* status) {
  return coordinate<&Geodetic::longitude_deg>(sample + kLoggerTime, gain, offset, status);
}

float gps_zep_altitude(const u8* sample, float gain, float offset, u32* status) {
  return coordinate<&Geodetic::height_m>(sample + kLoggerTime, gain, offset, status);
}

float best_lap_flag(const u8* sample, float gain, float offset, u32* status) {
  return plain(sample[kLapStatus] & 1, gain, offset, status);
}

float best_split_flag(const u8* sample, float gain, float offset, u32* status) {
  return plain(sample[kLapStatus] >> 1 & 1, gain, offset, status);
}

float lap_1g_lap_number(const u8* sample, float gain, float offset, u32* status) {
  return plain(load_u16(sample + 4) & 0xFFF, gain, offset, status);
}

float lap_1g_split_number(const u8* sample, float gain, float offset, u32* status) {
  return plain(load_u16(sample + 4) >> 12, gain, offset, status);
}

float odometer_time(const u8* sample, float gain, float offset, u32* status) {
  const u32 seconds = load_u32(sample);
  *status = sentinel_status(seconds);
  return *status != kStatusGood ? 0.0F : static_cast<float>(seconds) * gain + offset;
}

float mylaps_time_ms(const u8* sample, float gain, float offset, u32* status) {
  return timing_value(true, mylaps::timing_of(sample).time_ms(), gain, offset, status);
}

float mylaps_field_ms(const u8* sample, float gain, float offset, u32* status) {
  const mylaps::Timing timing = mylaps::timing_of(sample);
  return timing_value(!mylaps::is_error(timing.field), timing.field_ms(), gain, offset, status);
}

float mylaps_count(const u8* sample, float gain, float offset, u32* status) {
  const mylaps::Timing timing = mylaps::timing_of(sample);
  return timing_value(!mylaps::is_error(timing.count), timing.count, gain, offset, status);
}

float mylaps_position(const u8* sample, float gain, float offset, u32* status) {
  return plain(mylaps::timing_of(sample).position, gain, offset, status);
}

float mylaps_first_gap_ms(const u8* sample, float gain, float offset, u32* status) {
  return gap(load_u32(sample), gain, offset, status);
}

float mylaps_second_gap_ms(const u8* sample, float gain, float offset, u32* status) {
  return gap(load_u32(sample + 4), gain, offset, status);
}

}  // namespace traguardo::packet_readers
