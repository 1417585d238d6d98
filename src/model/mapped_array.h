// SPDX-License-Identifier: MIT
// A store of records of a key and a value: first in memory, and where they become many in pieces of the session's store
// file.
//
// Windows are 65,536 records long on every platform, so that whatever depends on a window's edge comes out alike
// everywhere. They are counted and nothing else: records go through a small buffer that starts with a few, doubles
// while the store grows, and is emptied into the file. A channel of ten samples costs ten samples, and two thousand
// stores share one file.
#pragma once

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "model/store_file.h"
#include "support/bytes.h"

namespace traguardo {

// The lowest and the highest of some values. Of zeros that differ in their signs the first counts, not-a-numbers don't.
struct ValueBounds {
  float lowest = std::numeric_limits<float>::max();
  float highest = std::numeric_limits<float>::lowest();

  void take(float value) {
    if (value > highest) highest = value;
    if (value < lowest) lowest = value;
  }
  void take(const u8* values, std::size_t count);
};

class MemoryMappedArray {
 public:
  // A window's offset is a 32-bit number in this family of files.
  static constexpr u64 kLargestStore = u64{1} << 32;

  // `file` outlives the store; `largest`: bytes of records that the store ends at.
  explicit MemoryMappedArray(StoreFile* file, u64 largest = kLargestStore);
  MemoryMappedArray(const MemoryMappedArray&) = delete;
  MemoryMappedArray& operator=(const MemoryMappedArray&) = delete;
  ~MemoryMappedArray();

  // Stores a pointer to a new record, null if the store can't grow any more (a full disk, its largest size reached, or
  // closed). Gives 1 if the record is the first of a further window, else 0. The pointer is good until the next call.
  int Aggiungi(u8** record);
  // The same for a record that is there already; false if the store can't grow any more.
  bool Add(u64 key, float value);
  // Room never reaches beyond the current window, so a record that finds room has a predecessor in its window.
  bool has_room() const { return next_ != limit_; }
  // A record of this key costs its value alone.
  bool expects(u64 key) const { return key == expected_ && is_even(); }
  // REQUIRES: has_room(), and that the record's key is expected.
  void take_value(float value) {
    store_f32(next_, value);
    // With hundreds of channels in turn no processor sees by itself that each of them writes on.
    __builtin_prefetch(next_ + kWriteAhead, 1);
    next_ += kValueSize;
    expected_ += step_;
  }
  // The next record begins a window.
  bool is_at_window_edge() const { return Numero() % kRecordsPerWindow == 0; }
  // The record `back` places before the newest one, for back 0 and 1; null if it was never written.
  u8* Recente(u32 back) {
    spread();
    return back < buffered() ? next_ - (std::size_t{back} + 1) * kRecordSize : nullptr;
  }

  u64 Numero() const { return written_ + buffered(); }
  // Copies up to `count` records from number `first` on; gives the number copied. Throws ReadFailure.
  u64 Leggi(u64 first, u64 count, u8* out) const;
  // Where records begin with a key that rises from one to the next: the numbers of records [first, second] among which
  // the first one stands that `is_below` no longer holds of, found without reading any.
  template <typename IsBelow>
  std::pair<u64, u64> bracket(IsBelow&& is_below) const {
    const auto next = std::partition_point(pieces_.begin(), pieces_.end(),
                                           [&](const Piece& piece) { return is_below(piece.first_key); });
    const u64 high = next == pieces_.end() ? Numero() : next->first;
    return {next == pieces_.begin() ? (pieces_.empty() ? 0 : high) : (next - 1)->first + 1, high};
  }
  // Of the values.
  ValueBounds bounds() const;
  // Ends the writing. False if something could not be written, now or earlier; the store is then not to be believed.
  bool Chiudi();
  // Not before a record was refused for want of room.
  bool IsValido() const { return valid_; }

 private:
  static constexpr std::size_t kWriteAhead = 64;
  static constexpr u32 kRecordsPerWindow = platform::kAllocationGranularity;

  // A piece of the file that one channel alone fills ends here, for those who look for a record by its key.
  static constexpr u64 kRecordsPerPiece = 8192;
  static constexpr u32 kKeySize = 8;
  static constexpr u32 kValueSize = 4;
  static constexpr u32 kRecordSize = kKeySize + kValueSize;
  // Far above the time of any frame, and below what could wrap around before a buffer is full.
  static constexpr u64 kHighestEvenKey = u64{1} << 62;
  static constexpr u64 kLargestStep = u64{1} << 40;

  // Records that lie together in the file. Where keys go up by one step from record to record, as the times of most
  // channels do, they are worked out again instead of being written.
  struct Piece {
    u64 first;
    u64 place;
    u64 first_key;
    bool is_even;
    u64 step;  // of an even piece
  };

  bool open_room(int* new_window);
  bool make_room();
  bool enlarge(u32 limit);
  bool write_out(u32 count);
  bool pack(u32 count, u8* values, u64* step) const;
  void gather();
  void spread();
  bool is_even() const { return expected_ != 0; }
  u32 buffered_size() const { return is_even() ? kValueSize : kRecordSize; }
  u64 first_buffered_key() const { return is_even() ? expected_ - buffered() * step_ : load_u64(buffer_.get()); }
  bool goes_on(const Piece& piece) const;
  u64 stored_size(const Piece& piece) const { return piece.is_even ? kValueSize : kRecordSize; }
  static void spread_values(const u8* values, u64 count, u64 key, u64 step, u8* out);
  void read_piece(const Piece& piece, u64 number, u64 count, u8* out) const;
  bool keep_in_memory();
  void release_buffer();
  u32 buffered() const {
    const auto bytes = static_cast<std::size_t>(next_ - buffer_.get());
    return static_cast<u32>(is_even() ? bytes / kValueSize : bytes / kRecordSize);
  }

  // The place of the next record, and the end of what can be handed out without a further thought, which is the end of
  // the buffer or of the window.
  u8* next_ = nullptr;
  u8* limit_ = nullptr;
  // While keys go up by one step, values alone stand in the buffer, and this is the key of the next one; else 0, and
  // whole records stand there.
  u64 expected_ = 0;
  u64 step_ = 0;
  bool valid_;
  bool closed_ = false;
  bool kept_ = false;  // the buffer counts as kept, see KeepInMemory
  u32 capacity_ = 0;   // of the buffer, in records
  // Records that wait for the file. The newest two always stay here, since their owner may still change them.
  std::unique_ptr<u8[]> buffer_;
  u64 written_ = 0;
  ValueBounds written_bounds_;
  std::vector<Piece> pieces_;
  StoreFile* file_;
  const u64 most_records_;
};

// For tests alone: what closed stores may keep in memory while this lives, instead of writing it.
class KeptBudget {
 public:
  explicit KeptBudget(u64 bytes);
  KeptBudget(const KeptBudget&) = delete;
  KeptBudget& operator=(const KeptBudget&) = delete;
  ~KeptBudget();

 private:
  u64 before_;
};

}  // namespace traguardo
