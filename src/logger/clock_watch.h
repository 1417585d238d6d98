// SPDX-License-Identifier: MIT
// Finds the clocks that a reader believes and must not: within the first minute any clock raises the reader's time, and
// a GPS tag may set it back; all that follows is then refused for as long as it disagrees. A clock that jumped is taken
// back if no clock behind it agrees with it and a hundred in a row agree with each other.
#pragma once

#include <algorithm>
#include <optional>
#include <vector>

#include "support/bytes.h"

namespace traguardo {

// Within the first minute of data any clock is believed; later one that jumps by more than a minute is not.
inline constexpr u64 kOneMinute = 60'000'000;
inline bool is_plausible(u64 time, u64 highest) {
  // Within a minute on either side, as one comparison: below it the difference wraps.
  return highest <= kOneMinute || time - (highest - kOneMinute) <= 2 * kOneMinute;
}

class ClockWatch {
 public:
  // A frame's clock, or that of a GPS tag, which is set and not only raised. Microseconds.
  struct Stamp {
    u64 position;
    u64 first;
    u64 last;
    bool is_set;
  };

  // In the order of the file.
  void Take(const Stamp& stamp);
  // The positions of what is not to be believed, rising.
  std::vector<u64> taken_back() const;

 private:
  // How many must agree with each other, and among how many they are looked for: bounds memory and repeated work.
  static constexpr std::size_t kWitnesses = 100;
  static constexpr std::size_t kMostHeld = 256;

  // True if the suspect is contradicted now.
  bool take_one(const Stamp& stamp);
  void believe(const Stamp& stamp);
  void acquit();
  bool agrees_with_run(const Stamp& stamp) const;

  u64 highest_ = 0;
  std::optional<Stamp> suspect_;
  u64 before_ = 0;           // the time when the suspect came
  std::vector<Stamp> held_;  // all behind the suspect, in their order
  std::size_t run_ = 0;      // how many of the last of them agree with each other
  u64 run_highest_ = 0;
  std::vector<u64> taken_back_;
};

}  // namespace traguardo
