// SPDX-License-Identifier: MIT
#include "gps/raw_channels.h"

#include <algorithm>
#include <utility>

namespace traguardo {

// clang-format off
constexpr std::array<RawGpsChannel, kRawGpsChannelCount> kRawGpsChannels = {{
    {"ECEF position_X", "m",   [](const SGpsRecord& record) { return record.ecef_x_cm() * 0.01; }},
    {"ECEF position_Y", "m",   [](const SGpsRecord& record) { return record.ecef_y_cm() * 0.01; }},
    {"ECEF position_Z", "m",   [](const SGpsRecord& record) { return record.ecef_z_cm() * 0.01; }},
    {"ECEF velocity_X", "m/s", [](const SGpsRecord& record) { return record.velocity_x_cm_s() * 0.01; }},
    {"ECEF velocity_Y", "m/s", [](const SGpsRecord& record) { return record.velocity_y_cm_s() * 0.01; }},
    {"ECEF velocity_Z", "m/s", [](const SGpsRecord& record) { return record.velocity_z_cm_s() * 0.01; }},
    {"N Satellites",    "#",   [](const SGpsRecord& record) { return static_cast<double>(record.satellites()); }},
}};
// clang-format on

RawGpsSamples::RawGpsSamples(std::vector<const SGpsRecord*> records)
    : records_(std::move(records)),
      ascends_(std::is_sorted(records_.begin(), records_.end(), [](const SGpsRecord* a, const SGpsRecord* b) {
        return a->logger_time_ms() < b->logger_time_ms();
      })) {}

u64 RawGpsSamples::fill(u32 channel, u64 first, u64 count, double* times, double* values) const {
  if (channel >= kRawGpsChannelCount || first >= size()) return 0;
  count = std::min(count, size() - first);
  for (u64 i = 0; i < count; ++i) {
    const SGpsRecord& record = *records_[first + i];
    times[i] = record.logger_time_ms() * 0.001;
    values[i] = kRawGpsChannels[channel].value(record);
  }
  return count;
}

LapSlice RawGpsSamples::lap(u64 from_us, u64 to_us, u64 gps_step) const {
  return lap_slice(*this, from_us / 1000, to_us / 1000, gps_step);
}

}  // namespace traguardo
