// SPDX-License-Identifier: MIT
// The driven track as a row of places: the receiver's solutions, brought from earth-centred coordinates to latitude,
// longitude and height in double precision. (The derived channels have 32 bits, which is half a metre in degrees.)
#pragma once

#include <vector>

#include "session.h"

namespace traguardo::tool {

struct Place {
  double latitude_deg = 0;
  double longitude_deg = 0;
  double altitude_m = 0;  // above the ellipsoid
};

struct TrackPoint {
  double time_s = 0;
  double x_m = 0;
  double y_m = 0;
  double z_m = 0;
  Place place;
};

Place place_of(double x_m, double y_m, double z_m);

// The solutions of these laps, or without laps of the whole file; empty without GPS.
std::vector<TrackPoint> read_track(Session& session, const std::vector<Lap>& laps);

// Along the chords from each solution to the next, in metres.
double length_of(const std::vector<TrackPoint>& track);

}  // namespace traguardo::tool
