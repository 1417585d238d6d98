// SPDX-License-Identifier: MIT
// Layouts of the logger dump that a file of version 500 holds: what `CWMPvers500::Rebuild` looks up by device and
// family.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

// Layout key by the device code of the dump's identity block; a code without a row has kOtherDeviceLayoutKey.
struct DeviceLayoutRow {
  u32 device_code;
  i32 layout_key;
};
inline constexpr i32 kOtherDeviceLayoutKey = 3;

// A table of the set-up area; length 0: the layout has none.
struct DumpTable {
  u32 offset;  // from the start of the dump
  u32 length;  // bytes
};

// Layout by key; a key without a row uses the first row.
struct DumpLayoutRow {
  i32 layout_key;
  DumpTable channel_flags;
  DumpTable schedule;
  DumpTable sensors;           // 24 of 60 bytes
  DumpTable extended_sensors;  // 64 of 60 bytes
  DumpTable extended_flags;
  DumpTable further_flags;
};

// Schedule by the family code of the header; the last row, kAnyOtherFamily, serves every other family.
inline constexpr i32 kAnyOtherFamily = -1;
struct ScheduleRow {
  i32 family;
  u32 length;       // entries
  u32 long_length;  // entries when a byte below 24 stands behind index `length`
  bool extended;    // bytes from 32 to 249 count too, not only those below 24
};

std::span<const DeviceLayoutRow> device_layouts();
std::span<const DumpLayoutRow> dump_layouts();
std::span<const ScheduleRow> schedules();

}  // namespace traguardo
