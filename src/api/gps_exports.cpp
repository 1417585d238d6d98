// SPDX-License-Identifier: MIT
// The GPS family of the exported functions.

#include <algorithm>

#include "api/calls.h"
#include "api/exports.h"

using traguardo::GpsTimeUnit;
using traguardo::IRkGpsTrace;
using traguardo::kGpsChannelCount;
using traguardo::kGpsChannels;
using traguardo::kRawGpsChannelCount;
using traguardo::kRawGpsChannels;
using traguardo::SFileQLT;
using traguardo::text_of_file;
using traguardo::u32;
using traguardo::u64;
using traguardo::with_file;
using traguardo::with_lap;

namespace {

// A count that a host can be told: more points than an int holds are there only where a clock went wild.
int host_count(u64 count) {
  return static_cast<int>(std::min<u64>(count, 0x7FFFFFFF));
}

u64 wanted(int count) {
  return count < 0 ? 0 : static_cast<u64>(count);
}

IRkGpsTrace* best_trace(const SFileQLT& file) {
  std::string name;
  return file.view->GetTracciaGpsMigliore(&name);
}

bool has_channel(const SFileQLT& file, int channel) {
  return file.gps.grid().size() != 0 && static_cast<u32>(channel) < kGpsChannelCount;
}

bool has_raw_channel(const SFileQLT& file, int channel) {
  return file.gps.raw().size() != 0 && static_cast<u32>(channel) < kRawGpsChannelCount;
}

}  // namespace

namespace traguardo {

int SFileQLT::GetCampioniGpsGiro(int channel, u64 from, u64 to, double* times, double* values, int count) {
  if (times == nullptr || values == nullptr) return kNothingWritten;
  const LapSlice slice = gps.grid_lap(from, to);
  const u64 most = std::min(slice.count, wanted(count));
  return host_count(
      gps.grid().fill(static_cast<u32>(channel), slice.first, most, GpsTimeUnit::kSeconds, times, values));
}

int SFileQLT::GetCampioniRawGiro(int channel, u64 from, u64 to, double* times, double* values, int count) {
  if (static_cast<u32>(channel) >= kRawGpsChannelCount) return 0;
  if (times == nullptr || values == nullptr) return kNothingWritten;
  const LapSlice slice = gps.raw_lap(from, to);
  const u64 most = std::min(slice.count, wanted(count));
  return host_count(gps.raw().fill(static_cast<u32>(channel), slice.first, most, times, values));
}

}  // namespace traguardo

int get_GPS_channels_count(int handle) {
  return with_file(handle, [](SFileQLT& file) {
    IRkGpsTrace* trace = best_trace(file);
    return trace == nullptr ? traguardo::kNoTrace : file.gps.build_channels(trace);
  });
}

const char* get_GPS_channel_name(int handle, int channel) {
  return text_of_file(handle, [&](const SFileQLT& file) {
    return has_channel(file, channel) ? kGpsChannels[static_cast<u32>(channel)].name : nullptr;
  });
}

const char* get_GPS_channel_units(int handle, int channel) {
  return text_of_file(handle, [&](const SFileQLT& file) {
    return has_channel(file, channel) ? kGpsChannels[static_cast<u32>(channel)].unit : nullptr;
  });
}

int get_GPS_channel_samples_count(int handle, int channel) {
  return with_file(handle, [&](const SFileQLT& file) {
    if (file.gps.grid().size() == 0) return traguardo::kNoData;
    return has_channel(file, channel) ? host_count(file.gps.grid().size()) : traguardo::kNoChannel;
  });
}

// Times in milliseconds here and nowhere else: kept, hosts rely on it.
int get_GPS_channel_samples(int handle, int channel, double* times, double* values, int count) {
  return with_file(handle, [&](const SFileQLT& file) {
    if (file.gps.grid().size() == 0) return traguardo::kNoData;
    if (!has_channel(file, channel)) return traguardo::kGpsSamplesNoChannel;
    if (times == nullptr || values == nullptr) return traguardo::kNothingWritten;
    return host_count(
        file.gps.grid().fill(static_cast<u32>(channel), 0, wanted(count), GpsTimeUnit::kMilliseconds, times, values));
  });
}

int get_lap_GPS_channel_samples_count(int handle, int lap, int channel) {
  return with_lap(handle, lap, [&](const SFileQLT& file, u64 from, u64 to) {
    return has_channel(file, channel) ? host_count(file.gps.grid_lap(from, to).count) : traguardo::kLapGpsNothing;
  });
}

int get_lap_GPS_channel_samples(int handle, int lap, int channel, double* times, double* values, int count) {
  return with_lap(handle, lap, [&](SFileQLT& file, u64 from, u64 to) {
    if (!has_channel(file, channel)) return traguardo::kLapGpsNothing;
    return file.GetCampioniGpsGiro(channel, from, to, times, values, count);
  });
}

int get_GPS_raw_channels_count(int handle) {
  return with_file(handle, [](SFileQLT& file) {
    const IRkGpsTrace* trace = best_trace(file);
    if (trace == nullptr) return traguardo::kNoTrace;
    file.gps.build_raw_samples(*trace);
    return static_cast<int>(kRawGpsChannelCount);
  });
}

const char* get_GPS_raw_channel_name(int handle, int channel) {
  return text_of_file(handle, [&](const SFileQLT& file) {
    return has_raw_channel(file, channel) ? kRawGpsChannels[static_cast<u32>(channel)].name : nullptr;
  });
}

const char* get_GPS_raw_channel_units(int handle, int channel) {
  return text_of_file(handle, [&](const SFileQLT& file) {
    return has_raw_channel(file, channel) ? kRawGpsChannels[static_cast<u32>(channel)].unit : nullptr;
  });
}

int get_GPS_raw_channel_samples_count(int handle, int channel) {
  return with_file(handle, [&](const SFileQLT& file) {
    if (file.gps.raw().size() == 0) return traguardo::kNoData;
    return has_raw_channel(file, channel) ? host_count(file.gps.raw().size()) : traguardo::kNoChannel;
  });
}

int get_GPS_raw_channel_samples(int handle, int channel, double* times, double* values, int count) {
  return with_file(handle, [&](const SFileQLT& file) {
    if (file.gps.raw().size() == 0) return traguardo::kNoData;
    if (!has_raw_channel(file, channel)) return traguardo::kGpsSamplesNoChannel;
    if (times == nullptr || values == nullptr) return traguardo::kNothingWritten;
    return host_count(file.gps.raw().fill(static_cast<u32>(channel), 0, wanted(count), times, values));
  });
}

// All seven channels have the same records, so the index plays no part.
int get_lap_GPS_raw_channel_samples_count(int handle, int lap, int) {
  return with_lap(handle, lap, [](const SFileQLT& file, u64 from, u64 to) {
    if (file.gps.raw().size() == 0) return traguardo::kLapRawGpsEmpty;
    return host_count(file.gps.raw_lap(from, to).count);
  });
}

int get_lap_GPS_raw_channel_samples(int handle, int lap, int channel, double* times, double* values, int count) {
  return with_lap(handle, lap, [&](SFileQLT& file, u64 from, u64 to) {
    return file.GetCampioniRawGiro(channel, from, to, times, values, count);
  });
}
