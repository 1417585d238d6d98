// SPDX-License-Identifier: MIT
// One channel of the merged view: the parts that the readers contribute under one name.
#pragma once

#include <string>
#include <vector>

#include "model/parsed_channel.h"
#include "support/platform/platform.h"

namespace traguardo {

class CSuperChannel {
 public:
  // from, to: the common axis, microseconds.
  CSuperChannel(std::string name, u64 from, u64 to) : name_(std::move(name)), from_(from), to_(to) {}
  virtual ~CSuperChannel() = default;

  // One array on a regular grid over the whole axis, *count points longer than that. The block comes from `heap` and
  // belongs to the caller. A stretch where the channel has no part stays 0. step 0 is no valid argument: false.
  virtual bool GetValoriEvery(platform::HeapHandle heap, u64 step, float** out, u32* count);
  virtual bool ContaValoriEvery(u64 step, u32* count) const;
  // The parts' records one behind the other.
  virtual u64 GetRecord(SChannelRecord* out, u64 capacity);
  // All samples, times in seconds; `count` must be exactly the number of samples, else 0 and nothing written.
  virtual u32 GetValori(double* times, double* values, int count);
  // The samples with from <= time < to; `count` must be exactly their number.
  virtual u32 GetValoriRange(u64 from, u64 to, double* times, double* values, int count);

  const std::string& GetNome() const { return name_; }
  // Units of the first part; empty without one.
  const std::string& GetUnita() const;
  u64 GetNumValori();
  u64 GetNumValoriRange(u64 from, u64 to);
  // The channel stays its reader's. offset, length: the reader's stretch of the axis.
  void AddParte(CParsedChannel* channel, u64 offset, u64 length) { parts_.push_back({offset, length, channel}); }
  u64 GetDa() const { return from_; }
  u64 GetA() const { return to_; }
  // The highest frequency among the parts, Hz; 0 if none has one.
  float GetFrequenzaMassima() const;

 private:
  struct Parte {
    u64 offset;
    u64 length;
    CParsedChannel* channel;
  };

  std::string name_;
  u64 from_;
  u64 to_;
  std::vector<Parte> parts_;
};

}  // namespace traguardo
