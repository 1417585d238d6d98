// SPDX-License-Identifier: MIT
// Channels side by side: one row per moment or place, one column per channel.
#pragma once

#include <string>
#include <vector>

#include "output_file.h"
#include "session.h"

namespace traguardo::tool {

struct WideGrid {
  double rate_hz = 0;  // rows a second; 0: as many as the fastest of the channels has samples
  double step_m = 0;   // above 0: a row every so many metres instead
  std::string speed;   // whose way is the distance; empty: the speed of the session
};

// As comma-separated values with a heading row. With laps each begins at 0, and its number stands in front of the row;
// without, the rows go over the whole file. A cell is empty where its channel has no value yet, or none any more.
// Throws Failure.
void write_wide(OutputFile& out, Session& session, const std::vector<Channel>& channels, const std::vector<Lap>& laps,
                const WideGrid& grid);

}  // namespace traguardo::tool
