// SPDX-License-Identifier: MIT
// The texts of samples: what a former reads of a sample's bytes. Rows of the tables of formats and of packets name
// them.
#pragma once

#include <string>

#include "support/bytes.h"
#include "units/value_text.h"

namespace traguardo {

using TextFunction = std::string (*)(const u8* value, const DisplaySettings& display);

// How a sample, or a field of one, becomes a text.
struct TextForm {
  TextFunction former = nullptr;
  u32 bytes = 0;           // that the former reads, from the value on
  bool is_number = false;  // the text of the number that the format's reader gives; there is no former then

  bool exists() const { return former != nullptr || is_number; }
};

namespace sample_texts {

// The formers give kNoText where the bytes have no text.
std::string lap(const u8* value, const DisplaySettings& display);
std::string lap_1g_packet(const u8* value, const DisplaySettings& display);
std::string gps_zep_state(const u8* value, const DisplaySettings& display);
std::string gps_ubx_state(const u8* value, const DisplaySettings& display);
std::string satellite_packet(const u8* value, const DisplaySettings& display);
std::string date_time_packet(const u8* value, const DisplaySettings& display);
std::string gear(const u8* value, const DisplaySettings& display);
std::string lap_time(const u8* value, const DisplaySettings& display);
std::string coordinate(const u8* value, const DisplaySettings& display);
std::string time_difference(const u8* value, const DisplaySettings& display);
std::string running_time(const u8* value, const DisplaySettings& display);
std::string odometer_time(const u8* value, const DisplaySettings& display);
// Behind a code of two bytes.
std::string text_of_6(const u8* value, const DisplaySettings& display);
std::string text_of_30(const u8* value, const DisplaySettings& display);
// Fields of the timing packets, see mylaps_bits.h.
std::string mylaps_time(const u8* value, const DisplaySettings& display);
std::string mylaps_field(const u8* value, const DisplaySettings& display);
std::string mylaps_count(const u8* value, const DisplaySettings& display);
std::string mylaps_position(const u8* value, const DisplaySettings& display);
std::string mylaps_first_gap(const u8* value, const DisplaySettings& display);
std::string mylaps_second_gap(const u8* value, const DisplaySettings& display);

inline constexpr TextForm kNone{};
inline constexpr TextForm kNumber{nullptr, 0, true};
inline constexpr TextForm kLap{lap, 8};
inline constexpr TextForm kLap1gPacket{lap_1g_packet, 0};
inline constexpr TextForm kGpsZepState{gps_zep_state, 52};
inline constexpr TextForm kGpsUbxState{gps_ubx_state, 48};
inline constexpr TextForm kSatellitePacket{satellite_packet, 0};
inline constexpr TextForm kDateTimePacket{date_time_packet, 0};
inline constexpr TextForm kGear{gear, 2};
inline constexpr TextForm kLapTime{lap_time, 4};
inline constexpr TextForm kCoordinate{coordinate, 4};
inline constexpr TextForm kTimeDifference{time_difference, 4};
inline constexpr TextForm kRunningTime{running_time, 4};
inline constexpr TextForm kOdometerTime{odometer_time, 4};
inline constexpr TextForm kTextOf6{text_of_6, 8};
inline constexpr TextForm kTextOf30{text_of_30, 32};
inline constexpr TextForm kMyLapsTime{mylaps_time, 8};
inline constexpr TextForm kMyLapsField{mylaps_field, 8};
inline constexpr TextForm kMyLapsCount{mylaps_count, 8};
inline constexpr TextForm kMyLapsPosition{mylaps_position, 8};
inline constexpr TextForm kMyLapsFirstGap{mylaps_first_gap, 4};
inline constexpr TextForm kMyLapsSecondGap{mylaps_second_gap, 8};

}  // namespace sample_texts

}  // namespace traguardo
