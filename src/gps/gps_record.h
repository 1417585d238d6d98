// SPDX-License-Identifier: MIT
// One solution of a GPS receiver with the logger's clock in front: the unit of every trace.
#pragma once

#include <algorithm>
#include <array>
#include <type_traits>

#include "geodesy/geodesy.h"
#include "support/bytes.h"

namespace traguardo {

// A value of exactly the 56 bytes that stand in a file; behind the logger's time it is the body of the receiver's own
// message. Fields are read from the bytes by name.
struct SGpsRecord {
  static constexpr u32 kSize = 56;
  // Fix types from 3 (three dimensions) up to here tell a position; higher ones are a receiver without an answer.
  static constexpr u8 kLowestGoodFix = 3;
  static constexpr u8 kHighestGoodFix = 249;

  std::array<u8, kSize> bytes{};

  // REQUIRES: kSize readable bytes.
  static SGpsRecord from_bytes(const u8* source) {
    SGpsRecord record;
    std::copy_n(source, kSize, record.bytes.begin());
    return record;
  }

  u32 logger_time_ms() const { return load_u32(at(0)); }
  u32 time_of_week_ms() const { return load_u32(at(4)); }
  i32 fractional_ns() const { return load_i32(at(8)); }
  i16 week() const { return load_i16(at(12)); }
  u8 fix_type() const { return bytes[14]; }
  i32 ecef_x_cm() const { return load_i32(at(16)); }
  i32 ecef_y_cm() const { return load_i32(at(20)); }
  i32 ecef_z_cm() const { return load_i32(at(24)); }
  u32 position_accuracy_cm() const { return load_u32(at(28)); }
  i32 velocity_x_cm_s() const { return load_i32(at(32)); }
  i32 velocity_y_cm_s() const { return load_i32(at(36)); }
  i32 velocity_z_cm_s() const { return load_i32(at(40)); }
  u32 speed_accuracy_cm_s() const { return load_u32(at(44)); }
  u16 position_dop() const { return load_u16(at(48)); }  // hundredths
  u8 satellites() const { return bytes[51]; }

  void set_logger_time_ms(u32 time) { store_u32(at(0), time); }
  void set_time_of_week_ms(u32 time) { store_u32(at(4), time); }
  void set_week(i16 week) { store_i16(at(12), week); }

  bool is_good() const { return fix_type() >= kLowestGoodFix && fix_type() <= kHighestGoodFix; }

  // Earth-centred, in metres and metres per second.
  Ecef position_m() const { return {ecef_x_cm() * 0.01, ecef_y_cm() * 0.01, ecef_z_cm() * 0.01}; }
  Ecef velocity_m_s() const { return {velocity_x_cm_s() * 0.01, velocity_y_cm_s() * 0.01, velocity_z_cm_s() * 0.01}; }

  bool operator==(const SGpsRecord&) const = default;

 private:
  const u8* at(std::size_t offset) const { return bytes.data() + offset; }
  u8* at(std::size_t offset) { return bytes.data() + offset; }
};

// Blocks of records go to callers as plain memory.
static_assert(sizeof(SGpsRecord) == SGpsRecord::kSize && std::is_trivially_copyable_v<SGpsRecord>);

}  // namespace traguardo
