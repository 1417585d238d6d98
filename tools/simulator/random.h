// SPDX-License-Identifier: MIT
// A small generator of our own (SplitMix64), so that a seed gives the same numbers with every compiler and every
// standard library.
#pragma once

#include <cstdint>

namespace traguardo::simulator {

class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next() {
    state_ += 0x9E3779B97F4A7C15u;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
  }
  // In [0, 1).
  double uniform() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }
  double between(double low, double high) { return low + (high - low) * uniform(); }
  // In [0, limit). REQUIRES: limit > 0.
  std::uint64_t below(std::uint64_t limit) { return next() % limit; }

 private:
  std::uint64_t state_;
};

}  // namespace traguardo::simulator
