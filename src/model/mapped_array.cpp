// SPDX-License-Identifier: MIT
#include "model/mapped_array.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>

namespace traguardo {

namespace {

// Buffers of all growing stores together stay near kBudget: below it a store may buffer kLargeBuffer, beyond it only
// kSmallBuffer. Measured: 48 KiB pieces cost a third of what mapped windows cost, 12 KiB pieces little more.
constexpr u64 kBudget = 16U << 20;
constexpr u32 kFirstBuffer = 48;
constexpr u32 kSmallBuffer = 12U << 10;
constexpr u32 kLargeBuffer = 48U << 10;
constexpr u32 kKeptRecords = 2;
// What closed stores may keep in memory together, instead of writing it.
constexpr u64 kKeptBudget = 8U << 20;

// Process-wide: the stores of all open files share the budgets.
std::atomic<u64> g_kept_budget{kKeptBudget};
std::atomic<u64> g_buffered_bytes{0};
std::atomic<u64> g_kept_bytes{0};

}  // namespace

// Four at a time, in two rows. A bound of zero may come from a later zero than the first: that one is looked for.
void ValueBounds::take(const u8* values, std::size_t count) {
  using Four = float __attribute__((vector_size(16)));
  constexpr std::size_t kAtOnce = 2;
  Four low[kAtOnce], high[kAtOnce];
  for (std::size_t row = 0; row < kAtOnce; ++row) {
    low[row] = Four{} + lowest;
    high[row] = Four{} + highest;
  }
  std::size_t i = 0;
  for (; i + 4 * kAtOnce <= count; i += 4 * kAtOnce) {
    Four four[kAtOnce];
    std::memcpy(four, values + i * sizeof(float), sizeof four);
    for (std::size_t row = 0; row < kAtOnce; ++row) {
      low[row] = four[row] < low[row] ? four[row] : low[row];
      high[row] = four[row] > high[row] ? four[row] : high[row];
    }
  }
  ValueBounds all = *this;
  for (std::size_t lane = 0; lane < 4 * kAtOnce; ++lane) {
    all.take(low[lane / 4][lane % 4]);
    all.take(high[lane / 4][lane % 4]);
  }
  for (; i < count; ++i) all.take(load_f32(values + i * sizeof(float)));
  const auto first_equal = [values](float value) {
    if (value != 0) return value;
    const u8* at = values;
    while (load_f32(at) != 0) at += sizeof(float);
    return load_f32(at);
  };
  if (all.lowest < lowest) lowest = first_equal(all.lowest);
  if (all.highest > highest) highest = first_equal(all.highest);
}

MemoryMappedArray::MemoryMappedArray(StoreFile* file, u64 largest)
    : valid_(file != nullptr && file->IsValido()), file_(file), most_records_(largest / kRecordSize) {}

MemoryMappedArray::~MemoryMappedArray() {
  release_buffer();
}

int MemoryMappedArray::Aggiungi(u8** record) {
  *record = nullptr;
  int new_window = 0;
  if (!has_room() && !open_room(&new_window)) return new_window;
  spread();
  *record = next_;
  next_ += kRecordSize;
  return new_window;
}

bool MemoryMappedArray::Add(u64 key, float value) {
  int new_window = 0;
  if (!has_room() && !open_room(&new_window)) return false;
  if (expects(key)) {
    take_value(value);
    return true;
  }
  spread();
  store_u64(next_, key);
  store_f32(next_ + kKeySize, value);
  __builtin_prefetch(next_ + kWriteAhead, 1);
  next_ += kRecordSize;
  return true;
}

// For a record that finds no room: the first of a window, or one that the buffer is too small for.
bool MemoryMappedArray::open_room(int* new_window) {
  if (closed_ || !valid_) return false;
  const u64 number = Numero();
  *new_window = number != 0 && number % kRecordsPerWindow == 0 ? 1 : 0;
  const bool is_full = number == most_records_;
  if (is_full) file_->fail();
  if (is_full || (buffered() == capacity_ && !make_room())) {
    valid_ = false;
    limit_ = next_;
    return false;
  }
  const u64 left_in_window = kRecordsPerWindow - number % kRecordsPerWindow;
  const u64 room = std::min({u64{capacity_} - buffered(), left_in_window, most_records_ - number});
  limit_ = next_ + room * buffered_size();
  return true;
}

bool MemoryMappedArray::make_room() {
  const u32 limit = g_buffered_bytes.load(std::memory_order_relaxed) < kBudget ? kLargeBuffer : kSmallBuffer;
  if (expected_ > kHighestEvenKey) spread();
  const bool may_grow = capacity_ * kRecordSize + kRecordSize <= limit;
  if (!(may_grow && enlarge(limit)) && !(capacity_ > kKeptRecords && write_out(capacity_ - kKeptRecords))) return false;
  gather();
  return true;
}

// Where the buffered keys lie one step apart, keeps the values alone.
void MemoryMappedArray::gather() {
  const u32 count = buffered();
  if (is_even() || count < 2) return;
  u8* const buffer = buffer_.get();
  const u64 first = load_u64(buffer);
  const u64 step = load_u64(buffer + kRecordSize) - first;
  if (first > kHighestEvenKey || step == 0 || step > kLargestStep) return;
  for (u32 i = 2; i < count; ++i) {
    if (load_u64(buffer + std::size_t{i} * kRecordSize) != first + i * step) return;
  }
  for (std::size_t i = 0; i < count; ++i) {
    store_u32(buffer + i * kValueSize, load_u32(buffer + i * kRecordSize + kKeySize));
  }
  next_ = buffer + std::size_t{count} * kValueSize;
  limit_ = next_;
  step_ = step;
  expected_ = first + count * step;
}

// Whole records again, from the last one on.
void MemoryMappedArray::spread() {
  if (!is_even()) return;
  const std::size_t count = buffered();
  const auto room = static_cast<std::size_t>(limit_ - next_) / kValueSize;
  u8* const buffer = buffer_.get();
  u64 key = expected_;
  for (std::size_t i = count; i-- > 0;) {
    key -= step_;
    const u32 value = load_u32(buffer + i * kValueSize);
    store_u64(buffer + i * kRecordSize, key);
    store_u32(buffer + i * kRecordSize + kKeySize, value);
  }
  expected_ = 0;
  next_ = buffer + count * kRecordSize;
  limit_ = next_ + room * kRecordSize;
}

bool MemoryMappedArray::enlarge(u32 limit) {
  const u32 present = capacity_ * kRecordSize;
  const u32 wanted = std::min(limit, std::max(kFirstBuffer, present * 2));
  const u32 records = wanted / kRecordSize;
  std::unique_ptr<u8[]> larger(new (std::nothrow) u8[static_cast<std::size_t>(records) * kRecordSize]);
  if (larger == nullptr) return false;
  const std::size_t kept = static_cast<std::size_t>(next_ - buffer_.get());
  if (kept > 0) std::memcpy(larger.get(), buffer_.get(), kept);
  buffer_ = std::move(larger);
  next_ = buffer_.get() + kept;
  limit_ = next_;
  capacity_ = records;
  g_buffered_bytes += u64{records} * kRecordSize - present;
  return true;
}

// Puts the values of the oldest `count` buffered records side by side. Gives whether their keys lie one step apart.
bool MemoryMappedArray::pack(u32 count, u8* values, u64* step) const {
  const u8* record = buffer_.get();
  u64 key = load_u64(record);
  *step = count < 2 ? 0 : load_u64(record + kRecordSize) - key;
  u64 differences = 0;
  for (u32 i = 0; i < count; ++i) {
    differences |= load_u64(record) ^ key;
    store_u32(values + std::size_t{i} * kValueSize, load_u32(record + kKeySize));
    record += kRecordSize;
    key += *step;
  }
  return differences == 0 && count >= 2;
}

ValueBounds MemoryMappedArray::bounds() const {
  ValueBounds all = written_bounds_;
  const u32 size = buffered_size();
  for (const u8* record = buffer_.get(); record != next_; record += size)
    all.take(load_f32(record + size - kValueSize));
  return all;
}

// Two pieces that lie one behind the other are one, as with a single busy channel.
bool MemoryMappedArray::goes_on(const Piece& piece) const {
  if (pieces_.empty()) return false;
  const Piece& last = pieces_.back();
  const u64 present = written_ - last.first;
  if (present >= kRecordsPerPiece || last.is_even != piece.is_even) return false;
  if (piece.is_even && (last.step != piece.step || last.first_key + present * last.step != piece.first_key))
    return false;
  return last.place + present * stored_size(last) == piece.place;
}

// Writes the oldest `count` buffered records and moves the others to the front.
bool MemoryMappedArray::write_out(u32 count) {
  const std::size_t bytes = std::size_t{count} * buffered_size();
  Piece piece{written_, 0, first_buffered_key(), is_even(), step_};
  u8* const room = file_->room(bytes);
  if (is_even()) {
    std::memcpy(room, buffer_.get(), bytes);
  } else {
    piece.is_even = pack(count, room, &piece.step);
  }
  written_bounds_.take(room, count);
  if (!piece.is_even) std::memcpy(room, buffer_.get(), bytes);
  if (!file_->Append(static_cast<std::size_t>(count * stored_size(piece)), &piece.place)) return false;
  if (!goes_on(piece)) pieces_.push_back(piece);
  const std::size_t kept = static_cast<std::size_t>(next_ - buffer_.get()) - bytes;
  std::memmove(buffer_.get(), buffer_.get() + bytes, kept);
  written_ += count;
  next_ = buffer_.get() + kept;
  limit_ = next_;
  return true;
}

// What fits into the budget of closed stores needs no file, and no more memory than it fills.
bool MemoryMappedArray::keep_in_memory() {
  const u64 bytes = u64{buffered()} * kRecordSize;
  if (g_kept_bytes.fetch_add(bytes) + bytes > g_kept_budget) {
    g_kept_bytes -= bytes;
    return false;
  }
  std::unique_ptr<u8[]> exact(new (std::nothrow) u8[static_cast<std::size_t>(bytes)]);
  if (exact == nullptr) {
    g_kept_bytes -= bytes;
    return false;
  }
  spread();
  std::memcpy(exact.get(), buffer_.get(), static_cast<std::size_t>(bytes));
  const u32 records = buffered();
  release_buffer();
  buffer_ = std::move(exact);
  next_ = buffer_.get() + bytes;
  limit_ = next_;
  capacity_ = records;
  kept_ = true;
  return true;
}

void MemoryMappedArray::release_buffer() {
  (kept_ ? g_kept_bytes : g_buffered_bytes) -= u64{capacity_} * kRecordSize;
  buffer_.reset();
  next_ = nullptr;
  limit_ = nullptr;
  expected_ = 0;
  capacity_ = 0;
  kept_ = false;
}

bool MemoryMappedArray::Chiudi() {
  if (closed_) return valid_;
  closed_ = true;
  if (buffered() == 0) {
    release_buffer();
  } else if (!valid_ || !keep_in_memory()) {
    valid_ = valid_ && write_out(buffered());
    release_buffer();
  }
  pieces_.shrink_to_fit();
  limit_ = next_;
  return valid_;
}

// Values and their keys as records. The values may stand at the end of where the records go.
void MemoryMappedArray::spread_values(const u8* values, u64 count, u64 key, u64 step, u8* out) {
  for (u64 i = 0; i < count; ++i, key += step) {
    const u32 value = load_u32(values + i * kValueSize);
    u8* const record = out + i * kRecordSize;
    store_u64(record, key);
    store_u32(record + kKeySize, value);
  }
}

void MemoryMappedArray::read_piece(const Piece& piece, u64 number, u64 count, u8* out) const {
  const u64 size = stored_size(piece);
  const std::size_t bytes = static_cast<std::size_t>(count * size);
  // The values of an even piece are read to where they end, and spread from the front.
  u8* const stored = out + count * kRecordSize - bytes;
  file_->Read(piece.place + number * size, stored, bytes);
  if (!piece.is_even) return;
  spread_values(stored, count, piece.first_key + number * piece.step, piece.step, out);
}

u64 MemoryMappedArray::Leggi(u64 first, u64 count, u8* out) const {
  const u64 records = Numero();
  if (first >= records) return 0;
  count = std::min(count, records - first);
  u64 left = count;
  auto piece = std::upper_bound(pieces_.begin(), pieces_.end(), first,
                                [](u64 number, const Piece& candidate) { return number < candidate.first; });
  while (left > 0 && first < written_) {
    const u64 end = piece == pieces_.end() ? written_ : piece->first;
    const Piece& here = *(piece - 1);
    const u64 records_here = std::min(left, end - first);
    read_piece(here, first - here.first, records_here, out);
    first += records_here;
    left -= records_here;
    out += records_here * kRecordSize;
    if (piece != pieces_.end()) ++piece;
  }
  if (left > 0) {
    const u64 number = first - written_;
    const u8* const stored = buffer_.get() + static_cast<std::size_t>(number) * buffered_size();
    if (is_even()) {
      spread_values(stored, left, first_buffered_key() + number * step_, step_, out);
    } else {
      std::memcpy(out, stored, static_cast<std::size_t>(left * kRecordSize));
    }
  }
  return count;
}

KeptBudget::KeptBudget(u64 bytes) : before_(g_kept_budget.exchange(bytes)) {}

KeptBudget::~KeptBudget() {
  g_kept_budget = before_;
}

}  // namespace traguardo
