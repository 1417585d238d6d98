// What the tables of a file become before anything is computed from them: counts and sizes that fit each other and the
// file, names that can be shown, laps and runs that rise.
#include <algorithm>
#include <bitset>
#include <cmath>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>

#include "legacy/file/sample_rate.h"
#include "legacy/sensors/conversion_sensors_data.h"
#include "legacy/wmp_session.h"

namespace traguardo {
namespace {

// The derived channels of a file take memory for which it holds no bytes, so they are believed together up to this:
// four samples for each logged one, and a day at the highest rate (which is ten channels of 100 Hz over a day).
constexpr u64 kDerivedSamplesPerLogged = 4;
constexpr u64 kSecondsPerDay = 86400;
constexpr u64 kDerivedSamplesAlways = kSecondsPerDay * 1000;

constexpr u16 kAlignedAreasVersion = 550;
constexpr std::size_t kAlignedAreas = 2;
constexpr u64 kAlignedAreaWords = 32768;

u32 held_to_u32(u64 value) {
  return static_cast<u32>(std::min<u64>(value, 0xFFFFFFFF));
}

std::string trimmed(const std::string& text) {
  constexpr const char* kBlanks = " \t\n\v\f\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

// --- Counts and sizes

void CWMP::normalise_counts() {
  const int channels = static_cast<int>(stated_channels());
  const int logged = std::max<int>(header_.logged_count(), 0);
  header_.set_derived_count(static_cast<i16>(std::max(0, channels - logged)));
  limit_logged_counts();

  u64 logged_samples = 0;
  for (std::size_t i = 0; i < logged_count_; ++i) logged_samples += channels_[i].sample_count();
  if (header_.version() >= 500) {
    header_.set_raw_area_size(std::max(header_.raw_area_size(), held_to_u32(sizeof(u16) * logged_samples)));
  } else {
    const u64 tables =
        510 + u64{WmpLapRecord::kSize} * stated_laps() + u64{WmpChannelRecord::kSize} * stated_channels();
    header_.set_raw_area_size(stored_length_ > tables ? held_to_u32(stored_length_ - tables) : 0);
  }

  const u32 logged_frequency = total_frequency(false);
  if (logged_frequency > 0) {
    const float both = static_cast<float>(total_frequency(true) + logged_frequency);
    const float size = both / static_cast<float>(logged_frequency) * static_cast<float>(header_.raw_area_size()) * 2.0F;
    header_.set_value_area_size(std::max(header_.value_area_size(), truncate_to_u32(size)));
  }

  set_derived_counts();
  u64 duration = 0;
  for (const WmpChannelRecord& record : channels_) {
    duration = std::max(duration, u64{record.sample_count()} * sample_rate_of(record.rate_index()).period_ms);
  }
  header_.set_duration_ms(held_to_u32(duration));
  header_.set_value_area_size(std::max(header_.value_area_size(), held_to_u32(sizeof(float) * total_samples())));
}

// A sample count is a claim: no more samples are believed than the file can hold.
void CWMP::limit_logged_counts() {
  if (header_.version() == kAlignedAreasVersion) {
    const u64 areas = aligned_areas_start() / sizeof(u16);
    const u64 words = file_length() / sizeof(u16);
    for (std::size_t i = 0; i < logged_count_; ++i) {
      const u64 start = areas + i * kAlignedAreaWords;
      const u64 held = i < kAlignedAreas && words > start ? words - start : 0;
      channels_[i].set_sample_count(static_cast<u32>(std::min<u64>(channels_[i].sample_count(), held)));
    }
    return;
  }
  u64 left = raw_capacity_;
  for (std::size_t i = 0; i < logged_count_; ++i) {
    const u64 count = std::min<u64>(channels_[i].sample_count(), left);
    channels_[i].set_sample_count(static_cast<u32>(count));
    left -= count;
  }
}

void CWMP::set_derived_counts() {
  for (std::size_t i = logged_count_; i < channels_.size(); ++i) channels_[i].set_sample_count(0);
  u64 left = derived_budget_left();
  std::map<u32, u64> counts;  // by frequency: thousands of channels share a dozen
  for (std::size_t i = logged_count_; i < channels_.size(); ++i) {
    const u32 frequency = sample_rate_of(channels_[i].rate_index()).frequency_hz;
    const auto [known, is_new] = counts.try_emplace(frequency, 0);
    if (is_new) known->second = derived_sample_count(frequency);
    const u64 count = std::min(known->second, left);
    channels_[i].set_sample_count(static_cast<u32>(count));
    left -= count;
  }
}

u64 CWMP::derived_budget_left() const {
  u64 budget = kDerivedSamplesAlways;
  u64 used = 0;
  for (std::size_t i = 0; i < channels_.size(); ++i) {
    if (is_derived(i)) {
      used += channels_[i].sample_count();
    } else {
      budget += kDerivedSamplesPerLogged * channels_[i].sample_count();
    }
  }
  return budget > used ? budget - used : 0;
}

// What the reader adds is no claim of the file: a day of it is whole in any case, whatever the file's own channels
// took.
u64 CWMP::added_sample_count(u32 frequency_hz) const {
  const u64 wanted = derived_sample_count(frequency_hz);
  return std::min(wanted, std::max(kSecondsPerDay * frequency_hz, derived_budget_left()));
}

u32 CWMP::missing_samples(std::size_t index) const {
  if (!is_derived(index)) return 0;
  const u32 wanted = derived_sample_count(sample_rate_of(channels_[index].rate_index()).frequency_hz);
  return wanted - std::min(wanted, channels_[index].sample_count());
}

// In single precision, as the counts in the files were made. A logged channel without a frequency has no say.
u32 CWMP::derived_sample_count(u32 frequency_hz) const {
  i64 most = 0;
  for (std::size_t i = 0; i < logged_count_; ++i) {
    const u32 own = sample_rate_of(channels_[i].rate_index()).frequency_hz;
    if (own == 0) continue;
    const float count =
        static_cast<float>(channels_[i].sample_count()) * static_cast<float>(frequency_hz) / static_cast<float>(own) +
        0.5F;
    most = std::max(most, truncate_to<i64>(count));
  }
  return held_to_u32(static_cast<u64>(most));
}

u32 CWMP::total_frequency(bool derived) const {
  u32 sum = 0;
  for (std::size_t i = 0; i < channels_.size(); ++i) {
    if (is_derived(i) == derived) sum += sample_rate_of(channels_[i].rate_index()).frequency_hz;
  }
  return sum;
}

u64 CWMP::total_samples() const {
  u64 sum = 0;
  for (const WmpChannelRecord& record : channels_) sum += record.sample_count();
  return sum;
}

// --- Tables

// Runs on records fresh from the file, so what the counts did to the records is done to them again.
void CWMP::normalise_tables() {
  limit_logged_counts();
  set_derived_counts();
  constexpr u8 kSecondIsTemperatureFamily = 4;
  for (std::size_t i = 0; i < channels_.size(); ++i) {
    WmpChannelRecord& record = channels_[i];
    const std::string name = trimmed(record.name());
    record.set_name(name.empty() ? "ch_" + std::to_string(i) : name);
    for (const MeasureClassRow& row : load_measure_classes()) {
      if (row.sensor_id == record.sensor_id()) record.set_measure_class(row.measure_class);
    }
    update_rate(i);
    statistics_[i].display_minimum = record.display_minimum();
    statistics_[i].display_maximum = record.display_maximum();
    if (record.statistics_word() != 1) {
      statistics_[i].minimum = 0.0F;
      statistics_[i].mean = 0.0F;
    }
  }
  // The second channel of this family is the logger's own temperature, whatever was configured.
  if (header_.family() == kSecondIsTemperatureFamily && channels_.size() > 1) {
    WmpChannelRecord& second = channels_[1];
    if (second.sensor_id() != 91 && second.sensor_id() != 95) {
      second.set_sensor_id(91);
      second.set_measure_class(1);
    }
  }
}

// --- Laps

void CWMP::normalise_laps() {
  normalise_lap_times();
  fill_true_lap_times();
  chain_lap_starts();
  normalise_run_numbers();
  normalise_lap_numbers();
  find_best_laps();
}

// A lap's time must fit its samples, and all laps the session.
void CWMP::normalise_lap_times() {
  const u32 frequency = total_frequency(false);
  const u8 family = header_.family();
  if (frequency < 1) return;
  if (header_.version() == 500 && family > 3) {
    constexpr double kToleranceMs = 100.0;
    for (WmpLapRecord& lap : laps_) {
      const double time = static_cast<double>(lap.sample_count()) * 1000.0 / static_cast<double>(frequency);
      if (std::fabs(time - static_cast<double>(lap.time_ms())) > kToleranceMs) lap.set_time_ms(truncate_to_u32(time));
    }
  }
  if (family < 3 || logged_count_ == 0) return;
  const u64 duration = header_.duration_ms();
  u64 sum = 0;
  for (WmpLapRecord& lap : laps_) {
    sum += lap.time_ms();
    if (sum <= duration) continue;
    const u64 time = lap.time_ms() - (sum - duration);
    lap.set_time_ms(static_cast<u32>(time));
    lap.set_sample_count(static_cast<u32>(time * frequency / 1000));
    sum = duration;
  }
}

void CWMP::fill_true_lap_times() {
  for (WmpLapRecord& lap : laps_) {
    if (lap.true_time_ms() == 0 || lap.true_time_ms() == kTrueLapTimeUnset) lap.set_true_time_ms(lap.time_ms());
    if (lap.time_ms() == 0) lap.set_mark(0);
  }
}

void CWMP::chain_lap_starts() {
  u32 start = 0;
  for (WmpLapRecord& lap : laps_) {
    lap.set_start_ms(start);
    start += lap.time_ms();
  }
}

void CWMP::normalise_run_numbers() {
  // Software and loggers before runs existed left the field undefined.
  constexpr u32 kFirstSoftwareWithRuns = 0x200010;
  constexpr u16 kFirstFirmwareWithRuns = 311;
  const u8 family = header_.family();
  if (header_.version() == 500 || header_.version() == 550) {
    const bool early_logger =
        (family == 5 || family == 9 || family == 10) && header_.firmware_word() < kFirstFirmwareWithRuns;
    if (header_.software_version() < kFirstSoftwareWithRuns || family == 3 || early_logger) {
      for (WmpLapRecord& lap : laps_) lap.set_run(1);
    }
  }
  for (std::size_t i = 1; i < laps_.size(); ++i) {
    const u16 before = laps_[i - 1].run();
    const u16 old_run = laps_[i].run();
    if (old_run >= before) continue;
    const u16 new_run = static_cast<u16>(before + 1);
    std::size_t k = i;
    for (; k < laps_.size() && laps_[k].run() == old_run; ++k) laps_[k].set_run(new_run);
    i = k - 1;
  }
}

void CWMP::normalise_lap_numbers() {
  for (std::size_t i = 1; i < laps_.size(); ++i) {
    const WmpLapRecord& before = laps_[i - 1];
    if (laps_[i].run() != before.run() || laps_[i].number() > before.number()) continue;
    laps_[i].set_number(static_cast<i16>(before.number() + 1));
  }
}

// --- Runs

// One row per run that the laps name, in their order, with the record that the file stores for it. True if that is
// another table than before.
bool CWMP::agree_run_table() {
  const u16 run_count = laps_.empty() ? u16{0} : laps_.back().run();
  if (run_count == 0) return false;
  std::unordered_map<u16, std::size_t> old_rows;
  for (std::size_t i = 0; i < runs_.size(); ++i) old_rows.emplace(runs_[i].number, i);

  std::vector<WmpRun> table;
  std::bitset<65536> seen;
  bool differs = false;
  for (const WmpLapRecord& lap : laps_) {
    if (seen.test(lap.run())) continue;
    seen.set(lap.run());
    WmpRun run;
    run.number = lap.run();
    const auto old_row = old_rows.find(run.number);
    if (old_row != old_rows.end()) run.record = std::move(runs_[old_row->second].record);
    differs = differs || old_row == old_rows.end() || old_row->second != table.size();
    table.push_back(std::move(run));
  }
  differs = differs || table.size() != runs_.size();
  runs_ = std::move(table);
  run_best_laps_.assign(runs_.size(), WmpRunBestLaps());
  configuration_.set_run_count(run_count);
  if (header_.version() >= 600) update_file_length();
  return differs;
}

// The shortest laps of each run and of the file, on lap time and on true lap time. No host sees them.
void CWMP::find_best_laps() {
  run_best_laps_.assign(runs_.size(), WmpRunBestLaps());
  std::unordered_map<u16, std::size_t> rows;
  for (std::size_t i = 0; i < runs_.size(); ++i) {
    run_best_laps_[i].run = runs_[i].number;
    rows.emplace(runs_[i].number, i);
  }
  const auto take = [](const WmpLapRecord& lap, WmpRunBestLaps* best) {
    if (best->best_time_ms == 0 || lap.time_ms() < best->best_time_ms) {
      best->run = lap.run();
      best->best_lap = lap.number();
      best->best_time_ms = lap.time_ms();
    }
    if (lap.true_time_ms() > 0 && (best->best_true_time_ms == 0 || lap.true_time_ms() < best->best_true_time_ms)) {
      best->best_true_lap = lap.number();
      best->best_true_time_ms = lap.true_time_ms();
    }
  };
  WmpRunBestLaps best_of_file;
  for (const WmpLapRecord& lap : laps_) {
    if (!lap.counts_for_best() || lap.time_ms() == 0) continue;
    take(lap, &best_of_file);
    const auto row = rows.find(lap.run());
    if (row != rows.end()) take(lap, &run_best_laps_[row->second]);
  }
  header_.set_best_lap(static_cast<u16>(best_of_file.best_lap));
  header_.set_best_lap_time_ms(best_of_file.best_time_ms);
  header_.set_best_lap_run(best_of_file.run);
  configuration_.set_reference_lap(static_cast<u16>(best_of_file.best_lap));
  configuration_.set_reference_lap_run(best_of_file.run);
}

}  // namespace traguardo
