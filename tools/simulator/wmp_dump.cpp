// SPDX-License-Identifier: MIT
#include "simulator/wmp_dump.h"

#include <algorithm>
#include <vector>

#include "failure.h"

namespace traguardo::simulator {

namespace {

// --- Set-up area

constexpr std::size_t kSetUpSize = 65536;
constexpr std::size_t kOldSetUpSize = 24576;
constexpr std::size_t kFormatWordAt = 192;
constexpr std::size_t kScheduleAt = 200;
constexpr std::size_t kScheduleSize = 500;  // room of the older form; the newer one has twice as much
constexpr Byte kNoChannel = 0xFF;
constexpr std::size_t kSensorsAt = 6144;
constexpr std::size_t kExtendedSensorsAt = 2208;
constexpr std::size_t kSensorSize = 60;
constexpr std::size_t kExtendedFlagsAt = 7696;
constexpr std::size_t kOldLapTimesAt = 8192;
constexpr std::size_t kOldLapTimes = 255;
constexpr std::size_t kIdentityAt = 32768;
constexpr std::uint32_t kDumpingDevice = 37;  // one whose set-up area has tables of extended channels
constexpr std::uint32_t kDeviceSerial = 370021;

constexpr std::size_t kPrimaryChannels = 24;
constexpr std::size_t kFirstExtended = 32;

// The logger's own number of a channel.
Byte channel_number(std::size_t i) {
  return static_cast<Byte>(i < kPrimaryChannels ? i : kFirstExtended + i - kPrimaryChannels);
}

// One sample of a round, which takes a second.
struct Turn {
  std::size_t channel = 0;
  std::size_t sample = 0;  // of the channel's samples in this second
  std::uint32_t time_ms = 0;
};

std::vector<Turn> round_of(std::span<const WmpChannel> logged) {
  std::vector<Turn> round;
  for (std::uint32_t time_ms = 0; time_ms < 1000; ++time_ms) {
    for (std::size_t i = 0; i < logged.size(); ++i) {
      const std::uint32_t period_ms = 1000u / static_cast<std::uint32_t>(logged[i].rate_hz);
      if (time_ms % period_ms == 0) round.push_back({i, time_ms / period_ms, time_ms});
    }
  }
  return round;
}

// --- Stream

constexpr std::uint32_t kBlockMark = 0x9000;
constexpr std::uint32_t kLapEnd = 0x9001;  // of an ordinary lap
constexpr std::uint32_t kChecksum = 0xD000;
constexpr std::uint32_t kForeign = 0xD100;
constexpr std::uint32_t kLapRecord = 0xD201;  // of an ordinary lap
constexpr std::size_t kSecondsPerBlock = 2;

class WordStream {
 public:
  explicit WordStream(Bytes& out) : out_(out) {}

  void put(std::uint32_t word) {
    const Byte low = static_cast<Byte>(word & 0xFFu);
    const Byte high = static_cast<Byte>(word >> 8 & 0xFFu);
    out_.push_back(low);
    out_.push_back(high);
    sum_ += std::uint32_t{low} + high;
  }
  void put_checksum() {
    put(kChecksum | (sum_ & 0xFFu));
    sum_ = 0;
  }

 private:
  Bytes& out_;
  std::uint32_t sum_ = 0;
};

// Writes the laps in their order, each where its time has come.
class LapMarks {
 public:
  LapMarks(const std::vector<WmpLap>& laps, WordStream& stream) : laps_(laps), stream_(stream) {}

  bool is_due(std::uint32_t time_ms) const {
    return next_ < laps_.size() && laps_[next_].complete && laps_[next_].end_ms() <= time_ms;
  }
  void put_end() {
    stream_.put(kLapEnd);
    ++next_;
  }
  void put_record() {
    const WmpLap& lap = laps_[next_++];
    constexpr std::uint32_t kWholeLap = 1u << 12;  // more for a split
    stream_.put(kLapRecord);
    stream_.put((lap.number & 0xFFFu) | kWholeLap);
    stream_.put(lap.time_ms & 0xFFFFu);
    stream_.put(lap.time_ms >> 16);
    stream_.put(0);
    stream_.put_checksum();
  }

 private:
  const std::vector<WmpLap>& laps_;
  WordStream& stream_;
  std::size_t next_ = 0;
};

void append_stream(const WmpForm& form, std::span<const WmpChannel> logged, const WmpRecording& recording, Bytes& out) {
  const std::vector<Turn> round = round_of(logged);
  WordStream stream(out);
  LapMarks laps(recording.laps, stream);
  if (!form.old_dump) {
    stream.put(kForeign);
    for (const std::uint32_t word : {2024u, 5u << 8 | 12u, 0u}) stream.put(word);
  }
  for (std::size_t second = 0; second < recording.seconds(); ++second) {
    const std::uint32_t start_ms = static_cast<std::uint32_t>(second * 1000);
    if (form.old_dump && second % kSecondsPerBlock == 0) stream.put(kBlockMark);
    for (const Turn& turn : round) {
      while (form.old_dump && laps.is_due(start_ms + turn.time_ms)) laps.put_end();
      const WmpChannel& channel = logged[turn.channel];
      const std::size_t sample = second * static_cast<std::size_t>(channel.rate_hz) + turn.sample;
      stream.put(raw_word(channel, static_cast<double>(recording.samples[turn.channel][sample])));
    }
    const bool ends_block = (second + 1) % kSecondsPerBlock == 0 || second + 1 == recording.seconds();
    if (!ends_block) continue;
    stream.put_checksum();
    while (!form.old_dump && laps.is_due(start_ms + 1000)) laps.put_record();
  }
}

}  // namespace

Bytes set_up_area(const WmpForm& form, std::span<const WmpChannel> logged, const WmpRecording& recording) {
  Bytes area(form.old_dump ? kOldSetUpSize : kSetUpSize, 0);
  Byte* const at = area.data();
  // 1.2.5 is an old format, 1.3.0 the first of the newer ones.
  put_u8(at + kFormatWordAt + 1, 1);
  put_u8(at + kFormatWordAt + 2, form.old_dump ? 2u : 3u);
  put_u8(at + kFormatWordAt + 3, form.old_dump ? 5u : 0u);

  std::fill_n(at + kScheduleAt, form.old_dump ? kScheduleSize : 2 * kScheduleSize, kNoChannel);
  if (form.has_dump()) {
    Byte* entry = at + kScheduleAt;
    for (const Turn& turn : round_of(logged)) entry = put_u8(entry, channel_number(turn.channel));
  }

  for (std::size_t i = 0; i < logged.size(); ++i) {
    const bool primary = i < kPrimaryChannels;
    const std::size_t place = primary ? i : i - kPrimaryChannels;
    put_u8(at + (primary ? 0 : kExtendedFlagsAt) + place, 1);
    put_u16(at + (primary ? kSensorsAt : kExtendedSensorsAt) + place * kSensorSize, logged[i].sensor);
  }
  if (form.old_dump) {
    const std::size_t laps = std::min(recording.laps.size(), kOldLapTimes);
    for (std::size_t i = 0; i < laps; ++i) put_u32(at + kOldLapTimesAt + 4 * i, recording.laps[i].time_ms);
  } else {
    put_u32(at + kIdentityAt + 4, kDumpingDevice);
    put_u32(at + kIdentityAt + 16, kDeviceSerial);
  }
  return area;
}

WmpDump memory_dump(const WmpForm& form, std::span<const WmpChannel> logged, const WmpRecording& recording) {
  constexpr std::size_t kPage = 65536;
  constexpr std::size_t kMemorySize = 511 * kPage;
  constexpr std::size_t kErasedSize = 16384;  // at least; a reader knows the end by it
  WmpDump dump;
  dump.bytes = set_up_area(form, logged, recording);
  dump.stream_begin = dump.bytes.size();
  append_stream(form, logged, recording, dump.bytes);
  dump.stream_end = dump.bytes.size();
  const std::size_t size = (dump.bytes.size() + kErasedSize + kPage - 1) / kPage * kPage;
  if (size > kMemorySize) throw tool::Failure("the session is too long for the 32 MB of the logger's memory");
  dump.bytes.resize(size, 0xFF);
  return dump;
}

}  // namespace traguardo::simulator
