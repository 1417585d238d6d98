// SPDX-License-Identifier: MIT
#include "geodesy/haversine.h"

#include <cmath>

#include "geodesy/geodesy.h"

namespace traguardo {
namespace {

constexpr double kEarthRadius = 6372797.560856;

double squared_half_sine(double degrees) {
  const double sine = std::sin(degrees * kRadiansPerDegree / 2.0);
  return sine * sine;
}

}  // namespace

double Haversine::Distanza(double latitude_1, double longitude_1, double latitude_2, double longitude_2) const {
  const double cosines = std::cos(latitude_1 * kRadiansPerDegree) * std::cos(latitude_2 * kRadiansPerDegree);
  const double square =
      squared_half_sine(latitude_2 - latitude_1) + cosines * squared_half_sine(longitude_2 - longitude_1);
  return 2.0 * std::asin(std::sqrt(square)) * kEarthRadius;
}

}  // namespace traguardo
