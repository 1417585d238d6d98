// SPDX-License-Identifier: MIT
// What a host does with an open session, for the fuzzers: it asks for everything, and counts must agree.
#pragma once

#include <cstdlib>
#include <vector>

#include "api/exports.h"

inline void read_everything(int handle) {
  std::vector<double> times;
  std::vector<double> values;
  const int channels = get_channels_count(handle);
  const int laps = get_laps_count(handle);
  for (int channel = 0; channel < channels && channel < 32; ++channel) {
    const int count = get_channel_samples_count(handle, channel);
    if (count < 0) std::abort();
    times.resize(static_cast<std::size_t>(count) + 1);
    values.resize(times.size());
    if (get_channel_samples(handle, channel, times.data(), values.data(), count) != count) std::abort();
    for (int lap = 0; lap < laps && lap < 4; ++lap) {
      const int in_lap = get_lap_channel_samples_count(handle, lap, channel);
      if (in_lap < 0 || in_lap > count) std::abort();
      if (get_lap_channel_samples(handle, lap, channel, times.data(), values.data(), in_lap) != in_lap) std::abort();
    }
  }
  constexpr int kSome = 1000;
  times.resize(kSome);
  values.resize(kSome);
  const int gps = get_GPS_channels_count(handle);
  for (int channel = 0; channel < gps; ++channel) {
    if (get_GPS_channel_samples(handle, channel, times.data(), values.data(), kSome) > kSome) std::abort();
    if (laps > 0) get_lap_GPS_channel_samples(handle, 0, channel, times.data(), values.data(), kSome);
  }
  if (get_GPS_raw_channels_count(handle) > 0) {
    get_GPS_raw_channel_samples(handle, 6, times.data(), values.data(), kSome);
    if (laps > 0) get_lap_GPS_raw_channel_samples(handle, 0, 0, times.data(), values.data(), kSome);
  }
}
