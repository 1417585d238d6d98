// SPDX-License-Identifier: MIT
// A flat piece of ground laid on the ellipsoid: metres east, north and up of a place, as earth-centred coordinates.
#pragma once

namespace traguardo::simulator {

struct Vector3 {
  double x = 0;
  double y = 0;
  double z = 0;
};

class PlaceOnEarth {
 public:
  PlaceOnEarth(double latitude_deg, double longitude_deg, double altitude_m);

  Vector3 position(double east_m, double north_m, double up_m) const;
  // A direction or a velocity.
  Vector3 direction(double east, double north, double up) const;

 private:
  Vector3 origin_;
  double sin_latitude_;
  double cos_latitude_;
  double sin_longitude_;
  double cos_longitude_;
};

}  // namespace traguardo::simulator
