// SPDX-License-Identifier: MIT
// The chain from the raw words of a channel, or from what computes it, to the values that a host reads.
#pragma once

#include <cstddef>

namespace traguardo {

struct WmpSession;

// The whole chain of one channel, logged or derived: first step, flat runs, gain and offset, filters, invert, repair
// passes, statistics. raw_only: the first step gives the raw words. The result is that of the first step; a derived
// channel that can't be computed reads 0.0.
bool convert_channel(WmpSession& session, std::size_t index, bool raw_only);

}  // namespace traguardo
