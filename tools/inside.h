// What the C interface doesn't show of an open session: the reader and the merged view behind it. For the commands that
// look inside; they link the static core.
#pragma once

#include <vector>

#include "api/file_table.h"
#include "session.h"

namespace traguardo::tool {

// Lives as long as the session.
SFileQLT& inside_of(const Session& session);

// The length of the axis that all logged channels share; 0 without any. It begins at 0.
u64 axis_us(const SFileQLT& file);

// How many points a grid has over the whole axis. Throws Failure for more than a day at 1000 Hz has: only a clock that
// lies asks for them.
u64 points_on_axis(const SFileQLT& file, u64 step_us);

// A logged channel on an even grid over the whole axis, from 0 on. REQUIRES: step_us above 0.
std::vector<float> on_even_grid(const SFileQLT& file, CSuperChannel& channel, u64 step_us);

}  // namespace traguardo::tool
