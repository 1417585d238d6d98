// SPDX-License-Identifier: MIT
// What a host pays for the GPS of a long session: ten hours at 25 Hz, as a grid of 3.6 million points and fifteen
// channels.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "gps/gps_grid.h"
#include "gps/gps_samples.h"
#include "gps/lap_search.h"
#include "wire/qlt.h"

namespace traguardo {
namespace {

constexpr u32 kRecords = 10 * 3600 * 25;
constexpr u64 kStep = 10000;

// A drive around a bend of 100 m on the equator, at 20 m/s.
SGpsRecord record_of_drive(u32 index) {
  const double angle = 0.2 * 0.04 * index;
  const auto cm = [](double value) { return static_cast<i32>(std::lround(value * 100.0)); };
  wire::GpsSolution solution;
  solution.time_ms = index * 40;
  solution.week = 0;
  solution.x_cm = 637813700;
  solution.y_cm = cm(100.0 * std::cos(angle));
  solution.z_cm = cm(100.0 * std::sin(angle));
  solution.position_accuracy_cm = solution.speed_accuracy_cm_s = 0;
  solution.dop = 0;
  solution.vy_cm_s = cm(-20.0 * std::sin(angle));
  solution.vz_cm_s = cm(20.0 * std::cos(angle));
  SGpsRecord record;
  const wire::Bytes bytes = solution.record();
  std::copy(bytes.begin(), bytes.end(), record.bytes.begin());
  return record;
}

std::unique_ptr<CGPSSamples> long_trace() {
  auto trace = std::make_unique<CGPSSamplesLibXml2>();
  for (u32 i = 0; i < kRecords; ++i) trace->AddRecordNoClock(record_of_drive(i));
  return trace;
}

// Seconds per grid point, where one point is all fifteen channels of it.
void report_points(benchmark::State& state, u64 points) {
  const double all = static_cast<double>(points) * static_cast<double>(state.iterations());
  state.SetItemsProcessed(static_cast<i64>(all));
  state.counters["per_point"] = benchmark::Counter(all, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// The first request: rows for all records.
void BM_rows_of_a_trace(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    const std::unique_ptr<CGPSSamples> trace = long_trace();
    state.ResumeTiming();
    u64 points = trace->grid(kStep, 0, 1).size();
    benchmark::DoNotOptimize(points);
  }
}
BENCHMARK(BM_rows_of_a_trace)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_all_channels_into_host_arrays(benchmark::State& state) {
  const GpsGrid grid = long_trace()->grid(kStep, 0, 1);
  std::vector<double> times(grid.size());
  std::vector<double> values(grid.size());
  for (auto _ : state) {
    for (u32 channel = 0; channel < kGpsChannelCount; ++channel) {
      grid.fill(channel, 0, grid.size(), GpsTimeUnit::kMilliseconds, times.data(), values.data());
      benchmark::ClobberMemory();
    }
  }
  report_points(state, grid.size());
}
BENCHMARK(BM_all_channels_into_host_arrays)->Unit(benchmark::kMillisecond);

// A lap of 90 s near the start and near the end: both cost the same.
void BM_one_lap_of_one_channel(benchmark::State& state) {
  const GpsGrid grid = long_trace()->grid(kStep, 0, 1);
  const u64 from = static_cast<u64>(state.range(0)) * 1000000;
  std::vector<double> times(9001);
  std::vector<double> values(9001);
  u64 points = 0;
  for (auto _ : state) {
    const LapSlice lap = lap_slice(grid, from, from + 90000000, kStep);
    points = grid.fill(kGpsSpeed, lap.first, lap.count, GpsTimeUnit::kSeconds, times.data(), values.data());
    benchmark::ClobberMemory();
  }
  report_points(state, points);
}
BENCHMARK(BM_one_lap_of_one_channel)->Arg(100)->Arg(35000)->Unit(benchmark::kMicrosecond);

// The plain twin, for scale.
void BM_plain_arrays(benchmark::State& state) {
  const std::unique_ptr<CGPSSamples> trace = long_trace();
  std::vector<SGpsChannelOut> channels;
  std::vector<u64> times;
  for (auto _ : state) trace->GetChannels(kStep, 0, 1, channels, times);
  report_points(state, times.size());
}
BENCHMARK(BM_plain_arrays)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
}  // namespace traguardo

BENCHMARK_MAIN();
