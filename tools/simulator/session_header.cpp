// SPDX-License-Identifier: MIT
#include "simulator/session_header.h"

#include <cmath>
#include <string>
#include <string_view>

#include "wire/qlt.h"

namespace traguardo::simulator {

using wire::Byte;
using wire::tag;
// Bytes are put together with a plus sign; the analyser doesn't see that.
using wire::operator+;  // NOLINT(misc-unused-using-decls)

namespace {

constexpr std::uint32_t kLoggerCode = 48;
constexpr std::uint32_t kLoggerSerial = 480017;
constexpr std::uint32_t kDisplayCode = 12;
constexpr std::uint32_t kDisplaySerial = 120331;
constexpr std::uint32_t kSensorBoxCode = 20;
constexpr std::uint32_t kSensorBoxSerial = 200458;
constexpr std::uint32_t kMillisecondSteps = 103;  // time base of a staggered set
constexpr std::uint32_t kOdometerPacket = 0x29A;

constexpr std::string_view kRacers[] = {"A. Marchetti", "L. Okafor", "S. Virtanen", "C. Duarte", "J. Whitlock"};
constexpr std::string_view kVehicles[] = {"GT 42", "Formula 7", "Saloon 12", "Kart 101"};
constexpr std::string_view kTracks[] = {"Collina Grande", "Valle Lunga Vecchia", "Lakeside Loop", "Nordhang"};

template <std::size_t N>
std::string_view pick(const std::string_view (&texts)[N], std::uint64_t seed) {
  return texts[seed % N];
}

wire::Bytes device(std::uint32_t code, std::uint32_t serial, Byte firmware_build) {
  return wire::Device{code, serial, {1, 2, 3}, {2, 14, firmware_build}, {1, 0, 7}}.record();
}

wire::Bytes track(const SimulationOptions& options) {
  const auto stored = [](double degrees) { return static_cast<std::int32_t>(std::floor(degrees * 1e7 + 0.5)); };
  return wire::Track{std::string(pick(kTracks, options.seed)), 1001, stored(options.latitude_deg),
                     stored(options.longitude_deg), 0x7A6B5C4Du}
      .record();
}

wire::Channel row_of(const PlannedChannel& channel, std::uint16_t index) {
  wire::Channel row;
  row.index = index;
  row.name = channel.name;
  row.format = static_cast<std::int32_t>(channel.format);
  row.size = static_cast<std::uint32_t>(wire::sample_size(channel.format));
  row.fid = channel.function;
  row.period_us = channel.rate_hz > 0 ? 1000000u / static_cast<std::uint32_t>(channel.rate_hz) : 0u;
  // Codes, gears and bits hold their value between two samples.
  const bool holds = channel.format == Format::gear || channel.format == Format::bits_8 ||
                     channel.format == Format::code_and_6_characters ||
                     channel.format == Format::code_and_30_characters;
  row.flags = holds ? 0x200u : 0u;
  row.type = static_cast<std::uint32_t>(channel.type);
  row.device_code = kLoggerCode;
  row.id_in_device = index;
  row.device_serial = kLoggerSerial;
  row.raw_format = row.format;
  return row;
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

wire::Bytes session_tags(const SimulationOptions& options) {
  const SessionTexts texts = session_texts(options.seed);
  const wire::Bytes on_bus = device(kDisplayCode, kDisplaySerial, 9) + device(kSensorBoxCode, kSensorBoxSerial, 4);
  return tag("SRC", device(kLoggerCode, kLoggerSerial, 21)) + tag("iSLV", on_bus) +  //
         tag("RCR", texts.racer) + tag("VEH", texts.vehicle) + tag("CMP", texts.championship) + tag("VTY", "Practice") +
         tag("TRK ", track(options)) + tag("RACM", "speed") + tag("PRFD", "simulated") + tag("TRTY", "closed") +
         tag("TMD", "05/12/2024") + tag("TMT", "14:03:20") +
         tag("ENF", tag("MAN", "Generic") + tag("MOD", "Serial 500")) + tag("EVT", "start");
}

wire::Bytes channel_table(const std::vector<PlannedChannel>& channels) {
  std::vector<wire::Channel> rows;
  rows.reserve(channels.size() + 1);
  for (const PlannedChannel& channel : channels) {
    rows.push_back(row_of(channel, static_cast<std::uint16_t>(rows.size() + 1)));
  }
  const PlannedChannel odometer{
      "Odometer", kOdometerPacket, ChannelType::ecu, Format::total_odometer, 0, Carrier::single, 0, Signal::distance_m};
  rows.push_back(row_of(odometer, odometer_index(channels)));

  // How a display draws the first channel, and a factor of 1.0 for it.
  wire::Bytes more = tag("CDE", wire::Record(6).u16(0, 1).u32(2, 0x00FF8040u).bytes()) +
                     tag("FT1", wire::Record(10).u16(0, 1).f32(6, 1.0F).bytes());
  for (const auto& [index, members] : sets_of(channels, Carrier::staggered)) {
    more = more + wire::acd(index, kMillisecondSteps, members);
  }
  for (const auto& [index, members] : sets_of(channels, Carrier::group)) more = more + wire::grp(index, members);
  return wire::cnf(rows, more);
}

}  // namespace traguardo::simulator
