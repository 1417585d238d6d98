// SPDX-License-Identifier: MIT
// Results are compared bit for bit: every formula keeps the order in which it is written here.
#include "geodesy/geodesy.h"

#include <algorithm>
#include <cmath>

namespace traguardo {
namespace {

using wgs84::kFirstEccentricitySquared;
using wgs84::kOneLessFirstEccentricitySquared;
using wgs84::kSemiMajorAxis;
using wgs84::kSemiMinorAxis;

constexpr double kEccentricitySquaredTimesMajor = 42697.67270717997;        // e^2 a
constexpr double kSecondEccentricitySquaredTimesMinor = 42841.31151331382;  // e'^2 b
constexpr double kTangentSlope = 42411.83826138342;                         // e^2 a (1 - e^2)
constexpr double kSquareOfEccentricityTimesMajor = 1823091254.6094613;      // (e^2 a)^2
// Multiplies z so that the first guess of the reduced latitude is right a little above the ellipsoid.
constexpr double kReducedLatitudeFactor = 1.0026;
// cos 67.5 degrees: nearer to a pole the height comes from z, elsewhere from the distance to the axis.
constexpr double kCosineNearPole = 0.3826834323650898;

double cube(double value) {
  return value * value * value;
}

Geodetic on_the_axis(double z) {
  if (z == 0.0) return {90.0, 0.0, 0.0};
  return {z < 0.0 ? -90.0 : 90.0, 0.0, std::fabs(z) - kSemiMinorAxis};
}

double longitude_of(double x, double y) {
  if (x == 0.0) return y > 0.0 ? 90.0 : -90.0;
  return std::atan2(y, x) * kDegreesPerRadian;
}

// The latitude as a tangent of its complement, by Newton's steps from the direction to the Earth's centre; z is not 0.
// They end when the rest is 0 or stops shrinking, which a sequence of doubles must.
double cotangent_of_latitude(double p, double z) {
  const double height = std::fabs(z);
  double t = p / height;
  double q = std::sqrt(t * t + kOneLessFirstEccentricitySquared);
  double rest = p - t * height - t * kEccentricitySquaredTimesMajor / q;
  double rest_before;
  do {
    rest_before = rest;
    t = std::max(0.0, t - rest / (-height - kTangentSlope / cube(q)));
    q = std::sqrt(t * t + kOneLessFirstEccentricitySquared);
    rest = p - t * height - t * kEccentricitySquaredTimesMajor / q;
  } while (rest != 0.0 && std::fabs(rest) < std::fabs(rest_before));
  return t;
}

}  // namespace

Geodetic geodetic_in_one_step(const Ecef& position) {
  const auto [x, y, z] = position;
  if (x == 0.0 && y == 0.0) return on_the_axis(z);
  const double p = std::sqrt(x * x + y * y);

  const double stretched_z = z * kReducedLatitudeFactor;
  const double r = std::sqrt(stretched_z * stretched_z + p * p);
  const double sin_beta = stretched_z / r;
  const double cos_beta = p / r;

  const double along_z = z + cube(sin_beta) * kSecondEccentricitySquaredTimesMinor;
  const double along_p = p - cube(cos_beta) * kEccentricitySquaredTimesMajor;
  const double length = std::sqrt(along_z * along_z + along_p * along_p);
  const double sin_phi = along_z / length;
  const double cos_phi = along_p / length;

  const double n = kSemiMajorAxis / std::sqrt(1.0 - kFirstEccentricitySquared * (sin_phi * sin_phi));
  double height;
  if (cos_phi >= kCosineNearPole) {
    height = p / cos_phi - n;
  } else if (cos_phi <= -kCosineNearPole) {
    height = -(p / cos_phi) - n;
  } else {
    height = z / sin_phi - n * kOneLessFirstEccentricitySquared;
  }
  return {std::atan(sin_phi / cos_phi) * kDegreesPerRadian, longitude_of(x, y), height};
}

Geodetic geodetic_by_iteration(const Ecef& position) {
  const auto [x, y, z] = position;
  const double p = std::sqrt(x * x + y * y);
  double latitude = 0.0;
  double cos_phi = 1.0;
  double sin_phi = 0.0;
  if (z != 0.0) {
    const double t = cotangent_of_latitude(p, z);
    latitude = std::atan(1.0 / t);
    sin_phi = 1.0 / std::sqrt(t * t + 1.0);
    cos_phi = t * sin_phi;
    if (z < 0.0) {
      latitude = -latitude;
      sin_phi = -sin_phi;
    }
  } else if (p < kEccentricitySquaredTimesMajor) {
    // Nearer to the centre than this a point of the equator's plane has its foot off the equator; the height says so,
    // the latitude does not.
    const double k = p * p * kOneLessFirstEccentricitySquared / (kSquareOfEccentricityTimesMajor - p * p);
    cos_phi = std::sqrt(k / (k + 1.0));
    sin_phi = std::sqrt(1.0 / (k + 1.0));
  }
  const double height =
      cos_phi * p + sin_phi * z - kSemiMajorAxis * std::sqrt(1.0 - kFirstEccentricitySquared * (sin_phi * sin_phi));
  return {latitude * kDegreesPerRadian, std::atan2(y, x) * kDegreesPerRadian, height};
}

LocalAxes::LocalAxes(double latitude_deg, double longitude_deg)
    : sin_latitude_(std::sin(latitude_deg * kRadiansPerDegree)),
      cos_latitude_(std::cos(latitude_deg * kRadiansPerDegree)),
      sin_longitude_(std::sin(longitude_deg * kRadiansPerDegree)),
      cos_longitude_(std::cos(longitude_deg * kRadiansPerDegree)) {}

Local LocalAxes::turned(const Ecef& vector) const {
  const auto [x, y, z] = vector;
  return {cos_longitude_ * y - sin_longitude_ * x,
          cos_latitude_ * z - (sin_latitude_ * cos_longitude_ * x + sin_latitude_ * sin_longitude_ * y),
          cos_latitude_ * cos_longitude_ * x + cos_latitude_ * sin_longitude_ * y + sin_latitude_ * z};
}

}  // namespace traguardo
