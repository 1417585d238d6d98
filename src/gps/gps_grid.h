// SPDX-License-Identifier: MIT
// The derived channels on an even grid of times without the grid: it keeps the rows of the records and works out what
// it is asked for. One record with a wild clock asks for hundreds of millions of points, so neither making it nor its
// size costs anything that grows with the time between the records.
#pragma once

#include <memory>
#include <utility>

#include "gps/derived_channels.h"

namespace traguardo {

enum class GpsTimeUnit { kMilliseconds, kSeconds };

// Times and values are bit for bit those of IRkGpsTrace::GetChannels with the same arguments:
// - A grid over no rows, or one that starts after the highest time of its records, has no points.
// - Else its points stand at start, start + step, ... up to the highest time of the records. With start 0, end 1 and a
//   step of 10000 these are all: one every 10 ms from 0 on.
// - If they are fewer than end / step, points at `end` follow up to that number, with the values of the last one.
class GpsGrid {
 public:
  GpsGrid() = default;  // no points
  // rows may be null. REQUIRES: step is not 0.
  GpsGrid(std::shared_ptr<const GpsRows> rows, u64 step, u64 start, u64 end);

  u64 size() const { return size_; }
  // Microseconds. REQUIRES (both): index < size(); channel < kGpsChannelCount.
  u64 time_at(u64 index) const { return index < even_points_ ? start_ + index * step_ : end_; }
  float value_at(u32 channel, u64 index) const;

  // Writes times and values of up to `count` points of a channel from index `first` on; gives the number written, which
  // is 0 beyond the last point or channel. Costs the points and one search.
  u64 fill(u32 channel, u64 first, u64 count, GpsTimeUnit unit, double* times, double* values) const;

 private:
  void fill_times(u64 first, u64 count, GpsTimeUnit unit, double* times) const;
  void fill_values(u32 channel, u64 first, u64 count, double* values) const;
  template <typename Stretch>
  void fill_even_points(u32 channel, u64 first, u64 count, double* values) const;
  std::size_t row_at(std::size_t from, u64 t) const;

  std::shared_ptr<const GpsRows> rows_;
  u64 step_ = 1;
  u64 start_ = 0;
  u64 end_ = 0;
  u64 even_points_ = 0;  // those between start and the highest time of the records
  u64 size_ = 0;
};

}  // namespace traguardo
