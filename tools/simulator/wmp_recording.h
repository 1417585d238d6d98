// SPDX-License-Identifier: MIT
// What an older logger has in its memory when the car is back: the samples of its channels, the laps, the GPS trace.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "simulator/circuit.h"
#include "simulator/simulator.h"
#include "simulator/wmp_channels.h"
#include "wire/bytes.h"

namespace traguardo::simulator {

struct WmpLap {
  std::uint32_t start_ms = 0;
  std::uint32_t time_ms = 0;
  bool complete = true;  // false: cut by the end of the session
  std::uint32_t number = 0;
  std::uint32_t run = 1;

  std::uint32_t end_ms() const { return start_ms + time_ms; }
};

struct WmpRecording {
  std::uint32_t duration_ms = 0;  // whole seconds
  // Of each logged channel: duration times rate, the first at 0. In the unit of its file.
  std::vector<std::vector<float>> samples;
  std::vector<WmpLap> laps;  // at least one
  wire::Bytes solutions;     // of the receiver, GpsSolution::kSize bytes each

  std::size_t seconds() const { return duration_ms / 1000; }
};

// logged: without derived channels. several_runs: the laps are spread over up to three runs, else all belong to one.
// Throws tool::Failure for a session that is too long.
WmpRecording record_session(const SimulationOptions& options, const Circuit& circuit,
                            std::span<const WmpChannel> logged, bool several_runs);

// The best of the complete laps; null if there is none.
const WmpLap* best_lap(std::span<const WmpLap> laps);

}  // namespace traguardo::simulator
