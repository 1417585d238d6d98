// The rows of the channel table and the areas that their samples lie in; the spans of runs.
#include <algorithm>
#include <atomic>
#include <limits>
#include <unordered_map>

#include "legacy/file/sample_rate.h"
#include "legacy/texts/wmp_measure.h"
#include "legacy/wmp_session.h"

namespace traguardo {
namespace {

// The header counts channels in 16 signed bits.
constexpr std::size_t kMostChannels = 32767;

}  // namespace

std::span<float> CWMP::values(std::size_t index) {
  if (index + 1 >= first_sample_.size()) return {};
  return std::span<float>(value_area_).subspan(first_sample_[index], first_sample_[index + 1] - first_sample_[index]);
}

std::span<const float> CWMP::values(std::size_t index) const {
  if (index + 1 >= first_sample_.size()) return {};
  return std::span<const float>(value_area_)
      .subspan(first_sample_[index], first_sample_[index + 1] - first_sample_[index]);
}

std::span<const u16> CWMP::raw_words(std::size_t index) const {
  if (is_derived(index) || index + 1 >= first_sample_.size()) return {};
  return std::span<const u16>(raw_area_).subspan(first_sample_[index], first_sample_[index + 1] - first_sample_[index]);
}

u32 CWMP::function_id(std::size_t index) const {
  return configuration_.has_function_ids() ? extensions_[index].function_id() : 0;
}

u32 CWMP::second_function_id(std::size_t index) const {
  return configuration_.has_function_ids() ? extensions_[index].second_function_id() : 0;
}

void CWMP::measure_runs() {
  std::vector<WmpRunSpan> spans(runs_.size());
  std::unordered_map<u16, std::size_t> rows;
  for (std::size_t i = 0; i < runs_.size(); ++i) {
    spans[i].run = runs_[i].number;
    rows.emplace(runs_[i].number, i);
  }
  std::vector<bool> begun(runs_.size());
  for (const WmpLapRecord& lap : laps_) {
    const auto row = rows.find(lap.run());
    if (row == rows.end()) continue;
    WmpRunSpan& span = spans[row->second];
    if (!begun[row->second]) span.start_ms = lap.start_ms();
    begun[row->second] = true;
    span.length_ms = lap.start_ms() - span.start_ms + lap.time_ms();
  }
  run_spans_ = std::move(spans);
}

void CWMP::shape_tables() {
  extensions_.resize(channels_.size());
  statistics_.assign(channels_.size(), WmpChannelStatistics());
  const std::size_t stated = static_cast<std::size_t>(std::max<i16>(header_.logged_count(), 0));
  logged_count_ = std::min(stated, channels_.size());
}

void CWMP::make_value_area() {
  first_sample_.assign(1, 0);
  first_sample_.reserve(channels_.size() + 1);
  for (const WmpChannelRecord& record : channels_)
    first_sample_.push_back(first_sample_.back() + record.sample_count());
  value_area_.assign(first_sample_.back(), 0.0F);
}

void CWMP::take_raw_area(std::vector<u16> words) {
  raw_area_ = std::move(words);
  raw_area_.resize(first_sample_[logged_count_]);
}

void CWMP::update_rate(std::size_t index) {
  const SampleRate rate = sample_rate_of(channels_[index].rate_index());
  statistics_[index].period_ms = rate.period_ms;
  statistics_[index].frequency_hz = rate.frequency_hz;
}

bool CWMP::append_channel(const WmpChannelRecord& record, const WmpChannelExtension& extension) {
  if (header_.raw_area_size() == 0 || header_.value_area_size() == 0) return false;
  if (channels_.size() >= kMostChannels || first_sample_.size() != channels_.size() + 1) return false;
  const u32 frequency = sample_rate_of(record.rate_index()).frequency_hz;
  const u64 count = added_sample_count(frequency);
  const std::size_t row = channels_.size();
  value_area_.resize(first_sample_.back() + static_cast<std::size_t>(count), 0.0F);
  channels_.push_back(record);
  extensions_.push_back(extension);
  statistics_.emplace_back();
  first_sample_.push_back(value_area_.size());
  channels_.back().set_sample_count(static_cast<u32>(count));
  update_rate(row);
  statistics_.back().display_minimum = record.display_minimum();
  statistics_.back().display_maximum = record.display_maximum();

  header_.set_channel_count(static_cast<i16>(channels_.size()));
  header_.set_derived_count(static_cast<i16>(channels_.size() - logged_count_));
  header_.set_value_area_size(header_.value_area_size() + static_cast<u32>(sizeof(float) * count));
  update_file_length();
  changed_ = true;
  rebuild_measures();
  return true;
}

void CWMP::remove_channel(std::size_t index) {
  const auto row = static_cast<std::ptrdiff_t>(index);
  const std::size_t first = first_sample_[index];
  const std::size_t count = first_sample_[index + 1] - first;
  value_area_.erase(value_area_.begin() + static_cast<std::ptrdiff_t>(first),
                    value_area_.begin() + static_cast<std::ptrdiff_t>(first + count));
  first_sample_.erase(first_sample_.begin() + row + 1);
  for (std::size_t i = index + 1; i < first_sample_.size(); ++i) first_sample_[i] -= count;
  channels_.erase(channels_.begin() + row);
  extensions_.erase(extensions_.begin() + row);
  statistics_.erase(statistics_.begin() + row);

  const i16 reference = header_.reference_speed();
  const i16 removed = static_cast<i16>(index);
  if (reference == removed) header_.set_reference_speed(-1);
  if (reference > removed) header_.set_reference_speed(static_cast<i16>(reference - 1));
  header_.set_channel_count(static_cast<i16>(channels_.size()));
  header_.set_derived_count(static_cast<i16>(channels_.size() - logged_count_));
  update_file_length();
  changed_ = true;
  rebuild_measures();
}

void CWMP::resize_derived_channel(std::size_t index) {
  channels_[index].set_sample_count(0);
  update_rate(index);
  const u64 count = added_sample_count(statistics_[index].frequency_hz);
  channels_[index].set_sample_count(static_cast<u32>(count));

  const std::vector<float> old_values = std::move(value_area_);
  const std::vector<std::size_t> old_first = std::move(first_sample_);
  make_value_area();
  for (std::size_t i = 0; i < channels_.size(); ++i) {
    if (i == index) continue;
    std::copy_n(old_values.begin() + static_cast<std::ptrdiff_t>(old_first[i]), old_first[i + 1] - old_first[i],
                value_area_.begin() + static_cast<std::ptrdiff_t>(first_sample_[i]));
  }
  update_file_length();
  changed_ = true;
  rebuild_measures();
}

void CWMP::rebuild_measures() {
  // Counted over all sessions of the process, so that no two tables ever share a number.
  static std::atomic<u64> tables{0};
  names_version_ = ++tables;
  measures_.clear();
  measures_.reserve(channels_.size());
  for (std::size_t i = 0; i < channels_.size(); ++i) measures_.push_back(std::make_unique<CWMPMisura>(this, i, 0));
}

void CWMP::update_file_length() {
  const u64 channels = stated_channels();
  const u64 laps = stated_laps();
  const u64 raw = header_.raw_area_size();
  u64 length = 0;
  if (header_.version() < 500) {
    length = raw + 510 + WmpChannelRecord::kSize * channels + WmpLapRecord::kSize * laps;
  } else if (header_.version() == 500) {
    length = dump_bytes_ + 65536 + 65536 * ((laps + 4 * (channels + 2)) / 256);
  } else if (header_.version() == 550) {
    length = dump_bytes_ + 196608 + 65536 * ((laps + 8 + 4 * channels) / 256);
  } else {
    length = 2272 + 1056 * channels + 288 * laps + 4128 * u64{configuration_.run_count()} +
             96 * u64{configuration_.extra_count()} + raw;
  }
  header_.set_file_length(static_cast<u32>(std::min<u64>(length, std::numeric_limits<u32>::max())));
}

}  // namespace traguardo
