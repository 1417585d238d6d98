// SPDX-License-Identifier: MIT
#include "simulator/wmp_dump.h"

#include <algorithm>
#include <vector>

#include "failure.h"
#include "wire/dump.h"

namespace traguardo::simulator {

namespace {

using wire::Byte;
using wire::Bytes;
using wire::Dump;

// --- Set-up area

constexpr std::size_t kScheduleSize = 500;  // room of the older form; the newer one has twice as much
constexpr std::size_t kSensorsAt = 6144;
constexpr std::size_t kExtendedSensorsAt = 2208;
constexpr std::size_t kSensorSize = 60;
constexpr std::size_t kExtendedFlagsAt = 7696;
constexpr std::size_t kOldLapTimesAt = 8192;
constexpr std::size_t kOldLapTimes = 255;
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

constexpr std::uint8_t kOrdinaryLap = 1;
constexpr std::size_t kSecondsPerBlock = 2;

// Writes the laps in their order, each where its time has come.
class LapMarks {
 public:
  LapMarks(const std::vector<WmpLap>& laps, Dump& dump) : laps_(laps), dump_(dump) {}

  bool is_due(std::uint32_t time_ms) const {
    return next_ < laps_.size() && laps_[next_].complete && laps_[next_].end_ms() <= time_ms;
  }
  void put_end() {
    dump_.lap_end(kOrdinaryLap);
    ++next_;
  }
  void put_record() {
    const WmpLap& lap = laps_[next_++];
    dump_.lap_record(kOrdinaryLap, lap.number, lap.time_ms);
  }

 private:
  const std::vector<WmpLap>& laps_;
  Dump& dump_;
  std::size_t next_ = 0;
};

void append_stream(const WmpForm& form, std::span<const WmpChannel> logged, const WmpRecording& recording, Dump& dump) {
  const std::vector<Turn> round = round_of(logged);
  LapMarks laps(recording.laps, dump);
  if (!form.old_dump) dump.foreign({2024, 5u << 8 | 12u, 0});
  for (std::size_t second = 0; second < recording.seconds(); ++second) {
    const std::uint32_t start_ms = static_cast<std::uint32_t>(second * 1000);
    if (form.old_dump && second % kSecondsPerBlock == 0) dump.mark();
    for (const Turn& turn : round) {
      while (form.old_dump && laps.is_due(start_ms + turn.time_ms)) laps.put_end();
      const WmpChannel& channel = logged[turn.channel];
      const std::size_t sample = second * static_cast<std::size_t>(channel.rate_hz) + turn.sample;
      dump.word(raw_word(channel, static_cast<double>(recording.samples[turn.channel][sample])));
    }
    const bool ends_block = (second + 1) % kSecondsPerBlock == 0 || second + 1 == recording.seconds();
    if (!ends_block) continue;
    dump.checksum();
    while (!form.old_dump && laps.is_due(start_ms + 1000)) laps.put_record();
  }
}

Dump dump_without_stream(const WmpForm& form, std::span<const WmpChannel> logged, const WmpRecording& recording) {
  Bytes schedule;
  if (form.has_dump()) {
    for (const Turn& turn : round_of(logged)) schedule.push_back(channel_number(turn.channel));
  }
  Dump dump(schedule, form.old_dump ? kScheduleSize : 2 * kScheduleSize);
  dump.set_format(form.old_dump ? Dump::kOlderFormat : Dump::kNewerFormat);
  for (std::size_t i = 0; i < logged.size(); ++i) {
    const bool primary = i < kPrimaryChannels;
    const std::size_t place = primary ? i : i - kPrimaryChannels;
    dump.set_byte((primary ? 0 : kExtendedFlagsAt) + place, 1);
    dump.set_word((primary ? kSensorsAt : kExtendedSensorsAt) + place * kSensorSize, logged[i].sensor);
  }
  if (form.old_dump) {
    const std::size_t laps = std::min(recording.laps.size(), kOldLapTimes);
    for (std::size_t i = 0; i < laps; ++i) dump.set_dword(kOldLapTimesAt + 4 * i, recording.laps[i].time_ms);
  } else {
    dump.set_device(kDumpingDevice).set_serial(kDeviceSerial);
  }
  return dump;
}

}  // namespace

Bytes set_up_area(const WmpForm& form, std::span<const WmpChannel> logged, const WmpRecording& recording) {
  return dump_without_stream(form, logged, recording).bytes();
}

WmpDump memory_dump(const WmpForm& form, std::span<const WmpChannel> logged, const WmpRecording& recording) {
  constexpr std::size_t kPage = 65536;
  constexpr std::size_t kMemorySize = 511 * kPage;
  constexpr std::size_t kErasedSize = 16384;  // at least; a reader knows the end by it
  Dump made = dump_without_stream(form, logged, recording);
  append_stream(form, logged, recording, made);
  WmpDump dump;
  dump.bytes = made.bytes();
  dump.stream_begin = made.set_up_size();
  dump.stream_end = dump.bytes.size();
  const std::size_t size = (dump.bytes.size() + kErasedSize + kPage - 1) / kPage * kPage;
  if (size > kMemorySize) throw tool::Failure("the session is too long for the 32 MB of the logger's memory");
  dump.bytes.resize(size, 0xFF);
  return dump;
}

}  // namespace traguardo::simulator
