// SPDX-License-Identifier: MIT
// The driven track in the formats of map programs.
#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "output_file.h"
#include "track.h"

namespace traguardo::tool {

struct TrackTitle {
  std::string name;  // UTF-8
  std::tm begin{};   // the session's first moment on the logger's clock
};

// GPX 1.1, one segment per unbroken stretch, with a time stamp at each point. The logger's clock has no zone; its time
// is written as it is.
void write_gpx(OutputFile& out, const TrackTitle& title, const std::vector<TrackPoint>& track);

// GeoJSON (RFC 7946): one feature, a line of longitude, latitude and height, with the time stamps as "coordTimes".
void write_geojson(OutputFile& out, const TrackTitle& title, const std::vector<TrackPoint>& track);

}  // namespace traguardo::tool
