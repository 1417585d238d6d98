// SPDX-License-Identifier: MIT
#include "units/sample_texts.h"

#include "units/mylaps_bits.h"
#include "units/sample_reader.h"
#include "units/text_format.h"

namespace traguardo::sample_texts {
namespace {

// A number of 32 bits as text, or what its sentinel says.
template <typename Former>
std::string sentinel_or(const u8* number, Former former) {
  const u32 status = sentinel_status(load_u32(number));
  return status != kStatusGood ? status_text(status) : former(number);
}

}  // namespace

std::string lap(const u8* value, const DisplaySettings&) {
  return sentinel_or(value + 4, [value](const u8* time) { return lap_text(load_u32(time), load_u16(value + 2)); });
}

std::string lap_1g_packet(const u8*, const DisplaySettings&) {
  return "LAP Packet 1G";
}

std::string gps_zep_state(const u8* value, const DisplaySettings&) {
  return gps_state_text(value[14], value[51], true);
}

std::string gps_ubx_state(const u8* value, const DisplaySettings&) {
  return gps_state_text(value[10], value[47], false);
}

std::string satellite_packet(const u8*, const DisplaySettings&) {
  return "GPS SV Info Packet";
}

std::string date_time_packet(const u8*, const DisplaySettings&) {
  return "Date and Time Packet";
}

std::string gear(const u8* value, const DisplaySettings&) {
  return gear_text(load_i16(value));
}

std::string lap_time(const u8* value, const DisplaySettings& display) {
  return sentinel_or(value, [&display](const u8* time) {
    return lap_time_text(load_i32(time), display.width, display.decimals == 1);
  });
}

std::string coordinate(const u8* value, const DisplaySettings&) {
  return sentinel_or(value, [](const u8* position) { return coordinate_text(load_i32(position)); });
}

std::string time_difference(const u8* value, const DisplaySettings& display) {
  return sentinel_or(
      value, [&display](const u8* difference) { return time_difference_text(load_i32(difference), display.width); });
}

std::string running_time(const u8* value, const DisplaySettings&) {
  return sentinel_or(value, [](const u8* time) { return running_time_text(load_u32(time)); });
}

std::string odometer_time(const u8* value, const DisplaySettings& display) {
  return odometer_time_text(load_u32(value), display.decimals);
}

std::string text_of_6(const u8* value, const DisplaySettings&) {
  return text_field(value + 2, 6);
}

std::string text_of_30(const u8* value, const DisplaySettings&) {
  return text_field(value + 2, 30);
}

std::string mylaps_time(const u8* value, const DisplaySettings&) {
  const mylaps::Timing timing = mylaps::timing_of(value);
  return mylaps::value_text(timing.time_s, timing.time_kind, timing.time_is_negative);
}

std::string mylaps_field(const u8* value, const DisplaySettings&) {
  const mylaps::Timing timing = mylaps::timing_of(value);
  return mylaps::field_text(timing.field, timing.field_kind, timing.field_is_negative);
}

std::string mylaps_count(const u8* value, const DisplaySettings&) {
  const mylaps::Timing timing = mylaps::timing_of(value);
  return mylaps::field_text(timing.count, timing.count_kind, false);
}

std::string mylaps_position(const u8* value, const DisplaySettings&) {
  return mylaps::value_text(mylaps::timing_of(value).position, 0, false);
}

std::string mylaps_first_gap(const u8* value, const DisplaySettings&) {
  return mylaps::gap_text(mylaps::gap_of(load_u32(value)));
}

std::string mylaps_second_gap(const u8* value, const DisplaySettings&) {
  return mylaps::gap_text(mylaps::gap_of(load_u32(value + 4)));
}

}  // namespace traguardo::sample_texts
