// SPDX-License-Identifier: MIT
// geodesy/ holds what is computed of places on the Earth, and includes nothing: units (fields of GPS packets), gps
// (traces) and the logger's report call it.
//
// From earth-centred coordinates to latitude, longitude and height above the ellipsoid, and to local axes.
#pragma once

namespace traguardo {

namespace wgs84 {
inline constexpr double kSemiMajorAxis = 6378137.0;
inline constexpr double kSemiMinorAxis = 6356752.314245179;
inline constexpr double kFirstEccentricitySquared = 0.0066943799901413165;      // e^2
inline constexpr double kOneLessFirstEccentricitySquared = 0.9933056200098587;  // 1 - e^2
}  // namespace wgs84

inline constexpr double kDegreesPerRadian = 57.29577951308232;
inline constexpr double kRadiansPerDegree = 0.017453292519943295;

// Earth-centred, earth-fixed: a position in metres or a velocity in metres per second.
struct Ecef {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
};

struct Geodetic {
  double latitude_deg = 0.0;
  double longitude_deg = 0.0;
  double height_m = 0.0;  // above the ellipsoid
};

// Along the axes of a place on the ellipsoid.
struct Local {
  double east = 0.0;
  double north = 0.0;
  double up = 0.0;
};

// In one step, for the records of a trace. Between 1 km below and 10 km above the ellipsoid the latitude is off by up
// to 4.3e-8 degree and the height by up to 5.6 mm, both near 45 degrees. Any position has a result; deep inside the
// Earth, where the step is no approximation, it may be not a number.
Geodetic geodetic_in_one_step(const Ecef& position);

// By iteration, to the last digits, for a place that others are measured from.
Geodetic geodetic_by_iteration(const Ecef& position);

// The local axes of a place: they turn with its latitude and longitude and keep the Earth's centre as their origin.
class LocalAxes {
 public:
  LocalAxes(double latitude_deg, double longitude_deg);
  Local turned(const Ecef& vector) const;

 private:
  double sin_latitude_;
  double cos_latitude_;
  double sin_longitude_;
  double cos_longitude_;
};

}  // namespace traguardo
