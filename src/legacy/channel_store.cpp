// SPDX-License-Identifier: MIT
#include "legacy/channel_store.h"

#include <algorithm>
#include <utility>

#include "legacy/file/sample_rate.h"
#include "legacy/file/table_repair.h"

namespace traguardo {

void ChannelStore::clear() {
  raw_area_.clear();
  value_area_.clear();
  first_sample_.clear();
}

void ChannelStore::lay_out(std::vector<u16> words) {
  make_value_area();
  raw_area_ = std::move(words);
  raw_area_.resize(first_sample_[tables_->logged_count]);
}

void ChannelStore::make_value_area() {
  first_sample_.assign(1, 0);
  first_sample_.reserve(tables_->channels.size() + 1);
  for (const WmpChannel& channel : tables_->channels) {
    first_sample_.push_back(first_sample_.back() + channel.record.sample_count());
  }
  value_area_.assign(first_sample_.back(), 0.0F);
}

std::span<float> ChannelStore::values(std::size_t channel) {
  if (!has_stretch(channel)) return {};
  return std::span(value_area_).subspan(first_sample_[channel], length_of(channel));
}

std::span<const float> ChannelStore::values(std::size_t channel) const {
  if (!has_stretch(channel)) return {};
  return std::span(value_area_).subspan(first_sample_[channel], length_of(channel));
}

std::span<const u16> ChannelStore::raw_words(std::size_t channel) const {
  if (tables_->is_derived(channel) || !has_stretch(channel)) return {};
  return std::span(raw_area_).subspan(first_sample_[channel], length_of(channel));
}

bool ChannelStore::append(const WmpChannelRecord& record, const WmpChannelExtension& extension) {
  // The header counts channels in 16 signed bits.
  constexpr std::size_t kMostChannels = 32767;
  WmpMainHeader& header = tables_->header;
  std::vector<WmpChannel>& channels = tables_->channels;
  if (header.raw_area_size() == 0 || header.value_area_size() == 0) return false;
  if (channels.size() >= kMostChannels || first_sample_.size() != channels.size() + 1) return false;
  const u64 count = added_sample_count(*tables_, sample_rate_of(record.rate_index()).frequency_hz);
  value_area_.resize(first_sample_.back() + static_cast<std::size_t>(count), 0.0F);
  first_sample_.push_back(value_area_.size());

  WmpChannel& added = channels.emplace_back();
  added.record = record;
  added.extension = extension;
  added.record.set_sample_count(static_cast<u32>(count));
  added.update_rate();
  added.statistics.display_minimum = record.display_minimum();
  added.statistics.display_maximum = record.display_maximum();
  header.set_value_area_size(header.value_area_size() + static_cast<u32>(sizeof(float) * count));
  count_channels();
  return true;
}

void ChannelStore::remove(std::size_t channel) {
  const auto row = static_cast<std::ptrdiff_t>(channel);
  const std::size_t count = length_of(channel);
  const auto first = value_area_.begin() + static_cast<std::ptrdiff_t>(first_sample_[channel]);
  value_area_.erase(first, first + static_cast<std::ptrdiff_t>(count));
  first_sample_.erase(first_sample_.begin() + row + 1);
  for (std::size_t i = channel + 1; i < first_sample_.size(); ++i) first_sample_[i] -= count;
  tables_->channels.erase(tables_->channels.begin() + row);

  WmpMainHeader& header = tables_->header;
  const i16 reference = header.reference_speed();
  const i16 removed = static_cast<i16>(channel);
  if (reference == removed) header.set_reference_speed(-1);
  if (reference > removed) header.set_reference_speed(static_cast<i16>(reference - 1));
  count_channels();
}

void ChannelStore::resize(std::size_t channel) {
  WmpChannel& resized = tables_->channels[channel];
  resized.record.set_sample_count(0);
  resized.update_rate();
  resized.record.set_sample_count(static_cast<u32>(added_sample_count(*tables_, resized.statistics.frequency_hz)));

  const std::vector<float> old_values = std::move(value_area_);
  const std::vector<std::size_t> old_first = std::move(first_sample_);
  make_value_area();
  for (std::size_t i = 0; i < tables_->channels.size(); ++i) {
    if (i == channel) continue;
    const auto from = old_values.begin() + static_cast<std::ptrdiff_t>(old_first[i]);
    std::copy_n(from, old_first[i + 1] - old_first[i], values(i).begin());
  }
  update_file_length(tables_);
  tables_->changed = true;
}

void ChannelStore::count_channels() {
  tables_->header.set_channel_count(static_cast<i16>(tables_->channels.size()));
  tables_->header.set_derived_count(static_cast<i16>(tables_->channels.size() - tables_->logged_count));
  update_file_length(tables_);
  tables_->changed = true;
}

}  // namespace traguardo
