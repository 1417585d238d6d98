// SPDX-License-Identifier: MIT
#include "track.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace traguardo::tool {

namespace {

constexpr double kEquatorRadius = 6378137.0;
constexpr double kFlattening = 1 / 298.257223563;
constexpr double kPoleRadius = kEquatorRadius * (1 - kFlattening);
constexpr double kEccentricity2 = kFlattening * (2 - kFlattening);
constexpr double kSecondEccentricity2 = kEccentricity2 / (1 - kEccentricity2);
constexpr double kDegreesPerRadian = 180 / std::numbers::pi;

double cube(double value) {
  return value * value * value;
}

void append_track(Session& session, std::optional<int> lap, std::vector<TrackPoint>* track) {
  const std::vector<Channel>& channels = session.gps_raw_channels();
  if (channels.size() < 3) return;
  Samples x;
  Samples y;
  Samples z;
  session.read(channels[0], lap, x);
  session.read(channels[1], lap, y);
  session.read(channels[2], lap, z);
  const std::size_t count = std::min({x.values.size(), y.values.size(), z.values.size()});
  track->reserve(track->size() + count);
  for (std::size_t i = 0; i < count; ++i) {
    track->push_back(
        {x.times_s[i], x.values[i], y.values[i], z.values[i], place_of(x.values[i], y.values[i], z.values[i])});
  }
}

}  // namespace

// By way of the parametric latitude: exact to well under a millimetre near the ground.
Place place_of(double x_m, double y_m, double z_m) {
  const double from_axis = std::hypot(x_m, y_m);
  const double beta = std::atan2(z_m * kEquatorRadius, from_axis * kPoleRadius);
  const double latitude = std::atan2(z_m + kSecondEccentricity2 * kPoleRadius * cube(std::sin(beta)),
                                     from_axis - kEccentricity2 * kEquatorRadius * cube(std::cos(beta)));
  const double sine = std::sin(latitude);
  const double normal = kEquatorRadius / std::sqrt(1 - kEccentricity2 * sine * sine);
  // Both components of the way up, so that it holds at the poles as well.
  const double altitude = from_axis * std::cos(latitude) + z_m * sine - normal * (1 - kEccentricity2 * sine * sine);
  return {latitude * kDegreesPerRadian, std::atan2(y_m, x_m) * kDegreesPerRadian, altitude};
}

std::vector<TrackPoint> read_track(Session& session, const std::vector<Lap>& laps) {
  std::vector<TrackPoint> track;
  if (laps.empty()) append_track(session, std::nullopt, &track);
  for (const Lap& lap : laps) append_track(session, lap.index(), &track);
  return track;
}

double length_of(const std::vector<TrackPoint>& track) {
  double length = 0;
  for (std::size_t i = 1; i < track.size(); ++i) {
    const TrackPoint& a = track[i - 1];
    const TrackPoint& b = track[i];
    length += std::hypot(b.x_m - a.x_m, b.y_m - a.y_m, b.z_m - a.z_m);
  }
  return length;
}

}  // namespace traguardo::tool
