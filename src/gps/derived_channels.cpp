// SPDX-License-Identifier: MIT
// Results are compared bit for bit: every formula keeps the order in which it is written here.
#include "gps/derived_channels.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "geodesy/geodesy.h"

namespace traguardo {
namespace {

constexpr double kStandardGravity = 9.806;
constexpr double kSlowestProductForGyro = 1.0;  // m^2/s^2
constexpr double kShortestIntervalForGyro = 0.001;
constexpr double kSlowestForAccelerations = 2.0;  // m/s

constexpr double kRadiansPerDegreeOfUnits = 0.0174532925199433;
constexpr double kLongestRadius = 100000.0;
constexpr double kShortestRadius = 1.0;

// The quantities of one good record. Gyro and accelerations belong to the interval up to the next record and stay 0 in
// the last one.
struct Row {
  double seconds = 0.0;
  Geodetic geodetic;
  Local position;
  Local velocity;
  double satellites = 0.0;
  double position_accuracy_m = 0.0;
  double speed_accuracy_m_s = 0.0;
  double heading_deg = 0.0;
  double horizontal_speed = 0.0;
  double total_speed = 0.0;
  double slope_deg = 0.0;
  double gyro_deg_s = 0.0;
  double lateral_g = 0.0;
  double longitudinal_g = 0.0;
};

double acos_degrees(double cosine) {
  return std::acos(cosine) * kDegreesPerRadian;
}

// -180 to 180 with 0 at north. Not a number at standstill, where there is no direction: kept, hosts see a gap there.
double heading_of(const Local& velocity, double horizontal_speed) {
  const double side = velocity.east < 0.0 ? -1.0 : 1.0;
  return side * acos_degrees(velocity.north / horizontal_speed);
}

// The climb of the path, positive uphill; 0 at standstill.
double slope_of(const Local& velocity, double horizontal_speed) {
  if (horizontal_speed == 0.0 && velocity.up == 0.0) return 0.0;
  return std::atan2(velocity.up, horizontal_speed) * kDegreesPerRadian;
}

Row row_of(const SGpsRecord& record, const LocalAxes& axes) {
  Row row;
  row.seconds = record.logger_time_ms() * 0.001;
  const Ecef position = record.position_m();
  const Ecef velocity = record.velocity_m_s();
  row.geodetic = geodetic_in_one_step(position);
  row.position = axes.turned(position);
  row.velocity = axes.turned(velocity);
  row.horizontal_speed = std::sqrt(row.velocity.east * row.velocity.east + row.velocity.north * row.velocity.north);
  row.total_speed = std::sqrt(velocity.x * velocity.x + velocity.y * velocity.y + velocity.z * velocity.z);
  row.heading_deg = heading_of(row.velocity, row.horizontal_speed);
  row.slope_deg = slope_of(row.velocity, row.horizontal_speed);
  row.satellites = record.satellites();
  row.position_accuracy_m = record.position_accuracy_cm() * 0.01;
  row.speed_accuracy_m_s = record.speed_accuracy_cm_s() * 0.01;
  return row;
}

double gyro_between(const Row& row, const Row& next, double dt) {
  const double speeds = row.horizontal_speed * next.horizontal_speed;
  if (!(speeds > kSlowestProductForGyro && dt > kShortestIntervalForGyro)) return 0.0;
  const Local& v = row.velocity;
  const Local& w = next.velocity;
  const double scalar = v.east * w.east + v.north * w.north;
  const double side = v.east * w.north > w.east * v.north ? -1.0 : 1.0;
  return acos_degrees(std::min(speeds, scalar) / speeds) * side / dt;
}

// No test of dt stands before the accelerations: two records at one time give infinity or not a number.
void set_dynamics(Row& row, const Row& next) {
  const double dt = next.seconds - row.seconds;
  row.gyro_deg_s = gyro_between(row, next, dt);
  if (!(next.total_speed > kSlowestForAccelerations)) return;
  const Local& v = row.velocity;
  const Local& w = next.velocity;
  const Local a{(w.east - v.east) / dt, (w.north - v.north) / dt, (w.up - v.up) / dt};
  row.longitudinal_g = (a.east * w.east + a.north * w.north + a.up * w.up) / next.total_speed / kStandardGravity;
  row.lateral_g = (a.east * w.north - a.north * w.east) / next.horizontal_speed / kStandardGravity;
}

void append(const Row& row, GpsRows& rows) {
  const u64 time_us = static_cast<u64>(truncate_to<i64>(row.seconds * 1000000.0));
  const u64 highest_before = rows.highest_times_us.empty() ? 0 : rows.highest_times_us.back();
  rows.times_us.push_back(time_us);
  rows.highest_times_us.push_back(std::max(highest_before, time_us));
  const auto add = [&rows](GpsChannel channel, double value) { rows.sources[channel].push_back(value); };
  add(kGpsSpeed, row.total_speed);
  add(kGpsNsat, row.satellites);
  add(kGpsLatAcc, row.lateral_g);
  add(kGpsLonAcc, row.longitudinal_g);
  add(kGpsSlope, row.slope_deg);
  add(kGpsHeading, row.heading_deg);
  add(kGpsGyro, row.gyro_deg_s);
  add(kGpsAltitude, row.geodetic.height_m);
  add(kGpsPosAccuracy, row.position_accuracy_m);
  add(kGpsSpdAccuracy, row.speed_accuracy_m_s);
  add(kGpsLatitude, row.geodetic.latitude_deg);
  add(kGpsLongitude, row.geodetic.longitude_deg);
  add(kGpsEast, row.position.east);
  add(kGpsNorth, row.position.north);
}

void reserve(GpsRows& rows, std::size_t count) {
  rows.times_us.reserve(count);
  rows.highest_times_us.reserve(count);
  for (u32 channel = 0; channel < kGpsChannelCount; ++channel) {
    if (channel != kGpsRadius) rows.sources[channel].reserve(count);
  }
}

// --- The grid ------------------------------------------------------------------------------------------------------

// The two records around a point of the grid. Both are the first one until that lies behind.
struct RecordPair {
  std::size_t previous = 0;
  std::size_t current = 0;
};

// Moves the pair up until its current record isn't earlier than t; false if the records run out.
bool move_up(const GpsRows& rows, u64 t, RecordPair& pair) {
  while (rows.times_us[pair.current] < t) {
    pair.previous = pair.current;
    ++pair.current;
    if (pair.current == rows.size()) return false;
  }
  return true;
}

float interpolated(const GpsRows& rows, u32 channel, const RecordPair& pair, u64 t) {
  const double previous = rows.sources[channel][pair.previous];
  const u64 previous_time = rows.times_us[pair.previous];
  const u64 current_time = rows.times_us[pair.current];
  // Satellites are counted, not measured.
  if (channel == kGpsNsat || previous_time == current_time) return static_cast<float>(previous);
  const double current = rows.sources[channel][pair.current];
  return static_cast<float>(previous + static_cast<double>(t - previous_time) * (current - previous) /
                                           static_cast<double>(current_time - previous_time));
}

void append_value(SGpsChannelOut& channel, float value) {
  channel.values.push_back(value);
  if (value < channel.smallest) channel.smallest = value;
  if (value > channel.largest) channel.largest = value;
}

void append_point(const GpsRows& rows, const RecordPair& pair, u64 t, std::vector<SGpsChannelOut>& channels) {
  for (u32 channel = 0; channel < kGpsChannelCount; ++channel) {
    if (channel != kGpsRadius) append_value(channels[channel], interpolated(rows, channel, pair, t));
  }
  append_value(channels[kGpsRadius], gps_radius(channels[kGpsSpeed].values.back(), channels[kGpsGyro].values.back()));
}

void append_points(const GpsRows& rows, u64 step, u64 start, std::vector<SGpsChannelOut>& channels,
                   std::vector<u64>& times) {
  u64 t = start;
  RecordPair pair;
  while (move_up(rows, t, pair)) {
    times.push_back(t);
    append_point(rows, pair, t, channels);
    if (t > std::numeric_limits<u64>::max() - step) return;
    t += step;
  }
}

// A grid that has begun goes on with its last values until it is as long as the caller expects.
void append_repeated_points(u64 step, u64 end, std::vector<SGpsChannelOut>& channels, std::vector<u64>& times) {
  if (times.empty()) return;
  const u64 wanted = end / step;
  while (times.size() < wanted) {
    times.push_back(end);
    for (SGpsChannelOut& channel : channels) channel.values.push_back(channel.values.back());
  }
}

// The claim of a caller, which the trace may not bear out; more room comes with the points.
std::size_t points_to_reserve(u64 step, u64 start, u64 end) {
  constexpr u64 kMostReserved = 65536;
  const u64 claimed = end > start ? (end - start) / step : 0;
  return static_cast<std::size_t>(std::min(claimed, kMostReserved - 1) + 1);
}

}  // namespace

GpsRows build_gps_rows(std::span<const SGpsRecord> records, const GpsCentre& reference) {
  const LocalAxes axes(reference.latitude_deg, reference.longitude_deg);
  GpsRows rows;
  reserve(rows, static_cast<std::size_t>(
                    std::count_if(records.begin(), records.end(), [](const SGpsRecord& r) { return r.is_good(); })));
  Row row;
  bool has_row = false;
  for (const SGpsRecord& record : records) {
    if (!record.is_good()) continue;
    const Row next = row_of(record, axes);
    if (has_row) {
      set_dynamics(row, next);
      append(row, rows);
    }
    row = next;
    has_row = true;
  }
  if (has_row) append(row, rows);
  return rows;
}

float gps_radius(float speed, float gyro) {
  if (gyro == 0.0F) return static_cast<float>(kLongestRadius);
  double radius = std::fabs(double{speed} / (std::fabs(double{gyro}) * kRadiansPerDegreeOfUnits));
  if (radius > 0.0 && radius < kShortestRadius) radius = kShortestRadius;
  if (radius > kLongestRadius) radius = kLongestRadius;
  return static_cast<float>(radius);
}

bool prepare_gps_channels(std::vector<SGpsChannelOut>& channels) {
  if (channels.empty()) channels.resize(kGpsChannelCount);
  if (channels.size() != kGpsChannelCount) return false;
  for (u32 index = 0; index < kGpsChannelCount; ++index) {
    const GpsChannelDefinition& definition = kGpsChannels[index];
    SGpsChannelOut& channel = channels[index];
    channel.name = definition.name;
    channel.unit = definition.unit;
    channel.function_code = definition.function_code;
    channel.flags = definition.flags;
    channel.smallest = 0.0F;
    channel.largest = 0.0F;
    channel.values.clear();
  }
  return true;
}

void fill_gps_channels(const GpsRows& rows, u64 step, u64 start, u64 end, std::vector<SGpsChannelOut>& channels,
                       std::vector<u64>& times) {
  if (rows.size() == 0) return;
  times.reserve(points_to_reserve(step, start, end));
  for (SGpsChannelOut& channel : channels) {
    channel.values.reserve(points_to_reserve(step, start, end));
    channel.smallest = std::numeric_limits<float>::infinity();
    channel.largest = -std::numeric_limits<float>::infinity();
  }
  append_points(rows, step, start, channels, times);
  append_repeated_points(step, end, channels, times);
  for (SGpsChannelOut& channel : channels) {
    if (channel.smallest > channel.largest) {
      channel.smallest = 0.0F;
      channel.largest = 0.0F;
    }
  }
}

}  // namespace traguardo
