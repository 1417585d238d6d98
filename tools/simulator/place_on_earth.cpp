// SPDX-License-Identifier: MIT
#include "simulator/place_on_earth.h"

#include <cmath>
#include <numbers>

namespace traguardo::simulator {

namespace {
constexpr double kEquatorRadius = 6378137.0;
constexpr double kFlattening = 1 / 298.257223563;
constexpr double kEccentricity2 = kFlattening * (2 - kFlattening);
constexpr double kRadiansPerDegree = std::numbers::pi / 180;
}  // namespace

PlaceOnEarth::PlaceOnEarth(double latitude_deg, double longitude_deg, double altitude_m)
    : sin_latitude_(std::sin(latitude_deg * kRadiansPerDegree)),
      cos_latitude_(std::cos(latitude_deg * kRadiansPerDegree)),
      sin_longitude_(std::sin(longitude_deg * kRadiansPerDegree)),
      cos_longitude_(std::cos(longitude_deg * kRadiansPerDegree)) {
  const double normal = kEquatorRadius / std::sqrt(1 - kEccentricity2 * sin_latitude_ * sin_latitude_);
  origin_.x = (normal + altitude_m) * cos_latitude_ * cos_longitude_;
  origin_.y = (normal + altitude_m) * cos_latitude_ * sin_longitude_;
  origin_.z = (normal * (1 - kEccentricity2) + altitude_m) * sin_latitude_;
}

Vector3 PlaceOnEarth::position(double east_m, double north_m, double up_m) const {
  const Vector3 offset = direction(east_m, north_m, up_m);
  return {origin_.x + offset.x, origin_.y + offset.y, origin_.z + offset.z};
}

Vector3 PlaceOnEarth::direction(double east, double north, double up) const {
  const double outward = up * cos_latitude_ - north * sin_latitude_;  // away from the axis of the Earth
  return {outward * cos_longitude_ - east * sin_longitude_, outward * sin_longitude_ + east * cos_longitude_,
          up * sin_latitude_ + north * cos_latitude_};
}

}  // namespace traguardo::simulator
