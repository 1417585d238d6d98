// SPDX-License-Identifier: MIT
// What reading costs beside what the plainest program of the same way to write needs (floor.h), in one run: reader and
// floor take turns, and the medians of their rounds stand beside one another. scripts/bench.sh runs it.
//
//   roofline [--small] [--rounds N] [--only LETTERS] [--json]
//
// A ratio is the floor's processor time over the reader's: 1 is as fast as the floor. Faults are minor page faults of
// the reader per million samples.

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "api/exports.h"
#include "floor.h"
#include "sessions.h"

namespace traguardo::bench {

namespace {

struct Cost {
  double processor_s = 0;
  double wall_s = 0;
  double faults = 0;
};

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

Cost now() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return {seconds(usage.ru_utime) + seconds(usage.ru_stime),
          std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(),
          static_cast<double>(usage.ru_minflt)};
}

template <typename Work>
Cost cost_of(Work&& work) {
  const Cost begin = now();
  work();
  const Cost end = now();
  return {end.processor_s - begin.processor_s, end.wall_s - begin.wall_s, end.faults - begin.faults};
}

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

Cost median_of(const std::vector<Cost>& costs) {
  std::vector<double> processor, wall, faults;
  for (const Cost& cost : costs) {
    processor.push_back(cost.processor_s);
    wall.push_back(cost.wall_s);
    faults.push_back(cost.faults);
  }
  return {median(processor), median(wall), median(faults)};
}

// --- The reader, through its public functions

class OpenSession {
 public:
  explicit OpenSession(const std::string& path) : handle_(open_file(path.c_str())) {
    if (handle_ < 0) throw std::runtime_error("the reader doesn't open " + path);
  }
  ~OpenSession() { close_file_i(handle_); }
  OpenSession(const OpenSession&) = delete;
  OpenSession& operator=(const OpenSession&) = delete;
  int handle() const { return handle_; }

 private:
  int handle_;
};

// Two arrays whose pages are there before anything is measured.
struct Arrays {
  explicit Arrays(std::size_t count) : times(count, 1), values(count, 1) {}
  std::vector<double> times;
  std::vector<double> values;
};

std::uint64_t read_all(int handle, Arrays* arrays) {
  std::uint64_t all = 0;
  for (int channel = 0; channel < get_channels_count(handle); ++channel) {
    const int count = get_channel_samples_count(handle, channel);
    if (get_channel_samples(handle, channel, arrays->times.data(), arrays->values.data(), count) != count) {
      throw std::runtime_error("a channel can't be read");
    }
    all += static_cast<std::uint64_t>(count);
  }
  return all;
}

void expect(std::uint64_t got, std::uint64_t wanted) {
  if (got != wanted) throw std::runtime_error("a reader or a floor of the benchmark loses samples");
}

// --- Rounds and rows

struct Settings {
  int rounds = 5;
  bool small = false;
  bool json = false;
  std::string only;
  std::string folder;
};

struct Pair {
  Cost reader;
  Cost floor;
};

class Bench {
 public:
  explicit Bench(Settings settings) : settings_(std::move(settings)) {}

  bool wants(char letter) const { return settings_.only.empty() || settings_.only.find(letter) != std::string::npos; }
  std::uint64_t scaled(std::uint64_t samples) const { return settings_.small ? samples / 5 : samples; }
  Session session(const std::string& name) const { return {settings_.folder, name}; }

  // In turn, the first of each unmeasured.
  Pair rounds(const std::function<Cost()>& reader, const std::function<Cost()>& floor) const {
    std::vector<Cost> readers, floors;
    for (int i = 0; i <= settings_.rounds; ++i) {
      const Cost reader_cost = reader();
      const Cost floor_cost = floor ? floor() : Cost{};
      if (i == 0) continue;
      readers.push_back(reader_cost);
      floors.push_back(floor_cost);
    }
    return {median_of(readers), median_of(floors)};
  }

  void head() const {
    if (settings_.json) return;
    std::printf("%-40s %9s %9s %9s %9s %7s\n", "case", "cpu ms", "floor ms", "M/s", "faults/M", "ratio");
  }
  // unit: what `amount` counts: samples, or bytes.
  void row(const std::string& name, const Pair& pair, double amount, std::optional<double> ratio = {}) {
    if (!ratio && pair.floor.processor_s > 0) ratio = pair.floor.processor_s / pair.reader.processor_s;
    if (settings_.json) {
      std::printf("%s\"%s\": %.3f", is_first_ ? "{" : ", ", name.c_str(), ratio.value_or(0));
    } else {
      std::printf("%-40s %9.1f %9.1f %9.1f %9.0f ", name.c_str(), pair.reader.processor_s * 1e3,
                  pair.floor.processor_s * 1e3, amount / pair.reader.processor_s / 1e6,
                  pair.reader.faults / amount * 1e6);
      if (ratio) {
        std::printf("%7.2f\n", *ratio);
      } else {
        std::printf("%7s\n", "-");
      }
    }
    std::fflush(stdout);
    is_first_ = false;
  }
  void finish() const {
    if (settings_.json) std::printf("}\n");
  }

 private:
  Settings settings_;
  bool is_first_ = true;
};

// --- Cases

Cost open_cost(const Session& session) {
  std::optional<OpenSession> open;
  return cost_of([&] { open.emplace(session.path()); });
}

// The better of both ways to store.
Cost floor_open_cost(const Session& session, const Shape& shape) {
  Cost best{1e9, 1e9, 0};
  for (const StoreKind kind : {StoreKind::buffers, StoreKind::mapped_windows}) {
    // With hundreds of channels windows cost several times what buffers do, and gigabytes of disk.
    if (kind == StoreKind::mapped_windows && shape.channels > 50) continue;
    std::optional<FloorStores> stores;
    const Cost cost = cost_of([&] { floor_open(session, shape, &stores.emplace(kind, shape.channels)); });
    if (cost.processor_s < best.processor_s) best = cost;
  }
  return best;
}

Pair opening(Bench* bench, const std::string& name, const Shape& shape) {
  Session session = bench->session("open.qlt");
  write_session(shape, &session);
  const Pair pair = bench->rounds([&] { return open_cost(session); }, [&] { return floor_open_cost(session, shape); });
  bench->row(name, pair, static_cast<double>(session.samples));
  return pair;
}

Shape shape_of(Frames frames, std::uint32_t channels, std::uint64_t samples) {
  Shape shape;
  shape.frames = frames;
  shape.channels = channels;
  shape.samples = samples;
  return shape;
}

void broken_frames(Bench* bench) {
  Shape shape = shape_of(Frames::single, 200, bench->scaled(5'000'000));
  Session sound = bench->session("sound.qlt");
  write_session(shape, &sound);
  shape.broken_every = 1000;
  Session broken = bench->session("broken.qlt");
  write_session(shape, &broken);
  const Pair pair = bench->rounds([&] { return open_cost(broken); }, [&] { return open_cost(sound); });
  bench->row("(e) one frame in 1,000 broken, to sound", pair, static_cast<double>(broken.samples));
}

void reading_back(Bench* bench, std::uint32_t channels) {
  const Shape shape = shape_of(Frames::single, channels, bench->scaled(5'000'000));
  Session session = bench->session("back.qlt");
  write_session(shape, &session);
  const OpenSession open(session.path());
  FloorStores stores(StoreKind::buffers, channels);
  floor_open(session, shape, &stores);
  Arrays arrays(session.samples / channels);
  const Pair pair = bench->rounds(
      [&] { return cost_of([&] { expect(read_all(open.handle(), &arrays), session.samples); }); },
      [&] {
        return cost_of([&] { expect(stores.read_back(arrays.times.data(), arrays.values.data()), session.samples); });
      });
  bench->row("(f) read back, " + std::to_string(channels) + " channels", pair, static_cast<double>(session.samples));
}

// Laps of five seconds each, so that a longer session has no longer slices.
Session* sliced(Bench* bench, std::uint32_t minutes, Session* session) {
  Shape shape = shape_of(Frames::single, 100, std::uint64_t{minutes} * 60 * 10 * 100);
  shape.period_ms = 100;
  shape.laps = 100;
  shape.lap_ms = 5000;
  write_session(shape, session);
  (void)bench;
  return session;
}

Cost slices_cost(int handle, Arrays* arrays) {
  return cost_of([&] {
    for (int lap = 0; lap < 100; ++lap) {
      for (int channel = 0; channel < 100; ++channel) {
        const int count = get_lap_channel_samples_count(handle, lap, channel);
        get_lap_channel_samples(handle, lap, channel, arrays->times.data(), arrays->values.data(), count);
      }
    }
  });
}

void slices(Bench* bench) {
  Session hours = bench->session("hours.qlt");
  Session minutes = bench->session("minutes.qlt");
  const OpenSession open_hours(sliced(bench, 600, &hours)->path());
  const OpenSession open_minutes(sliced(bench, 10, &minutes)->path());
  Arrays arrays(1000);
  const Pair pair = bench->rounds([&] { return slices_cost(open_hours.handle(), &arrays); },
                                  [&] { return slices_cost(open_minutes.handle(), &arrays); });
  bench->row("(g) 10,000 slices of 10 h, to 10 min", pair, 10'000.0 * 50);
}

void gps(Bench* bench) {
  Shape shape = shape_of(Frames::single, 1, 1000);
  shape.solutions = static_cast<std::uint32_t>(bench->scaled(90'000));
  Session session = bench->session("gps.qlt");
  write_session(shape, &session);
  double points = 0;
  const auto read = [&](bool raw) {
    const OpenSession open(session.path());
    const int handle = open.handle();
    Arrays arrays(std::size_t{shape.solutions} * 4 + 10);
    points = 0;
    return cost_of([&] {
      const int channels = raw ? get_GPS_raw_channels_count(handle) : get_GPS_channels_count(handle);
      for (int channel = 0; channel < channels; ++channel) {
        const int count =
            raw ? get_GPS_raw_channel_samples_count(handle, channel) : get_GPS_channel_samples_count(handle, channel);
        const int got =
            raw ? get_GPS_raw_channel_samples(handle, channel, arrays.times.data(), arrays.values.data(), count)
                : get_GPS_channel_samples(handle, channel, arrays.times.data(), arrays.values.data(), count);
        points += got;
      }
    });
  };
  for (const bool raw : {false, true}) {
    const Pair pair = bench->rounds([&] { return read(raw); }, nullptr);
    bench->row(raw ? "(h) GPS, raw" : "(h) GPS, derived", pair, points);
  }
}

void compressed(Bench* bench) {
  const Shape shape = shape_of(Frames::mixed, 50, bench->scaled(5'000'000));
  Session plain = bench->session("plain.qlt");
  write_session(shape, &plain);
  Session packed = bench->session("packed.qlc");
  write_compressed(plain, &packed);
  const Session expansion = bench->session("packed.qlt");
  const Pair pair = bench->rounds([&] { return open_cost(packed); },
                                  [&] {
                                    std::optional<FloorStores> stores;
                                    return cost_of([&] {
                                      floor_expand(packed.path());
                                      floor_open(plain, shape, &stores.emplace(StoreKind::buffers, shape.channels));
                                    });
                                  });
  bench->row("(i) open .qlc, mixed of 50", pair, static_cast<double>(plain.samples));
}

void older(Bench* bench) {
  constexpr std::uint32_t kChannels = 100;
  Session session = bench->session("older.wmp");
  Session trace = bench->session("older.jts");
  const Session copy = bench->session("older.bak");
  write_older_session(kChannels, static_cast<std::uint32_t>(bench->scaled(20'000)), &session, &trace);
  const Pair pair = bench->rounds([&] { return open_cost(session); },
                                  [&] {
                                    std::optional<FloorStores> stores;
                                    return cost_of([&] {
                                      floor_older(session.path(), session.samples, kChannels,
                                                  &stores.emplace(StoreKind::buffers, kChannels));
                                    });
                                  });
  bench->row("(k) open .wmp of 100 channels", pair, static_cast<double>(session.samples));
}

void garbage(Bench* bench) {
  constexpr std::size_t kSize = 64U << 20;
  for (const Garbage kind : {Garbage::zeros, Garbage::noise}) {
    Session session = bench->session("garbage.qlt");
    write_garbage(kind, kSize, &session);
    const Pair pair = bench->rounds([&] { return open_cost(session); },
                                    [&] { return cost_of([&] { (void)floor_scan(session.path()); }); });
    bench->row(kind == Garbage::zeros ? "(l) 64 MiB of zeros, MB/s" : "(l) 64 MiB of noise, MB/s", pair, kSize);
  }
}

void end_to_end(Bench* bench, std::uint32_t channels) {
  const Shape shape = shape_of(Frames::single, channels, bench->scaled(5'000'000));
  Session session = bench->session("end.qlt");
  write_session(shape, &session);
  Arrays arrays(session.samples / channels);
  const Pair pair = bench->rounds(
      [&] {
        return cost_of([&] {
          const OpenSession open(session.path());
          expect(read_all(open.handle(), &arrays), session.samples);
        });
      },
      [&] {
        return cost_of([&] {
          FloorStores stores(StoreKind::buffers, channels);
          floor_open(session, shape, &stores);
          expect(stores.read_back(arrays.times.data(), arrays.values.data()), session.samples);
        });
      });
  bench->row("(m) open, read all, close, " + std::to_string(channels) + " channels", pair,
             static_cast<double>(session.samples));
}

// Twice as much of one thing in each step; the ratio is of the step's cost to twice the one before, 1 or above if cost
// is linear, and for the first step that to its floor. The floor beside it tells how much of a step is the machine's:
// what no longer fits into a cache.
void growth(Bench* bench) {
  struct Step {
    const char* name;
    std::function<Shape(std::uint64_t)> shape;
  };
  const std::uint64_t samples = bench->scaled(2'000'000);
  const Step kSteps[] = {
      {"samples", [&](std::uint64_t times) { return shape_of(Frames::single, 100, samples * times); }},
      {"channels",
       [&](std::uint64_t times) {
         return shape_of(Frames::single, static_cast<std::uint32_t>(1000 * times), 400'000 * times);
       }},
      {"laps",
       [&](std::uint64_t times) {
         Shape shape = shape_of(Frames::single, 4, 100'000 * times);
         shape.laps = static_cast<std::uint32_t>(5'000 * times);
         return shape;
       }},
  };
  for (const Step& step : kSteps) {
    double before = 0;
    for (const std::uint64_t times : {1U, 2U, 4U}) {
      Session session = bench->session("growth.qlt");
      const Shape shape = step.shape(times);
      write_session(shape, &session);
      Arrays arrays(session.samples);
      const Pair pair = bench->rounds(
          [&] {
            return cost_of([&] {
              const OpenSession open(session.path());
              read_all(open.handle(), &arrays);
              double start = 0;
              double duration = 0;
              for (int lap = 0; lap < get_laps_count(open.handle()); ++lap)
                get_lap_info(open.handle(), lap, &start, &duration);
            });
          },
          [&] {
            return cost_of([&] {
              FloorStores stores(StoreKind::buffers, shape.channels);
              floor_open(session, shape, &stores);
              expect(stores.read_back(arrays.times.data(), arrays.values.data()), session.samples);
            });
          });
      std::optional<double> ratio;
      if (before > 0) ratio = 2 * before / pair.reader.processor_s;
      before = pair.reader.processor_s;
      bench->row("(n) " + std::to_string(times) + " x as many " + step.name, pair, static_cast<double>(session.samples),
                 ratio);
    }
  }
}

void run(Bench* bench) {
  bench->head();
  if (bench->wants('a')) {
    for (const std::uint32_t channels : {20U, 200U, 1000U, 2000U}) {
      opening(bench, "(a) open, (S of " + std::to_string(channels) + " channels",
              shape_of(Frames::single, channels, bench->scaled(5'000'000)));
    }
  }
  if (bench->wants('b')) {
    Shape shape = shape_of(Frames::multiple, 200, bench->scaled(5'000'000));
    shape.samples_per_multiple = 50;
    opening(bench, "(b) open, (M of 50", shape);
  }
  if (bench->wants('c')) opening(bench, "(c) open, (G of 20", shape_of(Frames::group, 200, bench->scaled(5'000'000)));
  if (bench->wants('d'))
    opening(bench, "(d) open, mixed of 100", shape_of(Frames::mixed, 100, bench->scaled(40'000'000)));
  if (bench->wants('e')) broken_frames(bench);
  if (bench->wants('f')) {
    for (const std::uint32_t channels : {20U, 200U}) reading_back(bench, channels);
  }
  if (bench->wants('g')) slices(bench);
  if (bench->wants('h')) gps(bench);
  if (bench->wants('i')) compressed(bench);
  if (bench->wants('k')) older(bench);
  if (bench->wants('l')) garbage(bench);
  if (bench->wants('m')) {
    for (const std::uint32_t channels : {20U, 200U}) end_to_end(bench, channels);
  }
  if (bench->wants('n')) growth(bench);
  bench->finish();
}

}  // namespace
}  // namespace traguardo::bench

int main(int argc, char** argv) {
  traguardo::bench::Settings settings;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--small") settings.small = true;
    if (argument == "--json") settings.json = true;
    if (argument == "--rounds" && i + 1 < argc) settings.rounds = std::max(1, std::atoi(argv[++i]));
    if (argument == "--only" && i + 1 < argc) settings.only = argv[++i];
  }
  std::string folder = (std::filesystem::temp_directory_path() / "traguardo-bench-XXXXXX").string();
  if (mkdtemp(folder.data()) == nullptr) return 1;
  settings.folder = folder;
  int result = 0;
  try {
    traguardo::bench::Bench bench(settings);
    traguardo::bench::run(&bench);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "roofline: %s\n", problem.what());
    result = 1;
  }
  std::filesystem::remove_all(folder);
  return result;
}
