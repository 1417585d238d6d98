// SPDX-License-Identifier: MIT
// What the tag CNF lists: the channels, groups and acquisitions that the stream is decoded against.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "logger/channel_descriptor.h"
#include "logger/channel_entry.h"
#include "logger/channel_names.h"
#include "logger/input_file.h"
#include "logger/qlt_channel.h"
#include "logger/tag_decoder.h"
#include "model/parser.h"

namespace traguardo {

class ChannelTable {
 public:
  // All are borrowed: channels and traces are made in the session, lap records go to `laps`, and the tag is read from
  // `input`, of which `size` bytes count. measure: what happens to samples is counted.
  ChannelTable(CParser* session, ILapReceiver* laps, InputFile* input, u32 size, bool measure)
      : session_(*session), laps_(*laps), input_(*input), size_(size), measures_(measure) {}

  // Channels to read; empty for all.
  void set_wanted(std::set<std::string> names) { wanted_ = std::move(names); }
  // Without them the table only tells frames from other bytes.
  void set_keeps_samples(bool keeps) { keeps_samples_ = keeps; }

  // A tag CNF. False only if memory or a store could not be had; bad tags inside are passed over.
  bool Take(const SAtomTag& configuration);
  void Clear();

  CCanaleQLT* channel_at(u16 index) const { return index < by_index_.size() ? by_index_[index].object : nullptr; }
  const ChannelEntry* entry_at(u16 index) const {
    return index < by_index_.size() && by_index_[index].object != nullptr ? &by_index_[index] : nullptr;
  }
  const std::vector<ChannelEntry>& entries() const { return by_index_; }
  // By index; null where there is none.
  const std::vector<std::unique_ptr<CCanaleQLT>>& channels() const { return channels_; }
  const DescriptorTable& acquisitions() const { return acquisitions_; }
  const DescriptorTable& groups() const { return groups_; }
  // The descriptor under an index of one of the two, looked up against the channels as they stand now; null if there is
  // none.
  ChannelDescriptor* find_descriptor(const DescriptorTable& table, u16 index) {
    ChannelDescriptor* const descriptor = table.Find(index);
    return descriptor == nullptr || descriptor->generation == generation_ ? descriptor : resolved(descriptor);
  }

 private:
  ChannelDescriptor* resolved(ChannelDescriptor* descriptor);
  bool GeneraMappeSCanale(const SAtomTag& configuration);
  void take_descriptors(const SAtomTag& configuration);
  enum class Entry { kTaken, kSkipped, kFailed };
  Entry take_channel_record(const ChannelRecord& record, ChannelNames* names);
  Entry take_values(const ChannelRecord& record, std::unique_ptr<CCanaleQLT> object, ChannelNames* names);
  std::unique_ptr<CCanaleQLT> kept_object(const ChannelRecord& record);
  std::unique_ptr<CCanaleQLT> packet_object(const ChannelRecord& record);
  bool give_channel(CCanaleQLT* object, const std::string& name);
  void set_properties(CCanaleQLT* object, const std::string& name);
  void Enter(u16 index, std::unique_ptr<CCanaleQLT> object);
  void assign_converters();
  void assign_converter(CCanaleQLT* object);

  CParser& session_;
  ILapReceiver& laps_;
  InputFile& input_;
  u32 size_;
  bool measures_;
  bool keeps_samples_ = true;
  std::set<std::string> wanted_;
  std::vector<std::unique_ptr<CCanaleQLT>> channels_;
  std::vector<ChannelEntry> by_index_;  // the same, for the decoder
  DescriptorTable acquisitions_;
  DescriptorTable groups_;
  std::set<u16> without_converter_;  // objects that AssignConverters has not looked at yet
  u64 generation_ = 1;               // rises with every change of the channels
  u64 resolved_places_ = 0;          // a claim that costs a file nothing: places of descriptors looked up
};

}  // namespace traguardo
