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

  // Null if the bytes are no descriptor: index, time base, count (groups: index, count), then exactly `count` channel
  // indexes, at least one. The bytes stay where they are and must outlive the descriptor.
  static std::unique_ptr<ChannelDescriptor> Acquisition(std::span<const u8> payload) {
    return Make(payload, kAcquisitionHead, 4);
  }
  static std::unique_ptr<ChannelDescriptor> Group(std::span<const u8> payload) { return Make(payload, kGroupHead, 2); }

  u16 index() const { return load_u16(bytes_.data()); }
  u32 count() const { return static_cast<u32>((bytes_.size() - head_) / 2); }
  u16 channel_index(u32 place) const { return load_u16(bytes_.data() + head_ + std::size_t{2} * place); }
  // Microseconds between two channels of a frame; a group's come all at once.
  u64 step_us() const {
    if (head_ != kAcquisitionHead) return 0;
    switch (load_u16(bytes_.data() + 2)) {
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

  // Looks the channels up again: `by_index` maps a channel index to its entry or null. Called before use whenever the
  // channel table has changed, so that a descriptor never points to an object that is gone.
  template <typename ByIndex>
  void Resolve(ByIndex&& by_index) {
    std::vector<Place> with_bytes;
    std::vector<Place> all;
    data_length_ = 0;
    for (u32 i = 0; i < count(); ++i) {
      const u16 channel = channel_index(i);
      const ChannelEntry* entry = by_index(channel);
      if (entry == nullptr) continue;
      all.push_back({channel, static_cast<u16>(i)});
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
  static constexpr u32 kAcquisitionHead = 6;
  static constexpr u32 kGroupHead = 4;

  static std::unique_ptr<ChannelDescriptor> Make(std::span<const u8> payload, u32 head, u32 count_offset) {
    if (payload.size() < head) return nullptr;
    const u32 stated = load_u16(payload.data() + count_offset);
    if (stated == 0 || payload.size() != std::size_t{2} * stated + head) return nullptr;
    auto descriptor = std::make_unique<ChannelDescriptor>();
    descriptor->bytes_ = payload;
    descriptor->head_ = head;
    return descriptor;
  }

  std::span<const u8> bytes_;
  u32 head_ = 0;
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
