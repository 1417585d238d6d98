// SPDX-License-Identifier: MIT
// The parts of a .qlt file: tags, the records in them, and the frames between them. A file is what stands one behind
// the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "wire/bytes.h"

namespace traguardo::wire {

// --- Tags

// The name has up to four characters.
Bytes tag(std::string_view name, const Bytes& payload, std::uint8_t version = 1);
Bytes tag(std::string_view name, std::string_view text, std::uint8_t version = 1);

// A device, as the tags SRC and iSLV have it. Versions: three numbers.
struct Device {
  std::uint32_t code = 0;
  std::uint32_t serial = 0;
  Byte recovery[3] = {};
  Byte firmware[3] = {};
  Byte hardware[3] = {};

  Bytes record() const;
};

// The record in the tag "TRK ".
struct Track {
  std::string name;
  std::uint32_t id = 0;
  std::int32_t latitude = 0;  // degrees x 1e7
  std::int32_t longitude = 0;
  std::uint32_t key = 0;

  Bytes record() const;
};

// A row of the channel table.
struct Channel {
  std::uint16_t index = 0;
  std::string name;
  std::int32_t format = 4;  // two bytes without a sign
  std::uint32_t size = 2;
  std::uint32_t fid = 0x10;  // a speed in km/h: values as they are
  std::uint32_t period_us = 10000;
  std::uint32_t flags = 0;
  std::uint32_t type = 1;
  std::uint16_t device_code = 0;
  std::uint16_t id_in_device = 0;
  std::uint32_t device_serial = 0;
  std::int32_t raw_format = 4;

  Bytes record() const;
  Bytes chs() const { return tag("CHS", record()); }
};

// The tag CNF with a tag CHS for each channel, and what else is said of them.
Bytes cnf(const std::vector<Channel>& channels, const Bytes& more = {});
// A staggered set, and a group.
Bytes acd(std::uint16_t index, std::uint16_t time_base, const std::vector<std::uint16_t>& channels);
Bytes grp(std::uint16_t index, const std::vector<std::uint16_t>& channels);

// Lap records of the three forms: version 1 (28 bytes), 2 (32) and 3 (20).
struct Lap {
  std::uint8_t session = 0;
  std::uint8_t split = 0;
  std::uint16_t lap = 1;
  std::int32_t lap_time_ms = 0;
  std::uint32_t split_time_ms = 0;
  std::uint32_t time_ms = 0;
  std::uint8_t kind0 = 0;
  std::uint8_t kind1 = 0;

  Bytes record(int version) const;
  Bytes tagged(int version = 2) const { return tag("LAP", record(version), static_cast<std::uint8_t>(version)); }
};

// A solution of the GPS receiver, in the logger's files as in trace files.
struct GpsSolution {
  static constexpr std::size_t kSize = 56;

  std::uint32_t time_ms = 0;
  std::uint32_t time_of_week_ms = 0;
  std::int32_t fractional_ns = 0;
  std::int16_t week = 2000;
  std::uint8_t fix = 3;
  std::uint8_t flags = 0;
  std::int32_t x_cm = 444913261;  // 45 N, 10 E, 250 m
  std::int32_t y_cm = 78450212;
  std::int32_t z_cm = 448752519;
  std::uint32_t position_accuracy_cm = 150;
  std::int32_t vx_cm_s = 0;
  std::int32_t vy_cm_s = 0;
  std::int32_t vz_cm_s = 0;
  std::uint32_t speed_accuracy_cm_s = 20;
  std::uint16_t dop = 180;
  std::uint8_t satellites = 9;

  Bytes record() const;
  Bytes tagged() const { return tag("GPS", record()); }
};

// --- Frames

inline constexpr std::size_t kFrameHeadSize = 8;
Byte* put_frame_head(Byte* at, char letter, std::uint32_t time_ms, std::uint32_t index);

Bytes frame_head(char letter, std::uint32_t time_ms, std::uint16_t index);
Bytes frame(char letter, std::uint32_t time_ms, std::uint16_t index, const Bytes& data);
// One sample of two bytes, and several.
Bytes frame_s(std::uint32_t time_ms, std::uint16_t index, std::uint16_t value);
Bytes frame_m(std::uint32_t time_ms, std::uint16_t index, const std::vector<std::uint16_t>& values);

// A piece of a packet. Without its length written it ends at the first ')'.
struct Chunk {
  std::uint32_t kind = 0;
  std::uint32_t index = 0;
  std::uint32_t number = 0;
  bool last = false;
  bool with_length = true;

  Bytes frame(const Bytes& data) const;
};

// How many there are, and they themselves.
Bytes counted(const std::vector<std::uint16_t>& values);

// Keeps what stands before it out of the stretch at the end of a file that no walk reaches.
Bytes tail();

}  // namespace traguardo::wire
