// SPDX-License-Identifier: MIT
#include "model/parsed_channel.h"

#include <algorithm>
#include <memory>
#include <tuple>
#include <utility>

#include "support/event_log.h"

namespace traguardo {

namespace {

constexpr double kSecondsPerMicrosecond = 1e-6;
constexpr u32 kValueAt = 8;
// Records that a range is read in at a time.
constexpr u64 kReadAhead = 4096;

// Walks the records of a store from the first on, a piece at a time. `more` is false behind the last.
class RecordCursor {
 public:
  RecordCursor(const MemoryMappedArray& store, u64 shift)
      : store_(store), shift_(shift), piece_(new u8[kReadAhead * SChannelRecord::kSize]) {
    Advance();
  }

  bool more() const { return more_; }
  u64 time() const { return time_; }
  float value() const { return value_; }

  void Advance() {
    if (left_ == 0 && !NextPiece()) {
      more_ = false;
      return;
    }
    time_ = load_u64(next_) + shift_;
    value_ = load_f32(next_ + kValueAt);
    next_ += SChannelRecord::kSize;
    --left_;
  }

 private:
  bool NextPiece() {
    next_ = piece_.get();
    left_ = store_.Leggi(read_, kReadAhead, piece_.get());
    read_ += left_;
    return left_ != 0;
  }

  const MemoryMappedArray& store_;
  const u64 shift_;
  std::unique_ptr<u8[]> piece_;
  const u8* next_ = nullptr;
  u64 read_ = 0;
  u64 left_ = 0;
  bool more_ = true;
  u64 time_ = 0;
  float value_ = 0;
};

struct Sample {
  u64 time;
  float value;
};

// (t - P.time) * (C.value - P.value) / (C.time - P.time) + P.value in doubles. Differences of times keep their
// sign: where a channel's times don't ascend, t and C may lie before P.
double interpolated(const Sample& p, const Sample& c, u64 t) {
  if (c.time == p.time) return static_cast<double>(p.value);
  const double elapsed = t >= p.time ? static_cast<double>(t - p.time) : -static_cast<double>(p.time - t);
  const double span = c.time >= p.time ? static_cast<double>(c.time - p.time) : -static_cast<double>(p.time - c.time);
  return elapsed * (static_cast<double>(c.value) - static_cast<double>(p.value)) / span + static_cast<double>(p.value);
}

u64 grid_points(u64 step, u64 from, u64 to, u32 count) {
  return step == 0 ? 0 : std::min<u64>((to - from) / step, count);
}

void zero_grid(u64 step, u64 from, u64 to, float* buffer, u32 count) {
  std::fill_n(buffer, grid_points(step, from, to, count), 0.0F);
}

// The walk that both ways of resampling share. `value_at(P, C, t)` gives the value of a grid point.
template <typename ValueAt>
void resample(const MemoryMappedArray& store, u64 shift, u64 step, u64 from, u64 to, float* buffer, u32 count,
              ValueAt&& value_at) {
  RecordCursor cursor(store, shift);
  if (step == 0 || !cursor.more()) return;
  const u64 points = grid_points(step, from, to, count);
  Sample p{cursor.time(), cursor.value()};
  Sample c = p;
  const auto advance_to = [&](u64 t) {
    while (c.time < t) {
      p = c;
      cursor.Advance();
      if (!cursor.more()) return false;
      c = {cursor.time(), cursor.value()};
    }
    return true;
  };
  // Records that end before the grid begins leave it zero.
  if (!advance_to(from)) return;
  u64 t = from;
  for (u64 i = 0; i < points; ++i) {
    buffer[i] = value_at(p, c, t);
    t += step;
    if (i + 1 < points && !advance_to(t)) {
      std::fill(buffer + i + 1, buffer + points, buffer[i]);
      return;
    }
  }
}

}  // namespace

CParsedChannel::CParsedChannel(std::string name, StoreFile* file, bool keep_constant)
    : keep_constant_(keep_constant), store_(file), name_(std::move(name)) {}

bool CParsedChannel::ChiudiStore() {
  return store_.Chiudi();
}

CParsedChannel::Esito CParsedChannel::add_out_of_step(u64 time, float value) {
  if (!store_.has_room()) return add_at_an_edge(time, value);
  if (time <= last_record_time_) return kRefused;
  if (keep_constant_ && is_repeated(value)) return merge(time);
  store_.Add(time, value);
  keep_last(time, value);
  return kStored;
}

// The way of a sample that finds no room in the store's buffer: often the first of a window.
CParsedChannel::Esito CParsedChannel::add_at_an_edge(u64 time, float value) {
  if (store_.is_at_window_edge()) {
    // The new record has no predecessor to be measured against.
    last_time_ = highest_time();
    if (has_samples_ && time <= last_time_) times_ascend_ = false;
    forget_last();
  } else if (has_last_) {
    if (time <= last_record_time_) return kRefused;
    if (keep_constant_ && is_repeated(value)) return merge(time);
  }
  if (!store_.Add(time, value)) {
    last_time_ = highest_time();
    forget_last();
    TRAGUARDO_LOG("CParsedChannel::AddValore", "%s [%d] ERROR = Can't alloc mem for channel\n");
    return kOutOfMemory;
  }
  if (!has_last_) first_time_ = std::min(first_time_, time);
  has_samples_ = true;
  keep_last(time, value);
  return kStored;
}

bool CParsedChannel::AddValori(u64 first_time, u64 step, u32 count, const float* values) {
  if (values == nullptr || count == 0) return true;
  bool good = true;
  if (step == 0 || (has_samples_ && first_time <= highest_time())) times_ascend_ = false;
  u64 time = first_time;
  for (u32 i = 0; i < count; ++i) {
    if (!store_.Add(time, values[i])) {
      TRAGUARDO_LOG("CParsedChannel::AddValori", "%s [%d] ERROR = Can't alloc mem for channel\n");
      good = false;
      continue;
    }
    keep_last(time, values[i]);
    previous_value_ = kNone;
    has_samples_ = true;
    if (time + step < time) times_ascend_ = false;
    time += step;
  }
  // One step past the last sample.
  last_time_ = std::max(highest_time(), first_time + count * step);
  first_time_ = std::min(first_time_, first_time);
  return good;
}

bool CParsedChannel::ContaValoriEvery(u64 step, u64 from, u64 to, u32* count) {
  if (step != 0 && GetNumValori() != 0) *count += static_cast<u32>((to - from) / step);
  return true;
}

u32 CParsedChannel::GetValori(double* times, double* values, int count) {
  const u64 samples = store_.Numero();
  if (count < 0 || static_cast<u64>(count) < samples) return 0;
  const std::unique_ptr<u8[]> piece(new u8[std::min(samples, kReadAhead) * SChannelRecord::kSize]);
  u64 written = 0;
  while (const u64 got = store_.Leggi(written, kReadAhead, piece.get())) {
    const u8* record = piece.get();
    for (u64 i = 0; i < got; ++i, ++written, record += SChannelRecord::kSize) {
      times[written] = static_cast<double>(load_u64(record) + time_shift_) * kSecondsPerMicrosecond;
      values[written] = static_cast<double>(load_f32(record + kValueOffset));
    }
  }
  return static_cast<u32>(written);
}

// The first record whose time is not below `time`. REQUIRES: times_ascend_.
u64 CParsedChannel::first_not_below(u64 time) const {
  const auto is_below = [&](u64 stored) { return stored + time_shift_ < time; };
  u64 low = 0;
  u64 high = 0;
  std::tie(low, high) = store_.bracket(is_below);
  // Below this many records one read is cheaper than several.
  constexpr u64 kReadAtOnce = 128;
  u8 bytes[kReadAtOnce * SChannelRecord::kSize];
  while (high - low > kReadAtOnce) {
    const u64 middle = low + (high - low) / 2;
    store_.Leggi(middle, 1, bytes);
    if (is_below(load_u64(bytes))) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  const u64 count = store_.Leggi(low, high - low, bytes);
  u64 below = 0;
  while (below < count && is_below(load_u64(bytes + below * SChannelRecord::kSize))) ++below;
  return low + below;
}

// Calls visit(index, record bytes) for the samples with from <= time < to, up to the first not below `to` and to `most`
// of them. Where times ascend the slice is searched for, so its cost grows with the slice; the plain walk gives the
// same.
template <typename Visitor>
void CParsedChannel::visit_range(u64 from, u64 to, u64 most, Visitor&& visit) {
  u64 first = 0;
  u64 last = store_.Numero();
  if (times_ascend_) {
    first = first_not_below(from);
    last = to <= from ? first : std::max(first, first_not_below(to));
  }
  if (first == last) return;
  const std::unique_ptr<u8[]> piece(new u8[std::min(last - first, kReadAhead) * SChannelRecord::kSize]);
  u64 found = 0;
  for (u64 at = first; at < last;) {
    const u64 got = store_.Leggi(at, std::min(last - at, kReadAhead), piece.get());
    for (u64 i = 0; i < got; ++i) {
      const u8* record = piece.get() + i * SChannelRecord::kSize;
      const u64 time = load_u64(record) + time_shift_;
      if (time >= to || found == most) return;
      if (time < from) continue;
      visit(found++, record);
    }
    at += got;
  }
}

u32 CParsedChannel::GetValoriRange(u64 from, u64 to, double* times, double* values, int count) {
  u32 written = 0;
  visit_range(from, to, count < 0 ? 0 : static_cast<u64>(count), [&](u64 index, const u8* record) {
    times[index] = static_cast<double>(load_u64(record) + time_shift_) * kSecondsPerMicrosecond;
    values[index] = static_cast<double>(load_f32(record + kValueOffset));
    written = static_cast<u32>(index + 1);
  });
  return written;
}

u64 CParsedChannel::GetNumValoriRange(u64 from, u64 to) {
  if (times_ascend_) {
    const u64 first = first_not_below(from);
    return to <= from ? 0 : std::max(first, first_not_below(to)) - first;
  }
  u64 found = 0;
  visit_range(from, to, std::numeric_limits<u64>::max(), [&](u64 index, const u8*) { found = index + 1; });
  return found;
}

bool CParsedChannel::GetValoriEvery(u64 step, u64 from, u64 to, float* buffer, u32 offset, u32 count) {
  std::fill(buffer + offset, buffer + offset + count, 0.0F);
  if (step == 0) return true;
  return hold_last_value_ ? GetValoriEveryHold(step, from, to, buffer, offset, count)
                          : GetValoriEveryLineare(step, from, to, buffer, offset, count);
}

bool CParsedChannel::GetValoriEveryHold(u64 step, u64 from, u64 to, float* buffer, u32 offset, u32 count) {
  zero_grid(step, from, to, buffer + offset, count);
  resample(store_, time_shift_, step, from, to, buffer + offset, count,
           [](const Sample& p, const Sample&, u64) { return p.value; });
  return true;
}

bool CParsedChannel::GetValoriEveryLineare(u64 step, u64 from, u64 to, float* buffer, u32 offset, u32 count) {
  zero_grid(step, from, to, buffer + offset, count);
  resample(store_, time_shift_, step, from, to, buffer + offset, count,
           [](const Sample& p, const Sample& c, u64 t) { return static_cast<float>(interpolated(p, c, t)); });
  return true;
}

u64 CParsedChannel::GetRecord(SChannelRecord* out, u64 capacity) {
  const u64 samples = store_.Numero();
  if (capacity < samples) return 0;
  RecordCursor cursor(store_, time_shift_);
  u64 copied = 0;
  for (; copied < samples && cursor.more(); ++copied, cursor.Advance()) {
    store_u64(out[copied].bytes.data(), cursor.time());
    store_f32(out[copied].bytes.data() + kValueOffset, cursor.value());
  }
  return copied;
}

void CParsedChannel::TraslaTempi(u64 from, u64 to) {
  const u64 distance = to - from;
  time_shift_ += distance;
  last_time_ = highest_time();
  forget_last();
  first_time_ += distance;
  last_time_ += distance;
  // Times that wrap in the middle of a channel no longer ascend.
  if (first_time_ > last_time_) times_ascend_ = false;
}

float CParsedChannel::GetFrequenza() const {
  return period_ == 0 ? 0.0F : static_cast<float>(1.0 / (static_cast<double>(period_) * kSecondsPerMicrosecond));
}

}  // namespace traguardo
