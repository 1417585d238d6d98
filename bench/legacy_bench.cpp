// SPDX-License-Identifier: MIT
// What it costs to turn raw words of the legacy family into values: nanoseconds per word for each class of formula, and
// seconds for a dump of 32 MB that is taken apart into its channels.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "legacy/file/dump_rebuild.h"
#include "legacy/sensors/sample_conversion.h"
#include "legacy/sensors/sensor_database.h"
#include "legacy/sensors/sensors.h"
#include "units/user_units_manager.h"
#include "wire/dump.h"

namespace traguardo {
namespace {

struct Case {
  const char* name;
  i32 sensor_id;
  std::string_view unit;  // empty: no descriptor
  std::array<float, 5> parameters;
};

const Case kCases[] = {
    {"plain", 337, "", {}},
    {"plain_with_validity", 67, "", {}},
    {"engine_pulses", 0, "", {1, 0, -666, 0}},
    {"wheel_speed", 1, "", {}},
    {"span", 7, "", {0, 100, 3688}},
    {"two_sided_span", 8, "", {1344, 0, -100, 3688, 100}},
    {"acceleration", 10, "", {2079}},
    {"two_point_line", 17, "", {0.5F, 0, 4.5F, 150}},
    {"multiplier", 70, "", {0.01F}},
    {"potentiometer", 30, "", {120, 100, 3688}},
    {"range", 999, "", {-40, 160}},
    {"gyro", 42, "", {2048}},
    {"temperature", 75, "", {}},
    {"pitot_tube", 38, "", {25, 3621, 3000, 1.02F}},
    {"piecewise_lambda", 12, "", {}},
    {"volts_polynomial", 59, "", {}},
    {"double_polynomial", 58, "", {}},
    {"user_polynomial", 86, "", {1.5F, 0.25F, -0.0003F, 1e-7F, -2e-11F}},
    {"thermocouple", 5, "", {}},
    {"curve_of_12_points", 81, "", {}},
    {"curve_of_2_points", 94, "", {}},
    {"gear_by_thresholds", 90, "", {0.1F, 0.2F, 0.3F, 0.4F, 0.5F}},
    {"gear_by_nearest", 99, "", {0.1F, 0.2F, 0.3F, 0.4F, 0.5F}},
    {"descriptor_line", 101, "\t03001", {}},
    {"descriptor_reciprocal", 101, "\t03041", {}},
    {"descriptor_polynomial", 81, "\t01001", {}},
};

constexpr std::size_t kWords = 1 << 16;

// Noise over the converter's 12 bits, so that no branch can be foretold, with an invalid word now and then.
std::vector<u16> noisy_words() {
  std::vector<u16> words(kWords);
  u32 state = 1;
  for (u16& word : words) {
    state = state * 1664525 + 1013904223;
    word = (state >> 26) == 0 ? u16{0x8000} : static_cast<u16>((state >> 12) & 0x0FFF);
  }
  return words;
}

void count_words(benchmark::State& state) {
  const double words = static_cast<double>(state.iterations()) * static_cast<double>(kWords);
  state.counters["words"] = benchmark::Counter(words, benchmark::Counter::kIsRate);
  state.counters["per_word"] = benchmark::Counter(words, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void convert(benchmark::State& state, const Case& c) {
  CUserUnitsOfMeasureMgr units;
  CDBSensori data_base;
  CSensori sensors(&units, &data_base);
  std::array<u8, kUnitFieldWidth> unit{};
  for (std::size_t i = 0; i < c.unit.size(); ++i) unit[i] = static_cast<u8>(c.unit[i]);
  const std::vector<u16> words = noisy_words();
  std::vector<float> values(kWords);
  for (auto _ : state) {
    sensors.ConvertiCampioni(c.sensor_id, c.parameters, unit, words, values);
    benchmark::DoNotOptimize(values.data());
    benchmark::ClobberMemory();
  }
  count_words(state);
}

void recover(benchmark::State& state) {
  CUserUnitsOfMeasureMgr units;
  CDBSensori data_base;
  const CSensori sensors(&units, &data_base);
  const std::vector<float> values(kWords, 12.5F);
  std::vector<u16> words(kWords);
  for (auto _ : state) {
    u16 sensor_id = 17;
    u16 measure_class = 0;
    std::array<float, 5> parameters{};
    sensors.RicavaCampioni(&sensor_id, &measure_class, values, words, &parameters);
    benchmark::DoNotOptimize(words.data());
    benchmark::ClobberMemory();
  }
  count_words(state);
}

void digits(benchmark::State& state) {
  const std::vector<u16> words = noisy_words();
  std::vector<float> values(kWords);
  for (auto _ : state) {
    decode_digits(words, values);
    benchmark::DoNotOptimize(values.data());
    benchmark::ClobberMemory();
  }
  count_words(state);
}

// Speeds that stand still for half a second at a time; the ramps of the first round leave nothing to do in later ones,
// so each round starts from the flat runs.
void flat_runs(benchmark::State& state) {
  std::vector<float> flat(kWords);
  for (std::size_t i = 0; i < flat.size(); ++i) flat[i] = static_cast<float>(i / 5 % 100 + 1);
  std::vector<float> values;
  for (auto _ : state) {
    values = flat;
    repair_flat_runs(values, 100);
    benchmark::DoNotOptimize(values.data());
    benchmark::ClobberMemory();
  }
  count_words(state);
}

// Sixteen channels in turn, a block mark with its checksum behind every 250 words, and the logger's own sum over all.
std::vector<u8> memory_dump() {
  constexpr std::size_t kDumpSize = 32U << 20;
  wire::Bytes schedule(wire::Dump::kScheduleRoom);
  for (std::size_t i = 0; i < schedule.size(); ++i) schedule[i] = static_cast<u8>(i % 16 + 1);
  wire::Dump dump(schedule);
  dump.set_byte(0, 1);
  const std::vector<u16> words = noisy_words();
  const std::size_t room = (kDumpSize - dump.set_up_size() - 1024) / 2 / 252 * 250;
  for (std::size_t i = 0; i < room; ++i) {
    dump.word(words[i % kWords] & 0x0FFFU);
    if (i % 250 == 249) dump.mark().checksum();
  }
  std::vector<u8> bytes = dump.bytes();
  bytes.resize(kDumpSize, 0xFF);
  return bytes;
}

void rebuild_dump(benchmark::State& state) {
  const std::vector<u8> dump = memory_dump();
  const auto read = [&dump](u64 offset, u8* out, std::size_t count) {
    const std::size_t at = static_cast<std::size_t>(std::min<u64>(offset, dump.size()));
    const std::size_t held = std::min(count, dump.size() - at);
    std::copy_n(dump.begin() + static_cast<std::ptrdiff_t>(at), held, out);
    return held;
  };
  std::size_t words = 0;
  for (auto _ : state) {
    CWMPvers500 reader(read, dump.size(), dump.size());
    u32 error = 0;
    if (!reader.Rebuild(0, &error) || error != 0) state.SkipWithError("not rebuilt");
    words = reader.take_words().size();
  }
  if (words < dump.size() / 2 * 9 / 10) state.SkipWithError("samples are missing");
  state.SetBytesProcessed(static_cast<i64>(dump.size()) * state.iterations());
}

[[maybe_unused]] const bool kRegistered = [] {
  for (const Case& c : kCases) {
    benchmark::RegisterBenchmark(("legacy/" + std::string(c.name)).c_str(),
                                 [&c](benchmark::State& state) { convert(state, c); });
  }
  benchmark::RegisterBenchmark("legacy/way_back", recover);
  benchmark::RegisterBenchmark("legacy/digits", digits);
  benchmark::RegisterBenchmark("legacy/flat_runs", flat_runs);
  benchmark::RegisterBenchmark("legacy/dump_of_32_MB", rebuild_dump)->Unit(benchmark::kMillisecond);
  return true;
}();

}  // namespace
}  // namespace traguardo

BENCHMARK_MAIN();
