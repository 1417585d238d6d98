// SPDX-License-Identifier: MIT
// What happened to the records of one trace while it was filled, for the report.
#pragma once

#include <map>
#include <vector>

#include "support/bytes.h"

namespace traguardo {

// A record refused because it ran ahead of the reader's clock.
struct SGpsClockError {
  u32 logger_time_ms;
  double highest_time_ms;  // of the reader; held to the precision of a 32-bit float
  u64 file_offset;
};

struct SStatGPS {
  virtual ~SStatGPS() = default;

  std::vector<SGpsClockError> clock_errors;
  u32 good_records = 0;          // a reset of the trace doesn't clear it
  std::map<u8, u32> bad_fixes;   // records by fix type
  u32 resets = 0;                // a clock that ran back soon after the start
  std::vector<u32> wrong_sizes;  // file offsets
};

}  // namespace traguardo
