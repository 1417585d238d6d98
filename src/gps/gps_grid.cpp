// SPDX-License-Identifier: MIT
#include "gps/gps_grid.h"

#include <algorithm>

namespace traguardo {
namespace {

// --- One channel between two neighbouring records -----------------------------------------------------------------
// Made from the row at or behind the points; the row before it is the other end. Before the first record both are that.

std::size_t row_before(std::size_t row) {
  return row == 0 ? 0 : row - 1;
}

class HeldStretch {
 public:
  HeldStretch(const GpsRows& rows, u32 channel, std::size_t row)
      : value_(static_cast<float>(rows.sources[channel][row_before(row)])) {}
  float at(u64) const { return value_; }

 private:
  float value_;
};

class LinearStretch {
 public:
  LinearStretch(const GpsRows& rows, u32 channel, std::size_t row)
      : start_us_(rows.times_us[row_before(row)]),
        duration_us_(static_cast<double>(rows.times_us[row] - start_us_)),
        value_(rows.sources[channel][row_before(row)]),
        rise_(rows.sources[channel][row] - value_) {}

  // The order of operations is that of the plain interpolation: product, quotient, sum.
  float at(u64 t) const {
    if (duration_us_ == 0.0) return static_cast<float>(value_);
    return static_cast<float>(value_ + static_cast<double>(t - start_us_) * rise_ / duration_us_);
  }

 private:
  u64 start_us_;
  double duration_us_;
  double value_;
  double rise_;
};

class RadiusStretch {
 public:
  RadiusStretch(const GpsRows& rows, u32, std::size_t row) : speed_(rows, kGpsSpeed, row), gyro_(rows, kGpsGyro, row) {}
  float at(u64 t) const { return gps_radius(speed_.at(t), gyro_.at(t)); }

 private:
  LinearStretch speed_;
  LinearStretch gyro_;
};

}  // namespace

GpsGrid::GpsGrid(std::shared_ptr<const GpsRows> rows, u64 step, u64 start, u64 end)
    : rows_(std::move(rows)), step_(step), start_(start), end_(end) {
  if (rows_ == nullptr || rows_->size() == 0) return;
  const u64 highest = rows_->highest_times_us.back();
  if (start > highest) return;
  even_points_ = (highest - start) / step + 1;
  size_ = std::max(even_points_, end / step);
}

float GpsGrid::value_at(u32 channel, u64 index) const {
  double value = 0.0;
  fill_values(channel, index, 1, &value);
  return static_cast<float>(value);
}

u64 GpsGrid::fill(u32 channel, u64 first, u64 count, GpsTimeUnit unit, double* times, double* values) const {
  if (channel >= kGpsChannelCount || first >= size_) return 0;
  count = std::min(count, size_ - first);
  fill_times(first, count, unit, times);
  fill_values(channel, first, count, values);
  return count;
}

void GpsGrid::fill_times(u64 first, u64 count, GpsTimeUnit unit, double* times) const {
  for (u64 i = 0; i < count; ++i) {
    const double time_us = static_cast<double>(time_at(first + i));
    times[i] = unit == GpsTimeUnit::kMilliseconds ? time_us / 1000.0 : time_us * 1e-6;
  }
}

void GpsGrid::fill_values(u32 channel, u64 first, u64 count, double* values) const {
  const u64 even = first < even_points_ ? std::min(count, even_points_ - first) : 0;
  if (channel == kGpsNsat) {
    fill_even_points<HeldStretch>(channel, first, even, values);
  } else if (channel == kGpsRadius) {
    fill_even_points<RadiusStretch>(channel, first, even, values);
  } else {
    fill_even_points<LinearStretch>(channel, first, even, values);
  }
  if (even < count) std::fill(values + even, values + count, double{value_at(channel, even_points_ - 1)});
}

template <typename Stretch>
void GpsGrid::fill_even_points(u32 channel, u64 first, u64 count, double* values) const {
  u64 t = start_ + first * step_;
  std::size_t row = 0;
  for (u64 done = 0; done < count;) {
    row = row_at(row, t);
    const Stretch stretch(*rows_, channel, row);
    const u64 stretch_end = rows_->times_us[row];
    for (; done < count && t <= stretch_end; ++done, t += step_) values[done] = double{stretch.at(t)};
  }
}

// The first row from `from` on whose time isn't below t. There is one for every even point.
std::size_t GpsGrid::row_at(std::size_t from, u64 t) const {
  // A receiver is slower than the grid: from point to point the row stays or moves by one.
  const std::vector<u64>& highest = rows_->highest_times_us;
  if (highest[from] >= t) return from;
  if (highest[from + 1] >= t) return from + 1;
  const auto found = std::lower_bound(highest.begin() + static_cast<std::ptrdiff_t>(from), highest.end(), t);
  return static_cast<std::size_t>(found - highest.begin());
}

}  // namespace traguardo
