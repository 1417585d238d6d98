// SPDX-License-Identifier: MIT
// A host in C++: the lap with the highest GPS speed, and the channels of that lap.
#include <traguardo/exports.h>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

// Closes its file, whatever happens.
class Session {
 public:
  explicit Session(const char* path) : handle_(open_file(path)) {}
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() { close_file_i(handle_); }
  bool is_open() const { return handle_ > 0; }
  int handle() const { return handle_; }

 private:
  int handle_;
};

struct Samples {
  std::vector<double> times;
  std::vector<double> values;
};

// `count` says how many there are; `fill` writes them.
template <typename Fill>
Samples samples(int count, Fill&& fill) {
  Samples read;
  if (count <= 0) return read;
  read.times.resize(static_cast<std::size_t>(count));
  read.values.resize(static_cast<std::size_t>(count));
  if (fill(read.times.data(), read.values.data(), count) != count) return {};
  return read;
}

}  // namespace

int main(int argc, char** argv) {
  const Session session(argc == 2 ? argv[1] : "");
  if (!session.is_open()) {
    std::fprintf(stderr, "usage: fastest_lap FILE\n");
    return 1;
  }
  const int file = session.handle();
  const bool has_gps = get_GPS_channels_count(file) > 0;
  int best = -1;
  double highest = -1;
  for (int lap = 0; has_gps && lap < get_laps_count(file); ++lap) {
    const Samples speed = samples(get_lap_GPS_channel_samples_count(file, lap, 0), [&](double* t, double* v, int n) {
      return get_lap_GPS_channel_samples(file, lap, 0, t, v, n);
    });
    if (speed.values.empty()) continue;
    const double top = *std::max_element(speed.values.begin(), speed.values.end());
    if (top > highest) {
      highest = top;
      best = lap;
    }
  }
  if (best < 0) {
    std::puts("no lap with GPS");
    return 0;
  }
  std::printf("lap %d: %.2f %s\n", best + 1, highest, get_GPS_channel_units(file, 0));
  for (int channel = 0; channel < get_channels_count(file); ++channel) {
    const Samples lap = samples(get_lap_channel_samples_count(file, best, channel), [&](double* t, double* v, int n) {
      return get_lap_channel_samples(file, best, channel, t, v, n);
    });
    if (lap.values.empty()) continue;
    const auto [low, high] = std::minmax_element(lap.values.begin(), lap.values.end());
    std::printf("%-32s %12.3f to %12.3f %s\n", get_channel_name(file, channel), *low, *high,
                get_channel_units(file, channel));
  }
  return 0;
}
