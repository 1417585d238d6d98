// SPDX-License-Identifier: MIT
// What a formula sees of a session. The legacy reader and the command-line tool each put their session behind it.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "support/bytes.h"

namespace traguardo {

struct SMathLap {
  double start_ms = 0.0;
  double duration_ms = 0.0;
};

class IMathSession {
 public:
  virtual ~IMathSession() = default;

  // The channels that a formula can name, by index. Of equal names the first one counts.
  virtual std::size_t channel_count() const = 0;
  virtual std::string_view channel_name(std::size_t index) const = 0;

  // Another number after every change of the names, and one that no other session has; 0 where the session doesn't
  // count its changes. A table is asked for its names once, however many formulas are computed over it.
  virtual u64 names_version() const { return 0; }

  // The channel to compute. Its index may be one that no formula can name (channel_count() or above), where the session
  // gives such an index a meaning.
  virtual std::string_view Formula(std::size_t target) const = 0;
  // Above 0. Whole in a legacy session, not always elsewhere.
  virtual double period_ms(std::size_t target) const = 0;
  virtual u32 frequency_hz(std::size_t target) const = 0;
  // Where the values go; as many as the target has samples.
  virtual std::span<float> Samples(std::size_t target) = 0;

  // In time order; starts and ends on the axis on which the first sample stands at 0. May be none.
  virtual std::size_t lap_count() const = 0;
  virtual SMathLap Lap(std::size_t index) const = 0;

  // Channel `source` on the grid of the target from its sample `first` on, one value per element of `out`. Behind the
  // source's end it reads 0.0. Long channels are asked for in pieces, from front to back, once per pass.
  virtual void fill_input(std::size_t source, std::size_t target, std::size_t first, std::span<float> out) = 0;
};

// The usual way to fill an input: samples at whole multiples of their period, copied where the periods are equal, else
// interpolated between neighbours in single precision; 0.0 behind the last sample. A period of 0 reads 0.0 throughout.
// first: the place on the target's grid at which `out` begins.
void resample_linear(std::span<const float> source, u32 source_period_ms, u32 target_period_ms, std::size_t first,
                     std::span<float> out);

}  // namespace traguardo
