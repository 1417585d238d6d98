// SPDX-License-Identifier: MIT
// All that a host can ask of a file, as a list of answers that two runs can be held against each other by.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "api/exports.h"

namespace traguardo::test {

// What a call is noted as that is made once more because it failed.
constexpr const char* kAgain = " again";
constexpr int kFailed = -2;

// What one call gave: its result, and the bytes that it wrote or pointed to.
struct Answer {
  std::string call;
  int result = 0;
  std::string bytes;
  // A text or a date that isn't there.
  bool is_null = false;
  bool operator==(const Answer&) const = default;
};

// True while a call is inside the library, for tests that let its allocations fail and not their own.
inline thread_local bool t_in_library = false;

template <typename Call>
auto in_library(Call&& call) {
  t_in_library = true;
  const auto result = call();
  t_in_library = false;
  return result;
}

// How much of a file is asked for.
struct Limits {
  int laps = 1'000'000;
  int channels = 1'000'000;
  int samples = 1'000'000;
};

class Everything {
 public:
  // Opens, asks everything and closes. REQUIRES nothing: a failed open is the only answer then.
  static std::vector<Answer> of(const std::string& path, const Limits& limits = {}) {
    Everything run(limits);
    const int handle = in_library([&] { return open_file(path.c_str()); });
    // Handles differ from run to run.
    run.note("open_file", std::min(handle, 1));
    if (handle > 0) {
      run.ask(handle);
      const int closed = in_library([&] { return close_file_n(path.c_str()); });
      run.note("close_file_n", closed == handle ? 1 : closed);
      // A name takes memory; a handle takes none.
      const int again = in_library([&] { return close_file_i(handle); });
      run.note("close_file_i", again == handle && closed != handle ? -1 : again);
    }
    return std::move(run.answers_);
  }

 private:
  explicit Everything(const Limits& limits) : limits_(limits) {}

  void note(std::string call, int result, std::string bytes = {}) {
    answers_.push_back({std::move(call), result, std::move(bytes), false});
  }
  template <typename Call>
  int number(const std::string& call, Call&& ask) {
    int result = in_library(ask);
    note(call, result);
    if (result == kFailed) {
      result = in_library(ask);
      note(call + kAgain, result);
    }
    return result;
  }
  template <typename Call>
  void text(const std::string& call, Call&& ask) {
    const auto note_text = [&](const std::string& as) {
      const char* found = in_library(ask);
      answers_.push_back({as, 0, found == nullptr ? "" : found, found == nullptr});
      return found != nullptr;
    };
    if (!note_text(call)) note_text(call + kAgain);
  }

  using Count = int (*)(int, int);
  using Fill = int (*)(int, int, double*, double*, int);
  using LapCount = int (*)(int, int, int);
  using LapFill = int (*)(int, int, int, double*, double*, int);

  template <typename Counting, typename Filling>
  void samples(const std::string& call, Counting&& count_them, Filling&& fill) {
    const int count = number(call + " count", count_them);
    if (count <= 0 || count > limits_.samples) return;
    std::vector<double> both(static_cast<std::size_t>(count) * 2, -1.0);
    const auto note_samples = [&](const std::string& as) {
      const int written = in_library([&] { return fill(both.data(), both.data() + count, count); });
      std::string bytes(both.size() * sizeof(double), '\0');
      std::memcpy(bytes.data(), both.data(), bytes.size());
      // What a failed call left in the arrays is nobody's business.
      note(as, written, written == count ? std::move(bytes) : std::string());
      return written;
    };
    if (note_samples(call + " samples") == kFailed) note_samples(call + " samples" + kAgain);
  }

  void channels(const std::string& kind, int handle, int found, int laps, Count count, Fill fill, LapCount lap_count,
                LapFill lap_fill) {
    for (int i = 0; i < std::min(found, limits_.channels); ++i) {
      const std::string channel = kind + std::to_string(i);
      samples(
          channel, [&] { return count(handle, i); },
          [&](double* t, double* v, int n) { return fill(handle, i, t, v, n); });
      for (int lap = 0; lap < laps; ++lap) {
        samples(
            channel + " lap " + std::to_string(lap), [&] { return lap_count(handle, lap, i); },
            [&](double* t, double* v, int n) { return lap_fill(handle, lap, i, t, v, n); });
      }
    }
  }

  void ask(int handle) {
    text("vehicle", [&] { return get_vehicle_name(handle); });
    text("track", [&] { return get_track_name(handle); });
    text("racer", [&] { return get_racer_name(handle); });
    text("championship", [&] { return get_championship_name(handle); });
    text("venue", [&] { return get_venue_type_name(handle); });
    answers_.push_back({"date", 0, "", in_library([&] { return get_date_and_time(handle); }) == nullptr});
    text("build date", get_library_date);
    text("build time", get_library_time);
    const int laps = std::min(number("laps", [&] { return get_laps_count(handle); }), limits_.laps);
    for (int lap = 0; lap < laps; ++lap) {
      double times[2] = {0, 0};
      const int result = in_library([&] { return get_lap_info(handle, lap, &times[0], &times[1]); });
      note("lap", result, result == 1 ? std::string(reinterpret_cast<const char*>(times), sizeof times) : "");
    }
    const int logged = number("channels", [&] { return get_channels_count(handle); });
    for (int i = -1; i <= std::min(logged, limits_.channels); ++i) {
      text("name", [&] { return get_channel_name(handle, i); });
      text("unit", [&] { return get_channel_units(handle, i); });
    }
    channels("", handle, logged, laps, get_channel_samples_count, get_channel_samples, get_lap_channel_samples_count,
             get_lap_channel_samples);
    const int gps = number("GPS channels", [&] { return get_GPS_channels_count(handle); });
    text("GPS name", [&] { return get_GPS_channel_name(handle, 1); });
    text("GPS unit", [&] { return get_GPS_channel_units(handle, 1); });
    channels("GPS ", handle, gps, laps, get_GPS_channel_samples_count, get_GPS_channel_samples,
             get_lap_GPS_channel_samples_count, get_lap_GPS_channel_samples);
    const int raw = number("raw channels", [&] { return get_GPS_raw_channels_count(handle); });
    text("raw name", [&] { return get_GPS_raw_channel_name(handle, 1); });
    text("raw unit", [&] { return get_GPS_raw_channel_units(handle, 1); });
    channels("raw ", handle, raw, laps, get_GPS_raw_channel_samples_count, get_GPS_raw_channel_samples,
             get_lap_GPS_raw_channel_samples_count, get_lap_GPS_raw_channel_samples);
  }

  Limits limits_;
  std::vector<Answer> answers_;
};

}  // namespace traguardo::test
