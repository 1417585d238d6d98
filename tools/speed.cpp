// SPDX-License-Identifier: MIT
#include "speed.h"

#include <fmt/format.h>

#include <algorithm>

#include "failure.h"
#include "inside.h"
#include "text.h"
#include "units/exact_units.h"

namespace traguardo::tool {

namespace {

constexpr const char* kGpsSpeed = "GPS Speed";

}  // namespace

double metres_per_second(const std::string& unit) {
  double factor = 0;
  double addend = 0;
  return exact_unit(Quantity::kSpeed, unit, &factor, &addend) ? factor : 0;
}

Channel speed_channel(Session& session, const std::string& wanted, const char* option) {
  if (!wanted.empty()) {
    Channel channel = session.find_channel(wanted);
    if (metres_per_second(channel.unit) == 0 || channel.kind == ChannelKind::gps_raw) {
      throw Failure(fmt::format("channel \"{}\" is no speed in km/h, mph or m/s", channel.name));
    }
    return channel;
  }
  const std::vector<Channel> logged = session.logged_channels();
  for (const auto& known : inside_of(session).reader->GetCanali()) {
    if (!known->IsVelocita() || metres_per_second(known->GetUnita()) == 0) continue;
    const auto found = std::find_if(logged.begin(), logged.end(), [&known](const Channel& channel) {
      return channel.name == to_utf8(known->GetNome());
    });
    if (found != logged.end()) return *found;
  }
  for (const Channel& channel : logged) {
    if (metres_per_second(channel.unit) != 0) return channel;
  }
  for (const Channel& channel : session.gps_channels()) {
    if (channel.name == kGpsSpeed) return channel;
  }
  throw Failure(fmt::format("no speed in {}: name a channel with {}", session.path(), option));
}

}  // namespace traguardo::tool
