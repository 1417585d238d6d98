// SPDX-License-Identifier: MIT
#include "simulator/session_header.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <string_view>

namespace traguardo::simulator {

namespace {

constexpr std::uint32_t kLoggerCode = 48;
constexpr std::uint32_t kLoggerSerial = 480017;
constexpr std::uint32_t kDisplayCode = 12;
constexpr std::uint32_t kDisplaySerial = 120331;
constexpr std::uint32_t kSensorBoxCode = 20;
constexpr std::uint32_t kSensorBoxSerial = 200458;
constexpr std::size_t kIdentSize = 64;
constexpr std::size_t kTrackSize = 96;
constexpr std::size_t kChannelRecordSize = 112;
constexpr std::uint32_t kMillisecondSteps = 103;  // time base of a staggered set
constexpr std::uint32_t kOdometerPacket = 0x29A;

constexpr std::string_view kRacers[] = {"A. Marchetti", "L. Okafor", "S. Virtanen", "C. Duarte", "J. Whitlock"};
constexpr std::string_view kVehicles[] = {"GT 42", "Formula 7", "Saloon 12", "Kart 101"};
constexpr std::string_view kTracks[] = {"Collina Grande", "Valle Lunga Vecchia", "Lakeside Loop", "Nordhang"};

template <std::size_t N>
std::string_view pick(const std::string_view (&texts)[N], std::uint64_t seed) {
  return texts[seed % N];
}

void append_ident(Bytes& out, std::uint32_t code, std::uint32_t serial, std::uint32_t firmware_build) {
  Byte ident[kIdentSize] = {};
  put_u32(ident + 8, code);
  put_u32(ident + 12, serial);
  put_u32(ident + 16, 1 | 2u << 8 | 3u << 16);               // recovery 1.2.3
  put_u32(ident + 20, 2 | 14u << 8 | firmware_build << 16);  // firmware
  put_u32(ident + 24, 1 | 0u << 8 | 7u << 16);               // hardware
  out.insert(out.end(), std::begin(ident), std::end(ident));
}

Bytes track_record(const SimulationOptions& options) {
  Bytes record(kTrackSize, 0);
  const std::string_view name = pick(kTracks, options.seed);
  std::memcpy(record.data(), name.data(), std::min<std::size_t>(name.size(), 31));
  put_u32(record.data() + 32, 1001);
  put_i32(record.data() + 36, static_cast<std::int32_t>(std::floor(options.latitude_deg * 1e7 + 0.5)));
  put_i32(record.data() + 40, static_cast<std::int32_t>(std::floor(options.longitude_deg * 1e7 + 0.5)));
  put_u32(record.data() + 88, 0x7A6B5C4Du);
  return record;
}

Bytes channel_record(const PlannedChannel& channel, std::uint32_t index) {
  Bytes record(kChannelRecordSize, 0);
  Byte* const at = record.data();
  put_u16(at, index);
  put_u16(at + 4, kLoggerCode);
  put_u16(at + 6, index);
  put_u32(at + 8, kLoggerSerial);
  put_u32(at + 12, channel.function);
  put_u32(at + 16, static_cast<std::uint32_t>(channel.type));
  put_u32(at + 20, static_cast<std::uint32_t>(channel.format));
  std::memcpy(at + 32, channel.name.data(), std::min<std::size_t>(channel.name.size(), 31));
  put_u32(at + 64, channel.rate_hz > 0 ? 1000000u / static_cast<std::uint32_t>(channel.rate_hz) : 0u);
  put_u32(at + 72, static_cast<std::uint32_t>(sample_size(channel.format)));
  // Codes, gears and bits hold their value between two samples.
  const bool holds = channel.format == Format::gear || channel.format == Format::bits_8 ||
                     channel.format == Format::code_and_6_characters ||
                     channel.format == Format::code_and_30_characters;
  put_u32(at + 80, holds ? 0x200u : 0u);
  put_u32(at + 84, static_cast<std::uint32_t>(channel.format));
  return record;
}

Bytes odometer_record(std::uint32_t index) {
  const PlannedChannel channel{
      "Odometer", kOdometerPacket, ChannelType::ecu, Format::total_odometer, 0, Carrier::single, 0, Signal::distance_m};
  return channel_record(channel, index);
}

// `time_base`: 0 for a group, which has none.
Bytes descriptor(std::uint32_t index, std::uint32_t time_base, const std::vector<std::uint16_t>& members) {
  const std::size_t head = time_base == 0 ? 4 : 6;
  Bytes payload(head + members.size() * 2, 0);
  Byte* at = put_u16(payload.data(), index);
  if (time_base != 0) at = put_u16(at, time_base);
  at = put_u16(at, static_cast<std::uint32_t>(members.size()));
  for (const std::uint16_t member : members) at = put_u16(at, member);
  return payload;
}

}  // namespace

ChannelSets sets_of(const std::vector<PlannedChannel>& channels, Carrier carrier) {
  ChannelSets sets;
  for (std::size_t i = 0; i < channels.size(); ++i) {
    if (channels[i].carrier != carrier) continue;
    sets[static_cast<std::uint16_t>(channels[i].set)].push_back(static_cast<std::uint16_t>(i + 1));
  }
  return sets;
}

SessionTexts session_texts(std::uint64_t seed) {
  return {pick(kRacers, seed), pick(kVehicles, seed), pick(kTracks, seed), "Club Trophy"};
}

Bytes session_tags(const SimulationOptions& options) {
  const SessionTexts texts = session_texts(options.seed);
  Bytes out;
  Bytes logger;
  append_ident(logger, kLoggerCode, kLoggerSerial, 21);
  append_tag(out, "SRC", 1, logger);
  Bytes devices;  // on its bus
  append_ident(devices, kDisplayCode, kDisplaySerial, 9);
  append_ident(devices, kSensorBoxCode, kSensorBoxSerial, 4);
  append_tag(out, "iSLV", 1, devices);

  append_text_tag(out, "RCR", texts.racer);
  append_text_tag(out, "VEH", texts.vehicle);
  append_text_tag(out, "CMP", texts.championship);
  append_text_tag(out, "VTY", "Practice");
  append_tag(out, "TRK ", 1, track_record(options));
  append_text_tag(out, "RACM", "speed");
  append_text_tag(out, "PRFD", "simulated");
  append_text_tag(out, "TRTY", "closed");
  append_text_tag(out, "TMD", "05/12/2024");
  append_text_tag(out, "TMT", "14:03:20");

  Bytes ecu;
  append_text_tag(ecu, "MAN", "Generic");
  append_text_tag(ecu, "MOD", "Serial 500");
  append_tag(out, "ENF", 1, ecu);
  append_text_tag(out, "EVT", "start");
  return out;
}

Bytes channel_table(const std::vector<PlannedChannel>& channels) {
  Bytes nested;
  for (std::size_t i = 0; i < channels.size(); ++i) {
    append_tag(nested, "CHS", 1, channel_record(channels[i], static_cast<std::uint32_t>(i + 1)));
  }
  append_tag(nested, "CHS", 1, odometer_record(odometer_index(channels)));

  Bytes colour(6, 0);  // how a display draws the first channel
  put_u32(put_u16(colour.data(), 1), 0x00FF8040u);
  append_tag(nested, "CDE", 1, colour);
  Bytes factor(10, 0);
  put_u16(factor.data(), 1);
  put_u32(factor.data() + 6, 0x3F800000u);  // 1.0
  append_tag(nested, "FT1", 1, factor);

  for (const auto& [index, members] : sets_of(channels, Carrier::staggered)) {
    append_tag(nested, "ACD", 1, descriptor(index, kMillisecondSteps, members));
  }
  for (const auto& [index, members] : sets_of(channels, Carrier::group)) {
    append_tag(nested, "GRP", 1, descriptor(index, 0, members));
  }
  Bytes out;
  append_tag(out, "CNF", 1, nested);
  return out;
}

}  // namespace traguardo::simulator
