// SPDX-License-Identifier: MIT
#include "legacy/file/table_repair.h"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>

#include "legacy/file/sample_form.h"
#include "legacy/file/sample_rate.h"
#include "legacy/sensors/sensors_data.h"

namespace traguardo {
namespace {

// The derived channels of a file take memory for which it holds no bytes, so they are believed together up to this:
// four samples for each logged one, and a day at the highest rate (which is ten channels of 100 Hz over a day).
constexpr u64 kDerivedSamplesPerLogged = 4;
constexpr u64 kSecondsPerDay = 86400;
constexpr u64 kDerivedSamplesAlways = kSecondsPerDay * 1000;

u32 held_to_u32(u64 value) {
  return static_cast<u32>(std::min<u64>(value, 0xFFFFFFFF));
}

std::string trimmed(const std::string& text) {
  constexpr const char* kBlanks = " \t\n\v\f\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

u32 total_frequency(const WmpTables& tables, bool derived) {
  u32 sum = 0;
  for (std::size_t i = 0; i < tables.channels.size(); ++i) {
    if (tables.is_derived(i) == derived) sum += sample_rate_of(tables.channels[i].record.rate_index()).frequency_hz;
  }
  return sum;
}

u64 derived_budget_left(const WmpTables& tables) {
  u64 budget = kDerivedSamplesAlways;
  u64 used = 0;
  for (std::size_t i = 0; i < tables.channels.size(); ++i) {
    const u64 count = tables.channels[i].record.sample_count();
    if (tables.is_derived(i)) {
      used += count;
    } else {
      budget += kDerivedSamplesPerLogged * count;
    }
  }
  return budget > used ? budget - used : 0;
}

void set_derived_counts(WmpTables* tables) {
  const std::span<WmpChannel> derived = std::span(tables->channels).subspan(tables->logged_count);
  for (WmpChannel& channel : derived) channel.record.set_sample_count(0);
  u64 left = derived_budget_left(*tables);
  std::map<u32, u64> counts;  // by frequency: thousands of channels share a dozen
  for (WmpChannel& channel : derived) {
    const u32 frequency = sample_rate_of(channel.record.rate_index()).frequency_hz;
    const auto [known, is_new] = counts.try_emplace(frequency, 0);
    if (is_new) known->second = derived_sample_count(*tables, frequency);
    const u64 count = std::min(known->second, left);
    channel.record.set_sample_count(static_cast<u32>(count));
    left -= count;
  }
}

// Room for all channels' values as the header counts it: in single precision, as the sizes in the files were made.
void set_value_area_size(WmpTables* tables) {
  WmpMainHeader& header = tables->header;
  const u32 logged_frequency = total_frequency(*tables, false);
  if (logged_frequency == 0) return;
  const float both = static_cast<float>(total_frequency(*tables, true) + logged_frequency);
  const float size = both / static_cast<float>(logged_frequency) * static_cast<float>(header.raw_area_size()) * 2.0F;
  header.set_value_area_size(std::max(header.value_area_size(), truncate_to_u32(size)));
}

}  // namespace

// --- Counts and sizes

void repair_counts(WmpTables* tables) {
  WmpMainHeader& header = tables->header;
  const int logged = std::max<int>(header.logged_count(), 0);
  header.set_derived_count(static_cast<i16>(std::max(0, static_cast<int>(tables->stated_channels()) - logged)));
  tables->version->samples->limit_counts(tables);

  if (tables->version->raw_area_fills_file) {
    const u64 behind = table_bytes(*tables);
    header.set_raw_area_size(tables->stored_length > behind ? held_to_u32(tables->stored_length - behind) : 0);
  } else {
    u64 logged_samples = 0;
    for (std::size_t i = 0; i < tables->logged_count; ++i) logged_samples += tables->channels[i].record.sample_count();
    header.set_raw_area_size(std::max(header.raw_area_size(), held_to_u32(sizeof(u16) * logged_samples)));
  }
  set_value_area_size(tables);
  set_derived_counts(tables);
  u64 duration = 0;
  for (const WmpChannel& channel : tables->channels) {
    duration =
        std::max(duration, u64{channel.record.sample_count()} * sample_rate_of(channel.record.rate_index()).period_ms);
  }
  header.set_duration_ms(held_to_u32(duration));
  const u32 values_size = held_to_u32(sizeof(float) * total_samples(*tables));
  header.set_value_area_size(std::max(header.value_area_size(), values_size));
}

// A sample count is a claim: no more samples are believed than the file can hold.
void limit_counts_in_a_row(WmpTables* tables) {
  u64 left = tables->raw_capacity;
  for (std::size_t i = 0; i < tables->logged_count; ++i) {
    WmpChannelRecord& record = tables->channels[i].record;
    const u64 count = std::min<u64>(record.sample_count(), left);
    record.set_sample_count(static_cast<u32>(count));
    left -= count;
  }
}

// In single precision, as the counts in the files were made. A logged channel without a frequency has no say.
u32 derived_sample_count(const WmpTables& tables, u32 frequency_hz) {
  i64 most = 0;
  for (std::size_t i = 0; i < tables.logged_count; ++i) {
    const WmpChannelRecord& record = tables.channels[i].record;
    const u32 own = sample_rate_of(record.rate_index()).frequency_hz;
    if (own == 0) continue;
    const float count =
        static_cast<float>(record.sample_count()) * static_cast<float>(frequency_hz) / static_cast<float>(own) + 0.5F;
    most = std::max(most, truncate_to<i64>(count));
  }
  return held_to_u32(static_cast<u64>(most));
}

// What the reader adds is no claim of the file: a day of it is whole in any case, whatever the file's own channels
// took.
u64 added_sample_count(const WmpTables& tables, u32 frequency_hz) {
  const u64 wanted = derived_sample_count(tables, frequency_hz);
  return std::min(wanted, std::max(kSecondsPerDay * frequency_hz, derived_budget_left(tables)));
}

u32 missing_samples(const WmpTables& tables, std::size_t channel) {
  if (!tables.is_derived(channel)) return 0;
  const WmpChannelRecord& record = tables.channels[channel].record;
  const u32 wanted = derived_sample_count(tables, sample_rate_of(record.rate_index()).frequency_hz);
  return wanted - std::min(wanted, record.sample_count());
}

u64 total_samples(const WmpTables& tables) {
  u64 sum = 0;
  for (const WmpChannel& channel : tables.channels) sum += channel.record.sample_count();
  return sum;
}

// --- Channels

void repair_channels(WmpTables* tables) {
  constexpr u8 kSecondIsTemperatureFamily = 4;
  for (std::size_t i = 0; i < tables->channels.size(); ++i) {
    WmpChannel& channel = tables->channels[i];
    WmpChannelRecord& record = channel.record;
    const std::string name = trimmed(record.name());
    record.set_name(name.empty() ? "ch_" + std::to_string(i) : name);
    const u16 measure_class = find_sensor(record.sensor_id()).traits.measure_class;
    if (measure_class != 0) record.set_measure_class(measure_class);
    channel.statistics = WmpChannelStatistics();
    channel.update_rate();
    channel.statistics.display_minimum = record.display_minimum();
    channel.statistics.display_maximum = record.display_maximum();
  }
  // The second channel of this family is the logger's own temperature, whatever was configured.
  if (tables->header.family() == kSecondIsTemperatureFamily && tables->channels.size() > 1) {
    WmpChannelRecord& second = tables->channels[1].record;
    if (second.sensor_id() != 91 && second.sensor_id() != 95) {
      second.set_sensor_id(91);
      second.set_measure_class(1);
    }
  }
}

// --- Laps

namespace {

// A lap's time must fit its samples, and all laps the session.
void repair_lap_times(WmpTables* tables) {
  const u32 frequency = total_frequency(*tables, false);
  const u8 family = tables->header.family();
  if (frequency < 1) return;
  if (tables->version->lap_times_from_samples && family > 3) {
    constexpr double kToleranceMs = 100.0;
    for (WmpLapRecord& lap : tables->laps) {
      const double time = static_cast<double>(lap.sample_count()) * 1000.0 / static_cast<double>(frequency);
      if (std::fabs(time - static_cast<double>(lap.time_ms())) > kToleranceMs) lap.set_time_ms(truncate_to_u32(time));
    }
  }
  if (family < 3 || tables->logged_count == 0) return;
  const u64 duration = tables->header.duration_ms();
  u64 sum = 0;
  for (WmpLapRecord& lap : tables->laps) {
    sum += lap.time_ms();
    if (sum <= duration) continue;
    const u64 time = lap.time_ms() - (sum - duration);
    lap.set_time_ms(static_cast<u32>(time));
    lap.set_sample_count(static_cast<u32>(time * frequency / 1000));
    sum = duration;
  }
}

void fill_true_lap_times(WmpTables* tables) {
  for (WmpLapRecord& lap : tables->laps) {
    if (lap.true_time_ms() == 0 || lap.true_time_ms() == kTrueLapTimeUnset) lap.set_true_time_ms(lap.time_ms());
    if (lap.time_ms() == 0) lap.set_mark(0);
  }
}

void chain_lap_starts(WmpTables* tables) {
  u32 start = 0;
  for (WmpLapRecord& lap : tables->laps) {
    lap.set_start_ms(start);
    start += lap.time_ms();
  }
}

void repair_run_numbers(WmpTables* tables) {
  // Software and loggers before runs existed left the field undefined.
  constexpr u32 kFirstSoftwareWithRuns = 0x200010;
  constexpr u16 kFirstFirmwareWithRuns = 311;
  const WmpMainHeader& header = tables->header;
  const u8 family = header.family();
  std::vector<WmpLapRecord>& laps = tables->laps;
  const bool early_logger =
      (family == 5 || family == 9 || family == 10) && header.firmware_word() < kFirstFirmwareWithRuns;
  const bool early = header.software_version() < kFirstSoftwareWithRuns || family == 3 || early_logger;
  const RunNumbers numbers = tables->version->runs;
  if (numbers == RunNumbers::kNone || (numbers == RunNumbers::kOfLateFiles && early)) {
    for (WmpLapRecord& lap : laps) lap.set_run(1);
  }
  for (std::size_t i = 1; i < laps.size(); ++i) {
    const u16 before = laps[i - 1].run();
    const u16 old_run = laps[i].run();
    if (old_run >= before) continue;
    const u16 new_run = static_cast<u16>(before + 1);
    std::size_t k = i;
    for (; k < laps.size() && laps[k].run() == old_run; ++k) laps[k].set_run(new_run);
    i = k - 1;
  }
}

void repair_lap_numbers(WmpTables* tables) {
  std::vector<WmpLapRecord>& laps = tables->laps;
  for (std::size_t i = 1; i < laps.size(); ++i) {
    const WmpLapRecord& before = laps[i - 1];
    if (laps[i].run() != before.run() || laps[i].number() > before.number()) continue;
    laps[i].set_number(static_cast<i16>(before.number() + 1));
  }
}

}  // namespace

void repair_laps(WmpTables* tables) {
  repair_lap_times(tables);
  fill_true_lap_times(tables);
  chain_lap_starts(tables);
  repair_run_numbers(tables);
  repair_lap_numbers(tables);
  find_best_laps(tables);
}

// --- Runs

namespace {

std::unordered_map<u16, std::size_t> rows_by_number(const std::vector<WmpRun>& runs) {
  std::unordered_map<u16, std::size_t> rows;
  for (std::size_t i = 0; i < runs.size(); ++i) rows.emplace(runs[i].number, i);
  return rows;
}

// From the start of each run's first lap to the end of its last.
void measure_runs(WmpTables* tables) {
  const std::unordered_map<u16, std::size_t> rows = rows_by_number(tables->runs);
  std::vector<bool> begun(tables->runs.size());
  for (const WmpLapRecord& lap : tables->laps) {
    const auto row = rows.find(lap.run());
    if (row == rows.end()) continue;
    WmpRun& run = tables->runs[row->second];
    if (!begun[row->second]) run.start_ms = lap.start_ms();
    begun[row->second] = true;
    run.length_ms = lap.start_ms() - run.start_ms + lap.time_ms();
  }
}

void take_better(const WmpLapRecord& lap, WmpBestLaps* best) {
  if (best->best_time_ms == 0 || lap.time_ms() < best->best_time_ms) {
    best->run = lap.run();
    best->best_lap = lap.number();
    best->best_time_ms = lap.time_ms();
  }
  if (lap.true_time_ms() > 0 && (best->best_true_time_ms == 0 || lap.true_time_ms() < best->best_true_time_ms)) {
    best->best_true_lap = lap.number();
    best->best_true_time_ms = lap.true_time_ms();
  }
}

}  // namespace

bool repair_runs(WmpTables* tables) {
  const u16 run_count = tables->laps.empty() ? u16{0} : tables->laps.back().run();
  bool differs = false;
  if (run_count > 0) {
    std::vector<WmpRun>& old_runs = tables->runs;
    const std::unordered_map<u16, std::size_t> old_rows = rows_by_number(old_runs);
    std::vector<WmpRun> runs;
    std::bitset<65536> seen;
    for (const WmpLapRecord& lap : tables->laps) {
      if (seen.test(lap.run())) continue;
      seen.set(lap.run());
      WmpRun run;
      run.number = lap.run();
      const auto old_row = old_rows.find(run.number);
      if (old_row != old_rows.end()) run.record = std::move(old_runs[old_row->second].record);
      differs = differs || old_row == old_rows.end() || old_row->second != runs.size();
      runs.push_back(std::move(run));
    }
    differs = differs || runs.size() != old_runs.size();
    tables->runs = std::move(runs);
    tables->configuration.set_run_count(run_count);
    if (tables->version->run_record > 0) update_file_length(tables);
  }
  measure_runs(tables);
  return differs;
}

void find_best_laps(WmpTables* tables) {
  for (WmpRun& run : tables->runs) {
    run.best = WmpBestLaps();
    run.best.run = run.number;
  }
  const std::unordered_map<u16, std::size_t> rows = rows_by_number(tables->runs);
  WmpBestLaps best_of_file;
  for (const WmpLapRecord& lap : tables->laps) {
    if (!lap.counts_for_best() || lap.time_ms() == 0) continue;
    take_better(lap, &best_of_file);
    const auto row = rows.find(lap.run());
    if (row != rows.end()) take_better(lap, &tables->runs[row->second].best);
  }
  WmpMainHeader& header = tables->header;
  header.set_best_lap(static_cast<u16>(best_of_file.best_lap));
  header.set_best_lap_time_ms(best_of_file.best_time_ms);
  header.set_best_lap_run(best_of_file.run);
  tables->configuration.set_reference_lap(static_cast<u16>(best_of_file.best_lap));
  tables->configuration.set_reference_lap_run(best_of_file.run);
}

// --- What a host is shown

// The stored texts of three units become what is shown.
void repair_unit_texts(WmpTables* tables) {
  for (WmpChannel& channel : tables->channels) {
    const std::string unit = channel.record.unit_text();
    if (unit == "C" || unit == "F") channel.record.set_unit_text("\xB0" + unit);
    if (unit == "\xBB") channel.record.set_unit_text("lambda");
  }
}

void repair_reference_speed(WmpTables* tables) {
  WmpMainHeader& header = tables->header;
  const std::vector<WmpChannel>& channels = tables->channels;
  const auto reference = static_cast<std::size_t>(std::max<i16>(header.reference_speed(), 0));
  const bool stands = header.reference_speed() >= 0 && reference < channels.size() && channels[reference].is_speed();
  if (!is_receiver_logger(header)) {
    if (!stands) header.set_reference_speed(-1);
    return;
  }
  if (stands && tables->is_gps_speed(reference)) return;
  // The speed that counts is the receiver's; a wheel's is taken only where there is no other.
  header.set_reference_speed(-1);
  for (std::size_t i = 0; i < channels.size(); ++i) {
    if (!channels[i].is_speed()) continue;
    header.set_reference_speed(static_cast<i16>(i));
    if (tables->is_gps_speed(i)) return;
  }
}

}  // namespace traguardo
