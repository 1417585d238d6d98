// SPDX-License-Identifier: MIT
// What the C interface doesn't show of an open session: the reader and the merged view behind it. For the commands that
// look inside; they link the static core.
#pragma once

#include <optional>
#include <vector>

#include "api/file_table.h"
#include "session.h"

namespace traguardo::tool {

// Lives as long as the session.
SFileQLT& inside_of(const Session& session);

// Whether a mark closed the lap of this index; the one that the reader adds behind the last mark has none, nor has one
// of which only splits were driven.
bool was_lap_finished(const Session& session, int lap);

// The reader's own channel behind one of the session's; null for those of the GPS.
const CParsedChannel* parsed_channel_of(const Session& session, const Channel& channel);

// Whether a logged channel keeps a value until its next sample, as its record says; others change in a straight line.
bool is_held(const Session& session, const Channel& channel);

// The good solutions of the trace that the GPS functions use, borrowed from the file; empty without one.
std::vector<const SGpsRecord*> gps_solutions_of(const SFileQLT& file);

// The points of the derived GPS channels of a lap (an index, from 0), or all of them. Call it behind
// Session::gps_channels, which makes them.
LapSlice grid_slice_of(const SFileQLT& file, std::optional<int> lap);

// The length of the axis that all logged channels share; 0 without any. It begins at 0.
u64 axis_us(const SFileQLT& file);

// The time of the last sample of a logged channel; nothing without any. Costs a search, not the channel.
std::optional<double> last_time_s(CSuperChannel& channel);

// How many points a grid has over the whole axis. Throws Failure for more than a day at 1000 Hz has: only a clock that
// lies asks for them.
u64 points_on_axis(const SFileQLT& file, u64 step_us);

// A logged channel on an even grid over the whole axis, from 0 on. REQUIRES: step_us above 0.
std::vector<float> on_even_grid(const SFileQLT& file, CSuperChannel& channel, u64 step_us);

}  // namespace traguardo::tool
