// SPDX-License-Identifier: MIT
// The reader's time: the highest one that the stream has told so far, and which clocks it believes.
#pragma once

#include <algorithm>
#include <limits>
#include <memory>
#include <vector>

#include "logger/clock_watch.h"

namespace traguardo {

class ReaderClock {
 public:
  // Microseconds. The reference is good for as long as the clock.
  const u64& now() const { return now_; }
  void raise(u64 time) { now_ = std::max(now_, time); }
  void Set(u64 time) { now_ = time; }

  // Of a frame that is good otherwise; `last`: the latest time that it tells.
  bool believes(u64 position, u64 time, u64 last) {
    if (watch_ != nullptr) watch_->Take({position, time, last, false});
    return is_plausible(time, now_) && !is_taken_back(position);
  }
  // Bytes from a position to the next frame or tag whose clock was taken back. Positions rise from call to call.
  u64 to_next_taken_back(u64 position) {
    while (*next_taken_back_ < position) ++next_taken_back_;
    return *next_taken_back_ - position;
  }
  bool is_taken_back(u64 position) { return to_next_taken_back(position) == 0; }

  // A walk for the clocks alone, between these two: behind it the time is 0 again, and what was contradicted is known.
  void begin_watch() { watch_ = std::make_unique<ClockWatch>(); }
  void end_watch() {
    const u64 none = taken_back_.back();
    taken_back_ = watch_->taken_back();
    taken_back_.push_back(none);
    next_taken_back_ = taken_back_.begin();
    watch_.reset();
    now_ = 0;
  }
  bool is_watched() const { return watch_ != nullptr; }
  void watch_tag(u64 position, u64 time) { watch_->Take({position, time, time, true}); }

 private:
  u64 now_ = 0;
  std::unique_ptr<ClockWatch> watch_;
  // Rising positions, and one that no file reaches.
  std::vector<u64> taken_back_{std::numeric_limits<u64>::max()};
  std::vector<u64>::const_iterator next_taken_back_ = taken_back_.begin();
};

}  // namespace traguardo
