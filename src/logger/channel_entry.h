// SPDX-License-Identifier: MIT
// A channel as the decode loop sees it: what a sample needs, side by side in one line of memory. With a thousand
// channels in turn, each further line of memory that a sample touches costs more than its conversion.
#pragma once

#include <limits>

#include "logger/qlt_channel.h"

namespace traguardo {

struct alignas(64) ChannelEntry {
  static constexpr u32 kSingleHead = 8;  // of a frame of one sample: parenthesis, letter, time, index
  static constexpr u32 kNotPlain = std::numeric_limits<u32>::max();

  ChannelEntry() = default;
  explicit ChannelEntry(CCanaleQLT* channel)
      : object(channel),
        sink(channel->has_bare_reader() ? channel->channel() : nullptr),
        reader(channel->bare_reader()),
        sample_size(channel->sample_size()),
        plain_frame(sink != nullptr && channel->statistics() == nullptr ? kSingleHead + sample_size + 1 : kNotPlain),
        statistics(channel->statistics()) {}

  // One sample, with the file offset that it is reported under.
  CCanaleQLT::Esito Add(u64 time, const u8* sample, u64 offset) const {
    return sink != nullptr ? CCanaleQLT::outcome_of(sink->AddValore(time, reader(sample)))
                           : object->ConvertiAndAddValore(time, sample, offset);
  }

  // `count` samples, one period apart: as CCanaleQLT::ConvertiAndAddValori.
  CCanaleQLT::Esito add_many(u64 time, u32 count, const u8* samples) const {
    if (sink == nullptr) return object->ConvertiAndAddValori(time, count, samples);
    const u64 period = object->record().period_us();
    const SampleReader read = reader;
    const u32 size = sample_size;
    CCanaleQLT::Esito outcome = CCanaleQLT::kBuono;
    for (u32 i = 0; i < count; ++i, samples += size, time += period) {
      const CParsedChannel::Esito one = sink->AddValore(time, read(samples));
      if (one == CParsedChannel::kOutOfMemory) return CCanaleQLT::kMemoriaFinita;
      if (one == CParsedChannel::kRefused) outcome = CCanaleQLT::kRifiutato;
    }
    return outcome;
  }

  CCanaleQLT* object = nullptr;    // null: no such channel
  CParsedChannel* sink = nullptr;  // null: the object itself decides what a sample is
  SampleReader reader;
  u32 sample_size = 0;
  // Bytes of a frame of one sample, where that is nothing but a value to store; else more than any file has.
  u32 plain_frame = kNotPlain;
  SStatMisura* statistics = nullptr;
};

}  // namespace traguardo
