// SPDX-License-Identifier: MIT
#include "many_points.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "error_line.h"

namespace traguardo::tool {

void announce_many_points(const Session& session, const std::vector<Channel>& channels, const std::vector<Lap>& laps,
                          std::uint64_t head) {
  constexpr std::uint64_t kDayOfPoints = 8'640'000;
  std::uint64_t points = 0;
  std::uint64_t most = 0;
  for (const Channel& channel : channels) {
    if (channel.kind != ChannelKind::gps) continue;
    std::uint64_t count = laps.empty() ? session.sample_count(channel, std::nullopt) : 0;
    for (const Lap& lap : laps) count += session.sample_count(channel, lap.index());
    count = std::min(count, head);
    points += count;
    most = std::max(most, count);
  }
  if (most <= kDayOfPoints) return;
  say_error_line(
      fmt::format("about to write {} GPS points, one every 10 ms over {:.0f} s: its clock leaps between two solutions",
                  points, static_cast<double>(most) / 100));
}

}  // namespace traguardo::tool
