// SPDX-License-Identifier: MIT
#include "logger/clock_watch.h"

#include <utility>

namespace traguardo {

namespace {

// How far a GPS tag may run ahead of the reader.
constexpr u64 kTagLeadMs = 1000;
constexpr u64 kMicrosecondsPerMillisecond = 1000;

u64 distance(u64 a, u64 b) {
  return a > b ? a - b : b - a;
}

}  // namespace

void ClockWatch::Take(const Stamp& stamp) {
  if (!take_one(stamp)) return;
  // What stood behind the suspect is judged again without it, and may hold the next one.
  std::vector<Stamp> again;
  std::size_t next = 0;
  bool contradicted = true;
  while (contradicted || next < again.size()) {
    if (contradicted) {
      taken_back_.push_back(suspect_->position);
      highest_ = before_;
      suspect_.reset();
      held_.insert(held_.end(), again.begin() + static_cast<std::ptrdiff_t>(next), again.end());
      again = std::exchange(held_, {});
      next = 0;
    }
    contradicted = take_one(again[next++]);
  }
}

std::vector<u64> ClockWatch::taken_back() const {
  std::vector<u64> positions = taken_back_;
  std::sort(positions.begin(), positions.end());
  return positions;
}

bool ClockWatch::take_one(const Stamp& stamp) {
  if (suspect_ && is_plausible(stamp.first, highest_)) acquit();
  if (suspect_) {
    run_ = agrees_with_run(stamp) ? run_ + 1 : 1;
    run_highest_ = run_ == 1 ? stamp.last : std::max(run_highest_, stamp.last);
    held_.push_back(stamp);
    if (run_ >= kWitnesses) return true;
    if (held_.size() >= kMostHeld) acquit();
    return false;
  }
  const u64 before = highest_;
  believe(stamp);
  // A frame that begins in time may well end far ahead: it says how long its samples are, not when it was written.
  if (distance(highest_, before) <= kOneMinute || distance(stamp.first, before) <= kOneMinute) return false;
  suspect_ = stamp;
  before_ = before;
  run_ = 0;
  return false;
}

// As the reader does without being told to recover anything.
void ClockWatch::believe(const Stamp& stamp) {
  if (stamp.is_set) {
    const u64 highest_ms = highest_ / kMicrosecondsPerMillisecond;
    if (stamp.first / kMicrosecondsPerMillisecond <= highest_ms + kTagLeadMs) highest_ = stamp.first;
  } else if (is_plausible(stamp.first, highest_)) {
    highest_ = std::max(highest_, stamp.last);
  }
}

void ClockWatch::acquit() {
  suspect_.reset();
  for (const Stamp& stamp : std::exchange(held_, {})) believe(stamp);
}

bool ClockWatch::agrees_with_run(const Stamp& stamp) const {
  return run_ != 0 && distance(stamp.first, run_highest_) <= kOneMinute;
}

}  // namespace traguardo
