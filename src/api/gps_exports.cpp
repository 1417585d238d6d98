// The GPS family of the exported functions.

#include <algorithm>

#include "api/exports.h"
#include "api/file_table.h"

using traguardo::find_file;
using traguardo::find_lap;
using traguardo::GpsTimeUnit;
using traguardo::IRkGpsTrace;
using traguardo::kGpsChannelCount;
using traguardo::kGpsChannels;
using traguardo::kRawGpsChannelCount;
using traguardo::kRawGpsChannels;
using traguardo::LapLookup;
using traguardo::SFileQLT;
using traguardo::SRkLap;
using traguardo::u32;
using traguardo::u64;

namespace {

constexpr int kNoHandle = -1;
constexpr int kNoView = -2;
constexpr int kNothingBuilt = -2;
constexpr int kNoTrace = -3;
constexpr int kCountNoChannel = -3;
constexpr int kSamplesNoChannel = -4;
constexpr int kNoLap = -1;
// The lap functions of the derived channels answer so for a channel that doesn't exist, or before anything was built.
constexpr int kLapNothing = 1;
constexpr int kRawLapEmpty = -3;

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

// The file and the range of a lap, or the result that the lap functions give instead.
struct LapRange {
  int result = 0;
  SFileQLT* file = nullptr;
  u64 from = 0;
  u64 to = 0;
};

LapRange lap_range_of(int handle, int lap) {
  SFileQLT* file = find_file(handle);
  if (file == nullptr) return {kNoHandle};
  if (file->view == nullptr) return {kNoView};
  const SRkLap* found = nullptr;
  switch (find_lap(*file, lap, &found)) {
    case LapLookup::kNoSession:
      return {0};
    case LapLookup::kNoLap:
      return {kNoLap};
    case LapLookup::kFound:
      break;
  }
  return {0, file, found->start, found->start + found->duration};
}

}  // namespace

namespace traguardo {

int SFileQLT::GetCampioniGpsGiro(int channel, u64 from, u64 to, double* times, double* values, int count) {
  const LapSlice slice = gps.GridLap(from, to);
  const u64 most = std::min(slice.count, wanted(count));
  return host_count(
      gps.grid().fill(static_cast<u32>(channel), slice.first, most, GpsTimeUnit::kSeconds, times, values));
}

int SFileQLT::GetCampioniRawGiro(int channel, u64 from, u64 to, double* times, double* values, int count) {
  if (static_cast<u32>(channel) >= kRawGpsChannelCount) return 0;
  const LapSlice slice = gps.RawLap(from, to);
  const u64 most = std::min(slice.count, wanted(count));
  return host_count(gps.raw().fill(static_cast<u32>(channel), slice.first, most, times, values));
}

}  // namespace traguardo

int get_GPS_channels_count(int handle) {
  SFileQLT* file = find_file(handle);
  if (file == nullptr) return kNoHandle;
  if (file->view == nullptr) return kNoView;
  IRkGpsTrace* trace = best_trace(*file);
  return trace == nullptr ? kNoTrace : file->gps.BuildChannels(trace);
}

const char* get_GPS_channel_name(int handle, int channel) {
  const SFileQLT* file = find_file(handle);
  return file != nullptr && has_channel(*file, channel) ? kGpsChannels[static_cast<u32>(channel)].name : nullptr;
}

const char* get_GPS_channel_units(int handle, int channel) {
  const SFileQLT* file = find_file(handle);
  return file != nullptr && has_channel(*file, channel) ? kGpsChannels[static_cast<u32>(channel)].unit : nullptr;
}

int get_GPS_channel_samples_count(int handle, int channel) {
  const SFileQLT* file = find_file(handle);
  if (file == nullptr) return kNoHandle;
  if (file->gps.grid().size() == 0) return kNothingBuilt;
  return has_channel(*file, channel) ? host_count(file->gps.grid().size()) : kCountNoChannel;
}

// Times in milliseconds here and nowhere else: kept, hosts rely on it.
int get_GPS_channel_samples(int handle, int channel, double* times, double* values, int count) {
  const SFileQLT* file = find_file(handle);
  if (file == nullptr) return kNoHandle;
  if (file->gps.grid().size() == 0) return kNothingBuilt;
  if (!has_channel(*file, channel)) return kSamplesNoChannel;
  return host_count(
      file->gps.grid().fill(static_cast<u32>(channel), 0, wanted(count), GpsTimeUnit::kMilliseconds, times, values));
}

int get_lap_GPS_channel_samples_count(int handle, int lap, int channel) {
  const LapRange range = lap_range_of(handle, lap);
  if (range.file == nullptr) return range.result;
  return has_channel(*range.file, channel) ? host_count(range.file->gps.GridLap(range.from, range.to).count)
                                           : kLapNothing;
}

int get_lap_GPS_channel_samples(int handle, int lap, int channel, double* times, double* values, int count) {
  const LapRange range = lap_range_of(handle, lap);
  if (range.file == nullptr) return range.result;
  if (!has_channel(*range.file, channel)) return kLapNothing;
  return range.file->GetCampioniGpsGiro(channel, range.from, range.to, times, values, count);
}

int get_GPS_raw_channels_count(int handle) {
  SFileQLT* file = find_file(handle);
  if (file == nullptr) return kNoHandle;
  if (file->view == nullptr) return kNoView;
  const IRkGpsTrace* trace = best_trace(*file);
  if (trace == nullptr) return kNoTrace;
  file->gps.BuildRawSamples(*trace);
  return static_cast<int>(kRawGpsChannelCount);
}

const char* get_GPS_raw_channel_name(int handle, int channel) {
  const SFileQLT* file = find_file(handle);
  return file != nullptr && has_raw_channel(*file, channel) ? kRawGpsChannels[static_cast<u32>(channel)].name : nullptr;
}

const char* get_GPS_raw_channel_units(int handle, int channel) {
  const SFileQLT* file = find_file(handle);
  return file != nullptr && has_raw_channel(*file, channel) ? kRawGpsChannels[static_cast<u32>(channel)].unit : nullptr;
}

int get_GPS_raw_channel_samples_count(int handle, int channel) {
  const SFileQLT* file = find_file(handle);
  if (file == nullptr) return kNoHandle;
  if (file->gps.raw().size() == 0) return kNothingBuilt;
  return has_raw_channel(*file, channel) ? host_count(file->gps.raw().size()) : kCountNoChannel;
}

int get_GPS_raw_channel_samples(int handle, int channel, double* times, double* values, int count) {
  const SFileQLT* file = find_file(handle);
  if (file == nullptr) return kNoHandle;
  if (file->gps.raw().size() == 0) return kNothingBuilt;
  if (!has_raw_channel(*file, channel)) return kSamplesNoChannel;
  return host_count(file->gps.raw().fill(static_cast<u32>(channel), 0, wanted(count), times, values));
}

// All seven channels have the same records, so the index plays no part.
int get_lap_GPS_raw_channel_samples_count(int handle, int lap, int) {
  const LapRange range = lap_range_of(handle, lap);
  if (range.file == nullptr) return range.result;
  if (range.file->gps.raw().size() == 0) return kRawLapEmpty;
  return host_count(range.file->gps.RawLap(range.from, range.to).count);
}

int get_lap_GPS_raw_channel_samples(int handle, int lap, int channel, double* times, double* values, int count) {
  const LapRange range = lap_range_of(handle, lap);
  if (range.file == nullptr) return range.result;
  return range.file->GetCampioniRawGiro(channel, range.from, range.to, times, values, count);
}
