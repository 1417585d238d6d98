// SPDX-License-Identifier: MIT
// What stands in front of the data of a session: who, where, when, with which devices, and the channel table.
#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "simulator/channel_plan.h"
#include "simulator/simulator.h"
#include "wire/bytes.h"

namespace traguardo::simulator {

// Where a descriptor finds its channels: the set's index and the indexes of its members, in the order of a frame.
using ChannelSets = std::map<std::uint16_t, std::vector<std::uint16_t>>;

// The channel that carries the odometer's packets stands behind the planned ones.
inline std::uint16_t odometer_index(const std::vector<PlannedChannel>& channels) {
  return static_cast<std::uint16_t>(channels.size() + 1);
}

ChannelSets sets_of(const std::vector<PlannedChannel>& channels, Carrier carrier);

struct SessionTexts {
  std::string_view racer;
  std::string_view vehicle;
  std::string_view track;
  std::string_view championship;
};
// Who drives what where.
SessionTexts session_texts(std::uint64_t seed);

wire::Bytes session_tags(const SimulationOptions& options);
// Channel number i of the plan has the index i + 1.
wire::Bytes channel_table(const std::vector<PlannedChannel>& channels);

// The first moment of the session in the time of the GPS.
inline constexpr std::uint32_t kGpsWeek = 2314;
inline constexpr std::uint32_t kGpsTimeOfWeekMs = (12 * 3600 + 3 * 60 + 20 + 18) * 1000;

}  // namespace traguardo::simulator
