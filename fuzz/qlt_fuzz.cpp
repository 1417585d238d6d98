// A whole .qlt from the fuzzer's bytes: it must open or not, hand out what it has, and leave nothing behind.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include "api/exports.h"

namespace {

const std::string& session_path() {
  static const std::string path =
      (std::filesystem::temp_directory_path() / ("traguardo-fuzz-" + std::to_string(std::rand()) + ".qlt")).string();
  return path;
}

void read_everything(int handle) {
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
  const int gps = get_GPS_channels_count(handle);
  for (int channel = 0; channel < gps; ++channel) {
    const int count = get_GPS_channel_samples_count(handle, channel);
    times.resize(1000);
    values.resize(1000);
    if (count > 0) get_GPS_channel_samples(handle, channel, times.data(), values.data(), 1000);
    if (laps > 0) get_lap_GPS_channel_samples(handle, 0, channel, times.data(), values.data(), 1000);
  }
  get_GPS_raw_channels_count(handle);
  if (laps > 0) get_lap_GPS_raw_channel_samples_count(handle, 0, 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  {
    std::ofstream file(session_path(), std::ios::binary);
    file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  }
  const int handle = open_file(session_path().c_str());
  if (handle > 0) {
    read_everything(handle);
    if (close_file_i(handle) != handle) std::abort();
  }
  std::filesystem::remove(session_path());
  return 0;
}
