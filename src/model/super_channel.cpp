// SPDX-License-Identifier: MIT
#include "model/super_channel.h"

#include <algorithm>
#include <limits>

#include "support/event_log.h"

namespace traguardo {

namespace {
const std::string kNoUnits;
}

const std::string& CSuperChannel::GetUnita() const {
  return parts_.empty() ? kNoUnits : parts_[0].channel->GetUnita();
}

float CSuperChannel::GetFrequenzaMassima() const {
  float highest = 0;
  for (const Parte& part : parts_) highest = std::max(highest, part.channel->GetFrequenza());
  return highest;
}

u64 CSuperChannel::GetNumValori() {
  u64 sum = 0;
  for (const Parte& part : parts_) sum += part.channel->GetNumValori();
  return sum;
}

u64 CSuperChannel::GetNumValoriRange(u64 from, u64 to) {
  u64 sum = 0;
  for (const Parte& part : parts_) sum += part.channel->GetNumValoriRange(from, to);
  return sum;
}

bool CSuperChannel::GetValoriEvery(platform::HeapHandle heap, u64 step, float** out, u32* count) {
  if (step == 0) return false;
  const u64 points = (to_ - from_) / step + *count;
  float* block = points > std::numeric_limits<u32>::max()
                     ? nullptr
                     : static_cast<float*>(platform::heap_allocate(heap, points * sizeof(float)));
  if (block == nullptr) {
    TRAGUARDO_LOG("CSuperChannel::GetValoriEvery", "%s [%d] ERROR = Can't alloc\n");
    return false;
  }
  *out = block;
  *count = static_cast<u32>(points);
  std::fill(block, block + points, 0.0F);
  bool good = true;
  for (const Parte& part : parts_) {
    const u64 first = part.offset / step;
    if (first >= points) continue;
    const u32 room = static_cast<u32>(points - first);
    good = part.channel->GetValoriEvery(step, part.offset, part.offset + part.length, block, static_cast<u32>(first),
                                        room) &&
           good;
  }
  return good;
}

bool CSuperChannel::ContaValoriEvery(u64 step, u32* count) const {
  if (step != 0) *count += static_cast<u32>((to_ - from_) / step);
  return true;
}

u64 CSuperChannel::GetRecord(SChannelRecord* out, u64 capacity) {
  u64 copied = 0;
  for (const Parte& part : parts_) copied += part.channel->GetRecord(out + copied, capacity - copied);
  return copied;
}

u32 CSuperChannel::GetValori(double* times, double* values, int count) {
  if (static_cast<i64>(count) != static_cast<i64>(GetNumValori())) return 0;
  u32 written = 0;
  for (const Parte& part : parts_) {
    const int capacity = static_cast<int>(part.channel->GetNumValori());
    written += part.channel->GetValori(times + written, values + written, capacity);
  }
  return written;
}

u32 CSuperChannel::GetValoriRange(u64 from, u64 to, double* times, double* values, int count) {
  if (static_cast<i64>(count) != static_cast<i64>(GetNumValoriRange(from, to))) return 0;
  u32 written = 0;
  for (const Parte& part : parts_) {
    // What the sum above counted is the most that all parts together may write, whatever a store says by now.
    written +=
        part.channel->GetValoriRange(from, to, times + written, values + written, count - static_cast<int>(written));
  }
  return written;
}

}  // namespace traguardo
