// SPDX-License-Identifier: MIT
// What a session is made of: laps, splits, texts and a start time. All times are microseconds on the session's time
// axis and wrap modulo 2^64, as a lap time in a file may be negative.
#pragma once

#include <array>
#include <ctime>
#include <map>
#include <memory>
#include <string>

#include "support/bytes.h"

namespace traguardo {

struct SRkSplit {
  virtual ~SRkSplit() = default;
  u64 start = 0;
  u64 end = 0;
  u64 duration = 0;
  u64 marker_time = 0;
  u8 free_byte = 0;
  u8 split_number = 0;
  u16 lap_number = 0;
};

struct SRkLap {
  virtual ~SRkLap() = default;
  u64 start = 0;
  u64 end = 0;
  u64 duration = 0;     // as the logger measured it; can differ from end - start
  u64 marker_time = 0;  // time of the lap record in the file
  u8 session_byte = 0;
  u8 split_byte = 0;
  u16 lap_number = 0;
  u8 kind[2] = {0, 0};
  std::map<u32, std::unique_ptr<SRkSplit>> splits;
  bool counts = true;  // false where the file says that it is not to be compared with others
};

inline constexpr std::size_t kTrackRecordSize = 96;

struct SRkSession {
  virtual ~SRkSession() = default;

  // Counts laps, sums their durations and finds the shortest; of equal ones the lowest number.
  void AggiornaStatistiche();

  i32 session_number = -1;
  std::tm date_and_time{};
  u64 total_lap_time = 0;
  std::string vehicle;
  std::string racer;
  std::string track;
  std::string venue_type;
  std::string championship;
  u32 lap_count = 0;
  i32 best_lap = -1;                            // -1 without one
  u64 best_lap_time = 0;                        // all ones while no lap has a record
  std::map<i32, std::unique_ptr<SRkLap>> laps;  // an entry may be null: a number without a record
  std::array<u8, kTrackRecordSize> track_record{};
  std::string race_mode;
  std::string prfd_text;
  std::string track_type;
};

using SessionMap = std::map<i32, std::unique_ptr<SRkSession>>;

// A 64-byte identification of a device, kept whole as it stands in the file.
struct SIdentRecord {
  static constexpr std::size_t kSize = 64;
  std::array<u8, kSize> bytes{};

  u32 device_code() const { return load_u32(&bytes[8]); }  // 0: no device
  u32 device_id() const { return load_u32(&bytes[12]); }   // serial number, 0: none
  // Versions: major, minor, build in one byte each; the word being 0 means absent.
  const u8* recovery_version() const { return &bytes[16]; }
  const u8* firmware_version() const { return &bytes[20]; }
  const u8* hardware_version() const { return &bytes[24]; }
};

}  // namespace traguardo
