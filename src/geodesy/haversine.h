// SPDX-License-Identifier: MIT
// The distance of two places over the ground, on a sphere.
#pragma once

namespace traguardo {

class Haversine {
 public:
  virtual ~Haversine() = default;
  // Latitudes and longitudes in degrees; the result is in metres.
  double Distanza(double latitude_1, double longitude_1, double latitude_2, double longitude_2) const;
};

}  // namespace traguardo
