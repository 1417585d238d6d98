// SPDX-License-Identifier: MIT
// The samples of a legacy session: raw words of the logged channels, and a value area in which every channel of the
// table has its stretch. Rows that are added, removed or resized move both.
#pragma once

#include <span>
#include <vector>

#include "legacy/file/wmp_tables.h"

namespace traguardo {

class ChannelStore {
 public:
  // Borrowed, for the life of the object.
  explicit ChannelStore(WmpTables* tables) : tables_(tables) {}

  void clear();
  // Zeroed values for all channels of the table, as many as their records say. words: those of the logged channels, one
  // channel behind the other; what they lack of the counts reads as 0.
  void lay_out(std::vector<u16> words);

  // As many as the record's sample count says, or none before lay_out().
  std::span<float> values(std::size_t channel);
  std::span<const float> values(std::size_t channel) const;
  // Exactly as many as the channel has values; none for a derived channel.
  std::span<const u16> raw_words(std::size_t channel) const;

  // A derived channel behind the last one, with its statistics and zeroed values; counts and file length follow. The
  // record's sample count is set from its rate. False, with nothing changed, if the file's sample areas are empty or
  // the table is full.
  bool append(const WmpChannelRecord& record, const WmpChannelExtension& extension);
  // REQUIRES, for both: a derived channel.
  void remove(std::size_t channel);
  // Period and frequency, sample count and values of a channel whose rate index has changed; its values are zero then.
  void resize(std::size_t channel);

 private:
  void make_value_area();
  bool has_stretch(std::size_t channel) const { return channel + 1 < first_sample_.size(); }
  std::size_t length_of(std::size_t channel) const { return first_sample_[channel + 1] - first_sample_[channel]; }
  void count_channels();

  WmpTables* tables_;
  std::vector<u16> raw_area_;
  std::vector<float> value_area_;
  // Where each channel begins, in both areas, and where the last one ends.
  std::vector<std::size_t> first_sample_;
};

}  // namespace traguardo
