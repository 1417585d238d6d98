// SPDX-License-Identifier: MIT
#include "api/gps_view.h"

#include <vector>

namespace traguardo {

namespace {

// The grid as a sequence of times for the searches. Its points stand one step apart, and those that fill it up to its
// end repeat one time, so it never descends.
struct GridTimes {
  const GpsGrid* grid;
  u64 size() const { return grid->size(); }
  u64 time_at(u64 index) const { return grid->time_at(index); }
  bool ascends() const { return true; }
};

}  // namespace

int GpsView::build_channels(IRkGpsTrace* trace) {
  // Start 0 and end 1 ask for the whole trace: the grid ends with the records.
  grid_ = trace->grid(kStep, 0, 1);
  return grid_.size() == 0 ? 0 : static_cast<int>(kGpsChannelCount);
}

void GpsView::build_raw_samples(const IRkGpsTrace& trace) {
  std::vector<const SGpsRecord*> records;
  trace.GetGoodSamplePointers(records);
  raw_ = RawGpsSamples(std::move(records));
}

LapSlice GpsView::grid_lap(u64 from, u64 to) const {
  return lap_slice(GridTimes{&grid_}, from, to, kStep);
}

}  // namespace traguardo
