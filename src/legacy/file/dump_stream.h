// SPDX-License-Identifier: MIT
// The stream of words behind the set-up area of a logger's memory dump, taken apart word by word: samples in the order
// of the schedule, and between them block marks, checksums and lap records. In constant memory, on pieces of any
// length.
#pragma once

#include <array>
#include <span>

#include "support/bytes.h"

namespace traguardo {

// What stands behind a lap word of the long form.
struct DumpLapRecord {
  u8 kind = 0;
  u16 number = 0;
  u32 time_ms = 0;
};

// Pass is told, in the order of the stream:
//   begin_block(u32 number)              blocks are numbered from 1
//   end_block(u32 number, bool sound)    not for the block in which the stream ends
//   sample(u8 channel, u16 word)
//   end_lap(u8 kind)
//   lap_record(const DumpLapRecord&)
template <typename Pass>
class DumpStream {
 public:
  // Both borrowed. round: the channel of each sample of one round of the schedule; without any, samples are dropped.
  DumpStream(std::span<const u8> round, Pass* pass) : round_(round), pass_(pass) { pass_->begin_block(block_); }

  // An even number of bytes. False at the end of the stream: nothing behind it counts.
  bool parse(std::span<const u8> bytes) {
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
      if (!take(bytes[i], bytes[i + 1])) return false;
    }
    return true;
  }

  // The data ends where the stream doesn't.
  void finish() { write_gap(); }

 private:
  // By the high byte of a word.
  static constexpr u8 kMark = 0x90;  // of a block, or of a lap's end
  static constexpr u8 kChecksum = 0xD0;
  static constexpr u8 kForeign = 0xD1;  // words for others
  static constexpr u8 kLapRecord = 0xD2;
  static constexpr u32 kForeignWords = 3;
  static constexpr u32 kLapRecordWords = 5;
  // Erased memory reads as ones. A few such words are samples that were lost, more are the end.
  static constexpr u8 kErased = 0xFF;
  static constexpr u32 kLongestGap = 255;

  bool take(u8 low, u8 high) {
    if (foreign_left_ > 0) {
      --foreign_left_;
      foreign_sum_ += u32{low} + high;
      return true;
    }
    if (record_left_ > 0) {
      take_record_word(low, high);
      return true;
    }
    if (low == kErased && high == kErased) return lengthen_gap();
    if (gap_ > 0) write_gap();
    switch (high) {
      case kMark:
        add(low, high);
        if (low != 0) {
          pass_->end_lap(low);
        } else {
          next_block(position_ == 0);
          position_ = 0;
        }
        return true;
      case kChecksum:
        next_block(fits(low) && position_ == 0);
        position_ = 0;
        restart_sum();
        return true;
      case kForeign:
        add(low, high);
        foreign_left_ = kForeignWords;
        return true;
      case kLapRecord:
        add(low, high);
        lap_kind_ = low;
        record_left_ = kLapRecordWords;
        return true;
      default:
        add(low, high);
        sample(word_of(low, high));
        return true;
    }
  }

  // The last word is a checksum, but a lap record may stand anywhere in a round and doesn't start the schedule over.
  void take_record_word(u8 low, u8 high) {
    --record_left_;
    if (record_left_ > 0) {
      record_[kLapRecordWords - 1 - record_left_] = word_of(low, high);
      add(low, high);
      return;
    }
    constexpr u32 kNumberBits = 0x0FFF;  // the bits above count the splits
    DumpLapRecord record;
    record.kind = lap_kind_;
    record.number = static_cast<u16>(record_[0] & kNumberBits);
    record.time_ms = record_[1] | u32{record_[2]} << 16;
    pass_->lap_record(record);
    next_block(fits(low));
    restart_sum();
  }

  bool lengthen_gap() {
    if (++gap_ <= kLongestGap) return true;
    gap_ = 0;
    return false;
  }

  // The lost samples read as 0, but the logger summed up what stood there.
  void write_gap() {
    for (; gap_ > 0; --gap_) {
      add(kErased, kErased);
      sample(0);
    }
  }

  void sample(u16 word) {
    if (round_.empty()) return;
    pass_->sample(round_[position_], word);
    if (++position_ == round_.size()) position_ = 0;
  }

  void next_block(bool sound) {
    pass_->end_block(block_, sound);
    pass_->begin_block(++block_);
  }

  static u16 word_of(u8 low, u8 high) { return static_cast<u16>(low | high << 8); }

  // Of the sums only the low eight bits count.
  void add(u8 low, u8 high) { sum_ += u32{low} + high; }
  // Whether words for others take part in the sum isn't known of every logger, so either sum will do.
  bool fits(u8 checksum) const {
    return checksum == static_cast<u8>(sum_) || checksum == static_cast<u8>(sum_ + foreign_sum_);
  }
  void restart_sum() {
    sum_ = 0;
    foreign_sum_ = 0;
  }

  std::span<const u8> round_;
  Pass* pass_;
  std::size_t position_ = 0;  // in the round
  u32 block_ = 1;
  u32 sum_ = 0;
  u32 foreign_sum_ = 0;
  u32 foreign_left_ = 0;
  u32 record_left_ = 0;
  u32 gap_ = 0;
  u8 lap_kind_ = 0;
  std::array<u16, kLapRecordWords - 1> record_{};
};

}  // namespace traguardo
