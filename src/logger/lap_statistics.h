// SPDX-License-Identifier: MIT
// The history of the lap marks of a file.
#pragma once

#include <string>
#include <vector>

#include "logger/lap_record.h"

namespace traguardo {

struct SStatLap {
  virtual ~SStatLap() = default;
  // One mark: its file offset, its logger time in ms, and its record (20 bytes; 28 or 32). Keeps a printable line of
  // it.
  virtual void Aggiungi20(u64 offset, u32 time_ms, const LapRecord& record);
  virtual void Aggiungi32(u64 offset, u32 time_ms, const LapRecord& record);

  std::vector<u64> bad_size_offsets;
  std::vector<u32> mark_times_ms;
  std::vector<std::string> lines;
  u32 repeated_laps = 0;
  u32 repeated_splits = 0;
  u32 bad_allocs = 0;

 private:
  void keep(u64 offset, u32 time_ms, const LapRecord& record);
};

}  // namespace traguardo
