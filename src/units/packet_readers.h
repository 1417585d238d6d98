// SPDX-License-Identifier: MIT
// Readers of packet fields that take more than one plain number of the sample. Each gets the whole sample.
#pragma once

#include "units/sample_reader.h"

namespace traguardo::packet_readers {

// Receiver packets. The second layout lacks the logger time in front, so everything stands 4 bytes earlier.
float gps_zep_speed(const u8* sample, float gain, float offset, u32* status);
float gps_ubx_speed(const u8* sample, float gain, float offset, u32* status);
float gps_zep_latitude(const u8* sample, float gain, float offset, u32* status);
float gps_zep_longitude(const u8* sample, float gain, float offset, u32* status);
float gps_zep_altitude(const u8* sample, float gain, float offset, u32* status);
// Bits of the status byte of a lap packet.
float best_lap_flag(const u8* sample, float gain, float offset, u32* status);
float best_split_flag(const u8* sample, float gain, float offset, u32* status);
// The two numbers that the oldest lap packet keeps in one word: the split in its high four bits, the lap below.
float lap_1g_lap_number(const u8* sample, float gain, float offset, u32* status);
float lap_1g_split_number(const u8* sample, float gain, float offset, u32* status);
// Seconds.
float odometer_time(const u8* sample, float gain, float offset, u32* status);
// Fields of the timing packets, see mylaps_bits.h; times in milliseconds.
float mylaps_time_ms(const u8* sample, float gain, float offset, u32* status);
float mylaps_field_ms(const u8* sample, float gain, float offset, u32* status);
float mylaps_count(const u8* sample, float gain, float offset, u32* status);
float mylaps_position(const u8* sample, float gain, float offset, u32* status);
float mylaps_first_gap_ms(const u8* sample, float gain, float offset, u32* status);
float mylaps_second_gap_ms(const u8* sample, float gain, float offset, u32* status);

inline constexpr ReaderPair kGpsZepSpeed = reader_pair<gps_zep_speed>(52);
inline constexpr ReaderPair kGpsUbxSpeed = reader_pair<gps_ubx_speed>(48);
inline constexpr ReaderPair kGpsZepLatitude = reader_pair<gps_zep_latitude>(52);
inline constexpr ReaderPair kGpsZepLongitude = reader_pair<gps_zep_longitude>(52);
inline constexpr ReaderPair kGpsZepAltitude = reader_pair<gps_zep_altitude>(52);
inline constexpr ReaderPair kBestLapFlag = reader_pair<best_lap_flag>(25);
inline constexpr ReaderPair kBestSplitFlag = reader_pair<best_split_flag>(25);
inline constexpr ReaderPair kLap1gLapNumber = reader_pair<lap_1g_lap_number>(6);
inline constexpr ReaderPair kLap1gSplitNumber = reader_pair<lap_1g_split_number>(6);
inline constexpr ReaderPair kOdometerTime = reader_pair<odometer_time>(4);
inline constexpr ReaderPair kMyLapsTimeMs = reader_pair<mylaps_time_ms>(8);
inline constexpr ReaderPair kMyLapsFieldMs = reader_pair<mylaps_field_ms>(8);
inline constexpr ReaderPair kMyLapsCount = reader_pair<mylaps_count>(8);
inline constexpr ReaderPair kMyLapsPosition = reader_pair<mylaps_position>(8);
inline constexpr ReaderPair kMyLapsFirstGapMs = reader_pair<mylaps_first_gap_ms>(8);
inline constexpr ReaderPair kMyLapsSecondGapMs = reader_pair<mylaps_second_gap_ms>(8);

}  // namespace traguardo::packet_readers
