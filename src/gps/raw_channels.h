// SPDX-License-Identifier: MIT
// What the receiver said, unresampled: seven channels with a value for each good record, at the record's own time.
#pragma once

#include <array>
#include <vector>

#include "gps/gps_record.h"
#include "gps/lap_search.h"

namespace traguardo {

inline constexpr u32 kRawGpsChannelCount = 7;

struct RawGpsChannel {
  const char* name;
  const char* unit;
  double (*value)(const SGpsRecord&);
};

extern const std::array<RawGpsChannel, kRawGpsChannelCount> kRawGpsChannels;

// The good records of a trace, borrowed from it, as a sequence of samples.
class RawGpsSamples {
 public:
  RawGpsSamples() = default;
  explicit RawGpsSamples(std::vector<const SGpsRecord*> records);

  u64 size() const { return records_.size(); }
  u64 time_at(u64 index) const { return records_[index]->logger_time_ms(); }  // milliseconds
  bool ascends() const { return ascends_; }                                   // equal neighbours included

  // Writes times in seconds and values of up to `count` samples of a channel from index `first` on; gives the number
  // written, 0 beyond the last sample or channel.
  u64 fill(u32 channel, u64 first, u64 count, double* times, double* values) const;
  // The samples of a lap, whose ends are in microseconds.
  LapSlice lap(u64 from_us, u64 to_us, u64 gps_step) const;

 private:
  std::vector<const SGpsRecord*> records_;
  bool ascends_ = true;
};

}  // namespace traguardo
