// SPDX-License-Identifier: MIT
// What the reader could not use of a file: one account, kept where damage is met and nowhere else.
#pragma once

#include <optional>

#include "model/parsed_channel.h"

namespace traguardo {

struct Losses {
  u64 bytes = 0;           // that belonged to no frame and no tag
  u64 broken_frames = 0;   // without their end where it must be
  u64 unknown_frames = 0;  // for an index that no table has
  u64 clocks = 0;          // frames, and GPS tags, whose clock was not believed
  u64 packets = 0;         // chunks of packets that could not be put together

  u64 frames() const { return broken_frames + unknown_frames + clocks + packets; }
};

// How many samples a channel lacks between its first and its last, from its period. Nothing for a channel that was not
// logged at an even rate: where it has no sample it need not have lost one. Throws ReadFailure.
std::optional<u64> missing_samples(CParsedChannel* channel);

}  // namespace traguardo
