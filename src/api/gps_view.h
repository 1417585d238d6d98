// SPDX-License-Identifier: MIT
// What the GPS functions have worked out for one open file: the derived channels' grid and the list of raw samples,
// each on request, independent of the other.
#pragma once

#include "gps/gps_grid.h"
#include "gps/gps_trace.h"
#include "gps/raw_channels.h"

namespace traguardo {

class GpsView {
 public:
  // Distance between two samples of the derived channels, microseconds.
  static constexpr u64 kStep = 10000;

  // Works the derived channels of the trace out; gives the number of those that have samples.
  int build_channels(IRkGpsTrace* trace);
  // Lists the good records of the trace.
  void build_raw_samples(const IRkGpsTrace& trace);

  // All derived channels share their times, so either all have samples or none has.
  const GpsGrid& grid() const { return grid_; }
  const RawGpsSamples& raw() const { return raw_; }
  // The grid's samples of a lap, whose ends are in microseconds.
  LapSlice grid_lap(u64 from, u64 to) const;
  LapSlice raw_lap(u64 from, u64 to) const { return raw_.lap(from, to, kStep); }

 private:
  GpsGrid grid_;
  RawGpsSamples raw_;
};

}  // namespace traguardo
