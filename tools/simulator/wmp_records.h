// SPDX-License-Identifier: MIT
// What is written of a simulated session of an older logger.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "simulator/wmp_channels.h"
#include "simulator/wmp_recording.h"
#include "wire/wmp.h"

namespace traguardo::simulator {

struct WmpSession {
  WmpForm form;
  std::uint64_t seed = 1;
  std::vector<WmpChannel> channels;  // the logged ones first
  std::size_t logged_count = 0;
  WmpRecording recording;

  std::span<const WmpChannel> logged() const { return std::span(channels).first(logged_count); }
  std::size_t sample_count(const WmpChannel& channel) const {
    return recording.seconds() * static_cast<std::size_t>(channel.rate_hz);
  }
};

// Without the dump of versions 500 and 550.
wire::wmp::File described(const WmpSession& session);

}  // namespace traguardo::simulator
