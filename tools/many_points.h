// SPDX-License-Identifier: MIT
// A warning in front of an output that nobody expects to be so long.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "session.h"

namespace traguardo::tool {

// On standard error, where one of the channels has more GPS points than a day of them, of which at most `head` are
// wanted; no laps are the whole file. Then a clock went wild, and a person may want to stop.
void announce_many_points(const Session& session, const std::vector<Channel>& channels, const std::vector<Lap>& laps,
                          std::uint64_t head = std::numeric_limits<std::uint64_t>::max());

}  // namespace traguardo::tool
