// SPDX-License-Identifier: MIT
#include "legacy/file/wmp_tables.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include "legacy/file/sample_rate.h"

namespace traguardo {

void WmpChannel::update_rate() {
  const SampleRate rate = sample_rate_of(record.rate_index());
  statistics.period_ms = rate.period_ms;
  statistics.frequency_hz = rate.frequency_hz;
}

std::size_t WmpTables::stated_channels() const {
  return static_cast<std::size_t>(std::max<i16>(header.channel_count(), 0));
}
std::size_t WmpTables::stated_laps() const {
  return static_cast<std::size_t>(std::max<i16>(header.lap_count(), 0));
}

u32 WmpTables::function_id(std::size_t channel) const {
  return configuration.has_function_ids() ? channels[channel].extension.function_id() : 0;
}

u32 WmpTables::second_function_id(std::size_t channel) const {
  return configuration.has_function_ids() ? channels[channel].extension.second_function_id() : 0;
}

bool WmpTables::is_gps_speed(std::size_t channel) const {
  return function_id(channel) == WmpChannelExtension::kFunctionGpsSpeed && second_function_id(channel) == 0;
}

bool WmpTables::is_reference_speed(std::size_t channel) const {
  return header.reference_speed() >= 0 && static_cast<std::size_t>(header.reference_speed()) == channel;
}

i16 WmpTables::first_speed() const {
  const auto found = std::ranges::find_if(channels, &WmpChannel::is_speed);
  return found == channels.end() ? i16{-1} : static_cast<i16>(found - channels.begin());
}

bool is_receiver_logger(const WmpMainHeader& header) {
  return header.firmware_first() == 0x41;
}

std::string firmware_text(const WmpMainHeader& header) {
  char text[32];
  std::snprintf(text, sizeof text, "%02x.%02x.%02x", static_cast<unsigned>(header.firmware_first()),
                static_cast<unsigned>(header.firmware_second()), static_cast<unsigned>(header.firmware_third()));
  return text;
}

std::string software_text(const WmpMainHeader& header) {
  const u32 software = header.software_version();
  char digits[32];
  std::snprintf(digits, sizeof digits, "%01x.%02x.%02x", static_cast<unsigned>((software >> 20) & 0xFF),
                static_cast<unsigned>((software >> 12) & 0xFF), static_cast<unsigned>((software >> 4) & 0xFF));
  std::string text = digits;
  const char letter = software_letters()[software & 0xF];
  if (letter != 0) text.push_back(letter);
  return text;
}

u64 record_bytes(const WmpTables& tables) {
  const WmpVersionRow& row = *tables.version;
  const u64 channel = u64{row.block_head} + row.channel_record + row.channel_extension;
  const u64 lap = u64{row.block_head} + row.lap_record + row.lap_extension;
  u64 bytes = tables.stated_channels() * channel + tables.stated_laps() * lap;
  if (row.run_record > 0) bytes += tables.configuration.run_count() * (u64{row.block_head} + row.run_record);
  if (row.extra_record > 0) bytes += tables.configuration.extra_count() * (u64{row.block_head} + row.extra_record);
  return bytes;
}

u64 table_bytes(const WmpTables& tables) {
  constexpr u64 kBlocks = 3;
  const WmpVersionRow& row = *tables.version;
  return kBlocks * row.block_head + row.main_header + row.configuration + row.identity + row.names +
         row.extended_names + record_bytes(tables);
}

void update_file_length(WmpTables* tables) {
  const u32 fixed_areas = tables->version->fixed_areas;
  u64 length = table_bytes(*tables) + tables->header.raw_area_size();
  if (fixed_areas > 0) {
    // In records of 256 bytes: a lap is one of them, a channel four.
    const u64 records = tables->stated_laps() + 4 * u64{tables->stated_channels()} + 8;
    length = tables->dump_bytes + fixed_areas + kAlignedAreaSize * (records / (kAlignedAreaSize / 256));
  }
  tables->header.set_file_length(static_cast<u32>(std::min<u64>(length, std::numeric_limits<u32>::max())));
}

u64 aligned_areas_start(const WmpTables& tables) {
  const u64 bytes = 256 * (u64{tables.stated_laps()} + 4 * u64{tables.stated_channels()}) + 2047;
  return bytes / kAlignedAreaSize * kAlignedAreaSize + kAlignedAreaSize;
}

}  // namespace traguardo
