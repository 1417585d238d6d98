// SPDX-License-Identifier: MIT
// The records of a .wmp file, each field at its place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "simulator/wire.h"
#include "simulator/wmp_channels.h"
#include "simulator/wmp_recording.h"

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
  std::size_t logged_samples() const {
    return recording.seconds() * static_cast<std::size_t>(samples_per_second(logged()));
  }
  std::size_t all_samples() const {
    return recording.seconds() * static_cast<std::size_t>(samples_per_second(channels));
  }
  std::uint32_t run_count() const { return recording.laps.back().run; }
};

inline constexpr std::size_t kMainHeaderSize = 150;
inline constexpr std::size_t kConfigurationSize = 874;
inline constexpr std::size_t kIdentitySize = 128;
inline constexpr std::size_t kNamesSize = 360;
inline constexpr std::size_t kExtendedNamesSize = 664;
inline constexpr std::size_t kOldChannelSize = 98;
inline constexpr std::size_t kChannelSize = 668;
inline constexpr std::size_t kChannelExtensionSize = 356;
inline constexpr std::size_t kLapSize = 134;
inline constexpr std::size_t kLapExtensionSize = 122;
inline constexpr std::size_t kRunSize = 4096;
inline constexpr std::size_t kExtraSize = 64;
inline constexpr std::size_t kExtraRecords = 2;  // in versions with runs

Bytes main_header(const WmpSession& session, std::uint32_t file_length);
// dump_offset: of version 500, else 0.
Bytes configuration_block(const WmpSession& session, std::uint32_t dump_offset);
Bytes identity_block(const WmpSession& session);
Bytes names_block(const WmpSession& session);
Bytes extended_names_block(const WmpSession& session);
// Channel number `i` of the table.
Bytes channel_record(const WmpSession& session, std::size_t i);
Bytes channel_extension(const WmpSession& session, std::size_t i);
Bytes old_channel_record(const WmpSession& session, std::size_t i);
Bytes lap_record(const WmpSession& session, const WmpLap& lap);
Bytes run_record(std::uint32_t number);
Bytes extra_record(std::size_t number);

}  // namespace traguardo::simulator
