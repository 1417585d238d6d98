// SPDX-License-Identifier: MIT
// The channels of an (A or (G frame, in the order of their samples.
#pragma once

#include <map>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "logger/channel_entry.h"

namespace traguardo {

class ChannelDescriptor {
 public:
  // A place of the list that has a channel. Kept small: a file may name a channel in two bytes as often as it likes.
  struct Place {
    u16 channel;
    u16 number;  // place in the list, counting those without a channel
  };

  // Head and 65,535 channel indexes.
  static constexpr u32 kLargestSize = 6 + 2 * 65535;

  // Null if the bytes are no descriptor: index, time base, count (groups: index, count), then exactly `count` channel
  // indexes, at least one. `is_known` tells which of them stand in the channel table: a place whose channel comes later
  // stays without one for good, since the logger that wrote the descriptor knew of none.
  template <typename IsKnown>
  static std::unique_ptr<ChannelDescriptor> Acquisition(std::span<const u8> payload, IsKnown&& is_known) {
    constexpr u32 kHead = 6;
    auto descriptor = Make(payload, kHead, 4, is_known);
    if (descriptor != nullptr) descriptor->step_us_ = step_of(load_u16(payload.data() + 2));
    return descriptor;
  }
  template <typename IsKnown>
  static std::unique_ptr<ChannelDescriptor> Group(std::span<const u8> payload, IsKnown&& is_known) {
    constexpr u32 kHead = 4;
    return Make(payload, kHead, 2, is_known);
  }

  u16 index() const { return index_; }
  u32 count() const { return count_; }
  // Microseconds between two channels of a frame; a group's come all at once.
  u64 step_us() const { return step_us_; }
  // The places that had a channel when the descriptor was read.
  const std::vector<Place>& known_places() const { return known_; }

  // Looks the channels up again: `by_index` maps a channel index to its entry or null. Called before use whenever the
  // channel table has changed, so that a descriptor never points to an object that is gone.
  template <typename ByIndex>
  void Resolve(ByIndex&& by_index) {
    std::vector<Place> with_bytes;
    std::vector<Place> all;
    data_length_ = 0;
    for (const Place& place : known_) {
      const ChannelEntry* entry = by_index(place.channel);
      if (entry == nullptr) continue;
      all.push_back(place);
      data_length_ += entry->sample_size;
      if (entry->sample_size != 0) with_bytes.push_back(all.back());
    }
    all.shrink_to_fit();
    places_ = std::move(all);
    has_empty_places_ = with_bytes.size() != places_.size();
    with_bytes_.clear();
    if (has_empty_places_) {
      with_bytes.shrink_to_fit();
      with_bytes_ = std::move(with_bytes);
    }
  }
  const std::vector<Place>& places() const { return places_; }
  // The places whose samples take bytes.
  const std::vector<Place>& places_with_bytes() const { return has_empty_places_ ? with_bytes_ : places_; }
  u32 missing() const { return count() - static_cast<u32>(places_.size()); }
  u64 data_length() const { return data_length_; }
  u64 empty_places() const { return has_empty_places_ ? places_.size() - with_bytes_.size() : 0; }

  // The state of the channel table that it was resolved against.
  u64 generation = 0;

 private:
  static u64 step_of(u16 time_base) {
    switch (time_base) {
      case 100:
        return 1'000'000;
      case 103:
        return 1'000;
      case 106:
        return 1;
      default:
        return 0;
    }
  }

  template <typename IsKnown>
  static std::unique_ptr<ChannelDescriptor> Make(std::span<const u8> payload, u32 head, u32 count_offset,
                                                 IsKnown&& is_known) {
    if (payload.size() < head) return nullptr;
    const u32 stated = load_u16(payload.data() + count_offset);
    if (stated == 0 || payload.size() != std::size_t{2} * stated + head) return nullptr;
    auto descriptor = std::make_unique<ChannelDescriptor>();
    descriptor->index_ = load_u16(payload.data());
    descriptor->count_ = stated;
    for (u32 i = 0; i < stated; ++i) {
      const u16 channel = load_u16(payload.data() + head + std::size_t{2} * i);
      if (is_known(channel)) descriptor->known_.push_back({channel, static_cast<u16>(i)});
    }
    descriptor->known_.shrink_to_fit();
    return descriptor;
  }

  u16 index_ = 0;
  u32 count_ = 0;
  u64 step_us_ = 0;
  std::vector<Place> known_;
  std::vector<Place> places_;
  std::vector<Place> with_bytes_;  // only where some places have none
  bool has_empty_places_ = false;
  u64 data_length_ = 0;
};

// Descriptors by their index. The first under an index stays.
class DescriptorTable {
 public:
  void Enter(std::unique_ptr<ChannelDescriptor> descriptor) {
    const u16 index = descriptor->index();
    if (by_index_.size() <= index) by_index_.resize(std::size_t{index} + 1, nullptr);
    if (by_index_[index] != nullptr) return;
    by_index_[index] = descriptor.get();
    descriptors_[index] = std::move(descriptor);
  }
  // Null for an index without a descriptor.
  ChannelDescriptor* Find(u16 index) const { return index < by_index_.size() ? by_index_[index] : nullptr; }
  // In the order of their indexes.
  const std::map<u16, std::unique_ptr<ChannelDescriptor>>& descriptors() const { return descriptors_; }
  void Clear() {
    by_index_.clear();
    descriptors_.clear();
  }

 private:
  std::map<u16, std::unique_ptr<ChannelDescriptor>> descriptors_;
  std::vector<ChannelDescriptor*> by_index_;
};

}  // namespace traguardo
