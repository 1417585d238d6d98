// SPDX-License-Identifier: MIT
// Two passes over a dump: the first counts each channel's samples and finds damaged blocks, the second puts the samples
// in their places.
#include "legacy/file/dump_rebuild.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

#include "legacy/file/dump_layout_data.h"
#include "legacy/file/dump_stream.h"
#include "legacy/file/records.h"

namespace traguardo {
namespace {

constexpr std::size_t kPieceSize = 65536;
// What a logger's memory holds; what a file has beyond it is no memory.
constexpr u64 kMostPieces = 512;

// --- Set-up area

constexpr std::size_t kSetUpSize = 65536;
constexpr std::size_t kPrimaryChannels = 24;
constexpr std::size_t kExtendedFlagsAt = 7696;
constexpr std::size_t kExtendedChannels = 64;
constexpr i32 kExtendedFamily = 7;
constexpr std::size_t kFormatWordAt = 192;
constexpr std::size_t kIdentityAt = 32768;
constexpr std::size_t kOldLapTimesAt = 8192;
constexpr std::size_t kOldLapTimes = 255;
constexpr u64 kOldStreamAt = 24576;
constexpr u64 kStreamAt = 65536;

using SetUp = std::span<const u8, kSetUpSize>;

bool has_channel(SetUp set_up, i32 family) {
  const auto in_use = [](std::span<const u8> flags) {
    return std::ranges::any_of(flags, [](u8 flag) { return flag != 0; });
  };
  if (in_use(set_up.first(kPrimaryChannels))) return true;
  return family == kExtendedFamily && in_use(set_up.subspan(kExtendedFlagsAt, kExtendedChannels));
}

bool is_old_format(SetUp set_up) {
  constexpr u32 kFirstNewFormat = 0x10300;
  const u8* word = &set_up[kFormatWordAt];
  return word[3] + u32{256} * word[2] + u32{65536} * word[1] < kFirstNewFormat;
}

const DumpLayoutRow& layout_of(SetUp set_up) {
  WmpIdentityBlock identity;
  std::copy_n(&set_up[kIdentityAt], WmpIdentityBlock::kSize, identity.bytes());
  i32 key = kOtherDeviceLayoutKey;
  for (const DeviceLayoutRow& row : device_layouts()) {
    if (row.device_code == identity.device_code()) key = row.layout_key;
  }
  const std::span<const DumpLayoutRow> layouts = dump_layouts();
  const auto found = std::ranges::find(layouts, key, &DumpLayoutRow::layout_key);
  return found == layouts.end() ? layouts.front() : *found;
}

const ScheduleRow& schedule_of(i32 family) {
  const std::span<const ScheduleRow> rows = schedules();
  const auto found = std::ranges::find(rows, family, &ScheduleRow::family);
  return found == rows.end() ? rows.back() : *found;
}

bool is_primary(u8 entry) {
  return entry < kPrimaryChannels;
}

bool counts(u8 entry, const ScheduleRow& row) {
  constexpr u8 kFirstExtended = 32;
  constexpr u8 kLastExtended = 249;
  return is_primary(entry) || (row.extended && entry >= kFirstExtended && entry <= kLastExtended);
}

// The channel of each sample of one round: the entries of the schedule that count.
std::vector<u8> make_round(SetUp set_up, i32 family) {
  const DumpTable table = layout_of(set_up).schedule;
  const std::span<const u8> entries = set_up.subspan(table.offset, table.length);
  const ScheduleRow& row = schedule_of(family);
  std::size_t length = std::min<std::size_t>(row.length, entries.size());
  const std::size_t long_length = std::min<std::size_t>(row.long_length, entries.size());
  if (std::ranges::any_of(entries.subspan(length, long_length - length), is_primary)) length = long_length;

  std::vector<u8> round;
  for (const u8 entry : entries.first(length)) {
    if (counts(entry, row)) round.push_back(entry);
  }
  return round;
}

// --- First pass

// Laps of the dump, from the samples between them where the logger's own time is wrong or missing.
class LapList {
 public:
  // old_times: of the laps in their order, where the dump has such a table.
  LapList(std::size_t samples_per_second, std::span<const u8> old_times, std::vector<DumpLap>* laps)
      : samples_per_second_(static_cast<double>(samples_per_second)), old_times_(old_times), laps_(laps) {}

  void count_sample() { ++samples_; }
  void end_lap(u8 kind) {
    const std::size_t index = laps_->size();
    add(next_number(), kind, 4 * index + 4 <= old_times_.size() ? load_u32(&old_times_[4 * index]) : 0);
  }
  void lap_record(const DumpLapRecord& record) { add(record.number, record.kind, record.time_ms); }
  void end_last_lap() {
    if (samples_ > 0) add(next_number(), 0, 0);
  }

 private:
  u16 next_number() const { return static_cast<u16>(laps_->empty() ? 1 : laps_->back().number + 1); }

  void add(u16 number, u8 kind, u32 time_ms) {
    constexpr std::size_t kMostLaps = 1023;
    constexpr u8 kFirstSplit = 14;
    constexpr u8 kFirstUnknownKind = 16;
    constexpr u8 kUnknownKind = 10;
    if (kind >= kFirstUnknownKind) kind = kUnknownKind;
    if (kind >= kFirstSplit) return;
    if (laps_->size() < kMostLaps) laps_->push_back({number, kind, agreed_time(time_ms)});
    samples_ = 0;
  }

  u32 agreed_time(u32 time_ms) const {
    constexpr double kTolerance = 500.0;
    if (samples_per_second_ == 0.0) return time_ms;
    const double by_samples = (static_cast<double>(samples_) - 1.5) / samples_per_second_ * 1000.0;
    if (std::fabs(static_cast<double>(time_ms) - by_samples) <= kTolerance) return time_ms;
    return truncate_to_u32(std::max(by_samples, 0.0));
  }

  double samples_per_second_;
  std::span<const u8> old_times_;
  std::vector<DumpLap>* laps_;
  u64 samples_ = 0;  // since the last lap's end
};

// By channel number.
using SampleCounts = std::array<u32, 256>;

class CountingPass {
 public:
  explicit CountingPass(LapList* laps) : laps_(laps) {}

  void begin_block(u32) {}
  void end_block(u32 number, bool sound) {
    constexpr std::size_t kMostBadBlocks = 2000;
    if (sound) return;
    if (bad_blocks_.size() < kMostBadBlocks) {
      bad_blocks_.push_back(number);
    } else {
      bad_blocks_.back() = number;
    }
  }
  void sample(u8 channel, u16) {
    ++counts_[channel];
    laps_->count_sample();
  }
  void end_lap(u8 kind) { laps_->end_lap(kind); }
  void lap_record(const DumpLapRecord& record) { laps_->lap_record(record); }

  const SampleCounts& counts() const { return counts_; }
  // In rising order.
  std::span<const u32> bad_blocks() const { return bad_blocks_; }

 private:
  LapList* laps_;
  SampleCounts counts_{};
  std::vector<u32> bad_blocks_;
};

// --- Second pass

class WritingPass {
 public:
  // bad_blocks: borrowed. words: as many as the counts add up to, up to `most_words`.
  WritingPass(const SampleCounts& counts_of_channels, std::span<const u32> bad_blocks, u64 most_words,
              std::vector<u16>* words)
      : bad_blocks_(bad_blocks) {
    u64 total = 0;
    for (std::size_t channel = 0; channel < places_.size(); ++channel) {
      places_[channel].next = static_cast<std::size_t>(std::min(total, most_words));
      total += counts_of_channels[channel];
      places_[channel].end = static_cast<std::size_t>(std::min(total, most_words));
    }
    words->assign(static_cast<std::size_t>(std::min(total, most_words)), 0);
    words_ = words->data();
  }

  void begin_block(u32 number) {
    while (!bad_blocks_.empty() && bad_blocks_.front() < number) bad_blocks_ = bad_blocks_.subspan(1);
    is_bad_ = !bad_blocks_.empty() && bad_blocks_.front() == number;
  }
  void end_block(u32, bool) {}
  void sample(u8 channel, u16 word) {
    Place& place = places_[channel];
    if (place.next == place.end) return;
    words_[place.next++] = is_bad_ ? u16{0} : word;
  }
  void end_lap(u8) {}
  void lap_record(const DumpLapRecord&) {}

 private:
  struct Place {
    std::size_t next = 0;
    std::size_t end = 0;
  };

  std::span<const u32> bad_blocks_;  // those still to come
  bool is_bad_ = false;
  std::array<Place, std::tuple_size_v<SampleCounts>> places_{};
  u16* words_ = nullptr;
};

// --- Reading

// The logger leaves the rest of its memory erased: a piece that ends so is the last one.
bool has_erased_tail(std::span<const u8> piece) {
  constexpr std::size_t kTailSize = 8192;
  constexpr std::size_t kLongestGap = 255;
  std::size_t in_a_row = 0;
  for (std::size_t i = piece.size() - std::min(piece.size(), kTailSize); i + 1 < piece.size(); i += 2) {
    in_a_row = piece[i] == 0xFF && piece[i + 1] == 0xFF ? in_a_row + 1 : 0;
    if (in_a_row > kLongestGap) return true;
  }
  return false;
}

// Parses what lies from `start` to `end`, piece by piece; gives where the last piece ended.
template <typename Pass>
u64 walk(const CWMPvers500::Reader& reader, u64 start, u64 end, DumpStream<Pass>* stream) {
  std::vector<u8> piece(kPieceSize);
  u64 at = start;
  while (at < end) {
    const std::size_t wanted = static_cast<std::size_t>(std::min<u64>(piece.size(), end - at));
    const std::size_t got = reader(at, piece.data(), wanted);
    const std::span<const u8> whole_words = std::span<const u8>(piece).first(got - got % 2);
    at += got;
    if (!stream->parse(whole_words)) return at;
    if (got < wanted || has_erased_tail(whole_words)) break;
  }
  stream->finish();
  return at;
}

}  // namespace

CWMPvers500::CWMPvers500(Reader reader, u64 length, u64 most_words)
    : reader_(std::move(reader)), length_(length), most_words_(most_words) {}

CWMPvers500::~CWMPvers500() = default;

bool CWMPvers500::Rebuild(i32 family_code, u32* error) {
  std::vector<u8> set_up_bytes(kSetUpSize);
  const std::size_t held = static_cast<std::size_t>(std::min<u64>(length_, kSetUpSize));
  if (held > 0) reader_(0, set_up_bytes.data(), held);
  const SetUp set_up(set_up_bytes.data(), kSetUpSize);
  if (!has_channel(set_up, family_code)) {
    *error = kMsgDumpNoChannels;
    return false;
  }
  const std::vector<u8> round = make_round(set_up, family_code);
  const bool is_old = is_old_format(set_up);
  const u64 start = is_old ? kOldStreamAt : kStreamAt;
  const u64 end = std::min(length_, start + kMostPieces * kPieceSize);
  const std::span<const u8> lap_times = set_up.subspan(kOldLapTimesAt, is_old ? kOldLapTimes * sizeof(u32) : 0);

  laps_.clear();
  LapList lap_list(round.size(), lap_times, &laps_);
  CountingPass counting(&lap_list);
  DumpStream<CountingPass> counted(round, &counting);
  const u64 counted_to = walk(reader_, start, end, &counted);
  lap_list.end_last_lap();

  WritingPass writing(counting.counts(), counting.bad_blocks(), most_words_, &words_);
  DumpStream<WritingPass> written(round, &writing);
  walk(reader_, start, counted_to, &written);
  return true;
}

std::vector<u16> CWMPvers500::take_words() {
  return std::move(words_);
}

}  // namespace traguardo
