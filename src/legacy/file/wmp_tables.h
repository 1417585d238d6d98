// SPDX-License-Identifier: MIT
// The tables of a legacy session as plain structs: what the file says, and what repairs and computations make of it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "legacy/file/records.h"
#include "legacy/file/wmp_layout_data.h"

namespace traguardo {

// What is known of a channel beside its record, not stored in the file.
struct WmpChannelStatistics {
  u32 period_ms = 0;
  u32 frequency_hz = 0;
  float minimum = 0.0F;
  float mean = 0.0F;
  float maximum = 0.0F;
  float display_minimum = 0.0F;
  float display_maximum = 0.0F;
  i32 decimals = 0;
};

struct WmpChannel {
  WmpChannelRecord record;
  WmpChannelExtension extension;
  WmpChannelStatistics statistics;

  bool is_speed() const { return record.measure_class() == WmpChannelRecord::kClassSpeed; }
  // Period and frequency by the rate index of the record.
  void update_rate();
};

// The best laps of one run, on lap time and on true lap time. A number of 0 and a time of 0: none.
struct WmpBestLaps {
  u16 run = 0;
  i16 best_lap = 0;
  u32 best_time_ms = 0;
  i16 best_true_lap = 0;
  u32 best_true_time_ms = 0;
};

// A run of the session. A file of a version below 600 stores no run records, and a file from 600 on may miss one that
// its laps name: such a run has its number alone, and all else of it reads as zero.
struct WmpRun {
  u16 number = 0;
  std::unique_ptr<WmpRunRecord> record;
  WmpBestLaps best;
  // The stretch of time from the start of its first lap to the end of its last; length 0 for a run that no lap names.
  u32 start_ms = 0;
  u32 length_ms = 0;

  i32 first_gear_teeth() const { return record == nullptr ? 0 : record->first_gear_teeth(); }
  i32 second_gear_teeth() const { return record == nullptr ? 0 : record->second_gear_teeth(); }
  float wheel_circumference_mm() const { return record == nullptr ? 0.0F : record->wheel_circumference_mm(); }
  std::string name() const { return record == nullptr ? std::string() : record->name(); }
};

struct WmpTables {
  // Of the tables as they stand: the short records of the first versions become those of a later one while they are
  // read. Null before a head has been read.
  const WmpVersionRow* version = nullptr;
  WmpMainHeader header;
  WmpConfigurationBlock configuration;
  WmpIdentityBlock identity;
  WmpNamesBlock names;
  WmpExtendedNamesBlock extended_names;

  std::vector<WmpChannel> channels;  // logged ones first, then derived ones
  std::size_t logged_count = 0;
  std::vector<WmpLapRecord> laps;
  std::vector<WmpRun> runs;

  // The length that the size of the raw area is worked out from, where that is what the tables leave of the file.
  u64 stored_length = 0;
  // Words that the file can hold for the logged channels, whatever their records claim.
  u64 raw_capacity = 0;
  // What the file holds of the logger's dump.
  u64 dump_bytes = 0;
  bool changed = false;

  // Counts of the header, as far as they can be meant: a negative one is none.
  std::size_t stated_channels() const;
  std::size_t stated_laps() const;
  bool is_derived(std::size_t channel) const { return channel >= logged_count; }
  // Function ids of a channel, 0 where the configuration block says that the file has none.
  u32 function_id(std::size_t channel) const;
  u32 second_function_id(std::size_t channel) const;
  bool is_gps_speed(std::size_t channel) const;
  // The channel that distances are made of; none where the header names none that is there.
  bool is_reference_speed(std::size_t channel) const;
  // The first channel of class speed, -1 for none.
  i16 first_speed() const;
};

// Two numbers of the firmware say which logger wrote the file: one with a receiver of its own, whose speed counts.
bool is_receiver_logger(const WmpMainHeader& header);

// What the header's numbers read as: "41.02.07" and "3.0a.12G".
std::string firmware_text(const WmpMainHeader& header);
std::string software_text(const WmpMainHeader& header);

// The bytes of the records behind the head, and of head and records, with the heads of their groups.
u64 record_bytes(const WmpTables& tables);
u64 table_bytes(const WmpTables& tables);
// The length of the file as it would be written, into the header.
void update_file_length(WmpTables* tables);
// Where the raw words of the first channel lie in a file of aligned areas.
u64 aligned_areas_start(const WmpTables& tables);
inline constexpr u64 kAlignedAreaSize = 65536;

}  // namespace traguardo
