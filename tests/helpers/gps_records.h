// SPDX-License-Identifier: MIT
// GPS records byte by byte, and drives whose truth is known. Written from the layout of a record and from the geometry
// of the ellipsoid, with nothing of the code under test in the numbers.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "gps/gps_record.h"
#include "wire/qlt.h"

namespace traguardo::test {

using GpsFields = wire::GpsSolution;

inline SGpsRecord gps_record(const GpsFields& fields) {
  SGpsRecord record;
  const wire::Bytes bytes = fields.record();
  std::copy(bytes.begin(), bytes.end(), record.bytes.begin());
  return record;
}

inline double gps_radians(double degrees) {
  return degrees * 3.14159265358979323846 / 180.0;
}

// From the definition of the ellipsoid: semi-major axis and flattening.
inline Ecef gps_position(double latitude_deg, double longitude_deg, double height_m) {
  const double flattening = 1.0 / 298.257223563;
  const double e2 = flattening * (2.0 - flattening);
  const double sine = std::sin(gps_radians(latitude_deg));
  const double cosine = std::cos(gps_radians(latitude_deg));
  const double n = 6378137.0 / std::sqrt(1.0 - e2 * sine * sine);
  return {(n + height_m) * cosine * std::cos(gps_radians(longitude_deg)),
          (n + height_m) * cosine * std::sin(gps_radians(longitude_deg)), (n * (1.0 - e2) + height_m) * sine};
}

// A level circle at constant speed around a place, started northwards.
struct GpsCircle {
  double latitude_deg = 44.5;
  double longitude_deg = 11.3;
  double height_m = 120.0;
  double radius_m = 100.0;
  double speed_m_s = 20.0;
  bool clockwise = true;

  double turning_rate() const { return (clockwise ? 1.0 : -1.0) * speed_m_s / radius_m; }  // rad/s

  // Rounded to whole centimetres as a receiver does it.
  SGpsRecord record_at(u32 time_ms) const {
    const double side = clockwise ? 1.0 : -1.0;
    const double heading = turning_rate() * time_ms * 0.001;
    const double east = -side * radius_m * std::cos(heading);
    const double north = side * radius_m * std::sin(heading);
    const Ecef centre = gps_position(latitude_deg, longitude_deg, height_m);
    const Ecef offset = earth_centred(east, north);
    const Ecef velocity = earth_centred(speed_m_s * std::sin(heading), speed_m_s * std::cos(heading));
    return gps_record({.time_ms = time_ms,
                       .time_of_week_ms = time_ms,
                       .x_cm = centimetres(centre.x + offset.x),
                       .y_cm = centimetres(centre.y + offset.y),
                       .z_cm = centimetres(centre.z + offset.z),
                       .vx_cm_s = centimetres(velocity.x),
                       .vy_cm_s = centimetres(velocity.y),
                       .vz_cm_s = centimetres(velocity.z)});
  }

  std::vector<SGpsRecord> records(u32 period_ms, u32 count) const {
    std::vector<SGpsRecord> all;
    for (u32 i = 0; i < count; ++i) all.push_back(record_at(i * period_ms));
    return all;
  }

 private:
  static i32 centimetres(double metres) { return static_cast<i32>(std::lround(metres * 100.0)); }

  Ecef earth_centred(double east, double north) const {
    const double phi = gps_radians(latitude_deg);
    const double lambda = gps_radians(longitude_deg);
    return {-std::sin(lambda) * east - std::sin(phi) * std::cos(lambda) * north,
            std::cos(lambda) * east - std::sin(phi) * std::sin(lambda) * north, std::cos(phi) * north};
  }
};

}  // namespace traguardo::test
