// SPDX-License-Identifier: MIT
// The quantities of the derived channels at the good records of a trace, and their values on an even grid of times.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "gps/gps_record.h"
#include "gps/gps_trace.h"

namespace traguardo {

// One entry per good record in every array, in store order; times need not ascend. Built once per trace.
struct GpsRows {
  std::vector<u64> times_us;
  // The highest of all times up to each row. As a grid never steps back, its point at t lies at the first row where
  // this has reached t.
  std::vector<u64> highest_times_us;
  // What each channel shows at the records. Empty for GPS Radius, which is worked out on the grid.
  std::array<std::vector<double>, kGpsChannelCount> sources;

  std::size_t size() const { return times_us.size(); }
};

// The rows of the good records among `records`, with local positions and velocities along the axes of `reference`.
GpsRows build_gps_rows(std::span<const SGpsRecord> records, const GpsCentre& reference);

// The radius in metres of the bend that a speed (m/s) and a turning rate (deg/s) tell: 0 or 1 to 100,000.
float gps_radius(float speed, float gyro);

// Gives the channels their names, units and codes and takes their values away. An empty list gets all its entries;
// false, and nothing changed, for one of another length.
bool prepare_gps_channels(std::vector<SGpsChannelOut>& channels);
// Appends a value to each of the prepared channels, and a time, per point of the grid of IRkGpsTrace::GetChannels.
void fill_gps_channels(const GpsRows& rows, u64 step, u64 start, u64 end, std::vector<SGpsChannelOut>& channels,
                       std::vector<u64>& times);

}  // namespace traguardo
