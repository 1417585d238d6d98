// SPDX-License-Identifier: MIT
// The values of a channel at any times, one behind the other, in memory that doesn't grow with the session.
#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <vector>

#include "session.h"
#include "support/bytes.h"

namespace traguardo {
class CSuperChannel;
}

namespace traguardo::tool {

// A sample with its time in microseconds.
struct TimedValue {
  u64 time_us = 0;
  float value = 0;
};

// Walks samples by their times, from the last one before a time on. Samples that don't come behind the one before them
// are passed over.
class SampleWalk {
 public:
  SampleWalk(const Session& session, const Channel& channel);

  // The next one will be the last sample before the time, or the first one of all.
  void go_to(u64 time_us);
  // Null behind the last one. Valid until the next call.
  const TimedValue* next() { return at_ < window_.size() || fill() ? &window_[at_++] : nullptr; }

 private:
  bool fill();
  u64 count_between(u64 from_us, u64 to_us) const;
  void read_between(u64 from_us, u64 to_us, u64 count);

  const Session& session_;
  Channel channel_;
  CSuperChannel* logged_ = nullptr;  // null for a channel derived from the GPS
  u64 next_from_us_ = 0;
  u64 end_us_ = 0;
  u64 stretch_us_ = 1'000'000;
  std::vector<TimedValue> window_;
  std::vector<double> times_;
  std::vector<double> values_;
  std::size_t at_ = 0;
};

class ChannelCursor {
 public:
  ChannelCursor(const Session& session, const Channel& channel);

  const Channel& channel() const { return channel_; }
  // Times are asked for in ascending order from here on.
  void go_to(u64 time_us);
  // As the channel's record says: held from the sample at or before the time, or in a straight line between the two
  // around it. Nothing before the first sample, nor behind the last one of a channel that isn't held.
  std::optional<float> at(u64 time_us);

 private:
  Channel channel_;
  bool is_held_;
  SampleWalk walk_;
  std::optional<TimedValue> before_;  // at or before the time
  std::optional<TimedValue> behind_;  // nothing behind the last sample
};

}  // namespace traguardo::tool
