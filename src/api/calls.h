// SPDX-License-Identifier: MIT
// What the exported functions have in common: an open file is looked up and held for the call, a lap is found, and
// whatever fails inside becomes a result.
#pragma once

#include "api/file_table.h"
#include "api/guarded.h"
#include "api/results.h"

namespace traguardo {

// What `work` makes of an open file; -1 for a handle that isn't open.
template <typename Work>
int with_file(int handle, Work&& work) noexcept {
  return guarded(kNoData, [&]() -> int {
    const FileInUse file = use_file(handle);
    return file ? work(*file) : kNoHandle;
  });
}

// What `work` makes of an open file and the time range of a lap, microseconds; else the codes of the lap functions.
template <typename Work>
int with_lap(int handle, int lap, Work&& work) noexcept {
  return with_file(handle, [&](SFileQLT& file) -> int {
    const SRkLap* found = nullptr;
    switch (find_lap(file, lap, &found)) {
      case LapLookup::kNoSession:
        return kLapNoSession;
      case LapLookup::kNoLap:
        return kLapNoLap;
      case LapLookup::kFound:
        break;
    }
    return work(file, found->start, found->start + found->duration);
  });
}

// A text of an open file; null for a handle that isn't open.
template <typename Work>
const char* text_of_file(int handle, Work&& work) noexcept {
  return guarded<const char*>(nullptr, [&]() -> const char* {
    const FileInUse file = use_file(handle);
    return file ? work(*file) : nullptr;
  });
}

}  // namespace traguardo
