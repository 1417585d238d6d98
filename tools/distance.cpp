// SPDX-License-Identifier: MIT
#include "distance.h"

#include <algorithm>
#include <cmath>

#include "speed.h"
#include "support/table_rows.h"

namespace traguardo::tool {

u64 to_us(double time_s) {
  constexpr double kLongest = 1e12;
  return time_s > 0 ? static_cast<u64>(std::llround(std::min(time_s, kLongest) * 1e6)) : 0;
}

DistanceWalk::DistanceWalk(const Session& session, const Channel& speed)
    : walk_(session, speed), factor_(metres_per_second(speed.unit)) {}

// A speed that trembles around a standstill, or that is no number, is none.
double DistanceWalk::speed_of(const TimedValue& sample) const {
  const double speed = static_cast<double>(sample.value) * factor_;
  return std::isfinite(speed) && speed > 0 ? speed : 0;
}

void DistanceWalk::start(u64 from_us, u64 to_us) {
  from_us_ = from_us;
  to_us_ = to_us;
  last_.reset();
  stretch_ = {};
  is_over_ = false;
  walk_.go_to(from_us);
}

bool DistanceWalk::next(Stretch* stretch) {
  while (!is_over_) {
    const TimedValue* const sample = walk_.next();
    if (sample == nullptr) break;
    const std::optional<TimedValue> before = last_;
    last_ = *sample;
    if (!before || sample->time_us <= from_us_) continue;
    is_over_ = sample->time_us >= to_us_;
    // The part of the way from one sample to the next that lies within the time.
    const u64 begin = std::max(before->time_us, from_us_);
    const u64 end = std::min(sample->time_us, to_us_);
    if (begin >= end) break;
    const auto speed_at = [&](u64 time_us) {
      return on_line(speed_of(*before), speed_of(*sample), static_cast<double>(time_us - before->time_us),
                     static_cast<double>(sample->time_us - before->time_us));
    };
    stretch_.time_s = seconds(begin);
    stretch_.distance_m = stretch_.end_m;
    stretch_.speed_mps = speed_at(begin);
    stretch_.end_s = seconds(end);
    stretch_.end_mps = speed_at(end);
    stretch_.end_m += (stretch_.speed_mps + stretch_.end_mps) / 2 * (stretch_.end_s - stretch_.time_s);
    *stretch = stretch_;
    return true;
  }
  is_over_ = true;
  return false;
}

// Within a stretch of even change the way is v0 t + a t^2 / 2.
std::optional<double> DistanceWalk::time_at(double distance_m) {
  Stretch ignored;
  while (stretch_.end_s == 0 || stretch_.end_m < distance_m) {
    if (!next(&ignored)) return std::nullopt;
  }
  const double way = distance_m - stretch_.distance_m;
  if (way <= 0) return stretch_.time_s;
  const double change = (stretch_.end_mps - stretch_.speed_mps) / (stretch_.end_s - stretch_.time_s);
  const double root = std::sqrt(std::max(0.0, stretch_.speed_mps * stretch_.speed_mps + 2 * change * way));
  return std::min(stretch_.time_s + 2 * way / (stretch_.speed_mps + root), stretch_.end_s);
}

double distance_between(DistanceWalk* walk, u64 from_us, u64 to_us) {
  walk->start(from_us, to_us);
  DistanceWalk::Stretch stretch;
  while (walk->next(&stretch)) continue;
  return stretch.end_m;
}

}  // namespace traguardo::tool
