// SPDX-License-Identifier: MIT
#include "wide_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>

#include "channel_cursor.h"
#include "csv.h"
#include "distance.h"
#include "error_line.h"
#include "failure.h"
#include "inside.h"
#include "speed.h"
#include "support/table_rows.h"
#include "text.h"

namespace traguardo::tool {

namespace {

constexpr double kGpsRateHz = 1e6 / GpsView::kStep;
constexpr double kRateOfSingleSamples = 1;

// Seconds with as many decimals as the microseconds need.
void append_seconds(std::string* text, u64 time_us) {
  constexpr u64 kSecond = 1'000'000;
  char buffer[32];
  text->append(buffer, std::to_chars(buffer, buffer + sizeof buffer, time_us / kSecond).ptr);
  u64 rest = time_us % kSecond;
  if (rest == 0) return;
  buffer[0] = '.';
  std::size_t length = 1;
  for (u64 digit = kSecond / 10; rest != 0; digit /= 10) {
    buffer[length++] = static_cast<char>('0' + rest / digit);
    rest %= digit;
  }
  text->append(buffer, length);
}

double mean_rate_hz(const CParsedChannel& channel, u64 samples) {
  const u64 span = channel.GetUltimoTempo() - channel.GetPrimoTempo();
  return samples < 2 || span == 0 ? kRateOfSingleSamples
                                  : static_cast<double>(samples - 1) * 1e6 / static_cast<double>(span);
}

// By the channel's record, else by its samples.
double rate_of(const Session& session, const Channel& channel) {
  if (channel.kind == ChannelKind::gps) return kGpsRateHz;
  const CParsedChannel* const parsed = parsed_channel_of(session, channel);
  if (parsed == nullptr) return kRateOfSingleSamples;
  if (parsed->GetFrequenza() > 0) return std::round(static_cast<double>(parsed->GetFrequenza()) * 1e6) * 1e-6;
  return mean_rate_hz(*parsed, session.sample_count(channel, std::nullopt));
}

// A stretch of the file's time that has rows of its own.
struct Stretch {
  std::optional<int> lap;
  u64 from_us = 0;
  u64 to_us = 0;
};

std::vector<Stretch> stretches_of(const Session& session, const std::vector<Lap>& laps) {
  std::vector<Stretch> stretches;
  stretches.reserve(laps.size() + 1);
  for (const Lap& lap : laps) {
    stretches.push_back({lap.number, to_us(lap.start_s), to_us(lap.start_s + lap.duration_s)});
  }
  // Up to and with the last sample of all.
  if (laps.empty()) stretches.push_back({std::nullopt, 0, to_us(session.duration_s()) + 1});
  return stretches;
}

class WideWriter {
 public:
  WideWriter(OutputFile& out, const Session& session, const std::vector<Channel>& channels)
      : rows_([&out](std::string_view piece) {
          out.write(piece);
          return true;
        }) {
    for (const Channel& channel : channels) cursors_.emplace_back(session, channel);
  }

  void write_headings(const OutputFile& out, bool has_laps, const char* axis) {
    std::string& text = rows_.text();
    text += has_laps ? "lap," : "";
    text += axis;
    for (const ChannelCursor& cursor : cursors_) {
      const Channel& channel = cursor.channel();
      const std::string title = channel.unit.empty() ? channel.name : channel.name + " (" + channel.unit + ")";
      text += ',' + csv_field(out.in_place(title));
    }
    end_row();
  }

  void begin(const Stretch& stretch) {
    from_us_ = stretch.from_us;
    prefix_ = stretch.lap ? fmt::format("{},", *stretch.lap) : "";
    for (ChannelCursor& cursor : cursors_) cursor.go_to(from_us_);
  }

  // since_us: from the start of the stretch.
  void write_row(u64 since_us) {
    rows_.text() += prefix_;
    append_seconds(&rows_.text(), since_us);
    write_values(from_us_ + since_us);
  }
  void write_row(double distance_m, u64 since_us) {
    rows_.text() += prefix_;
    rows_.text() += shortest(distance_m);
    rows_.text() += ',';
    append_seconds(&rows_.text(), since_us);
    write_values(from_us_ + since_us);
  }

  void finish() {
    constexpr std::uint64_t kRowsOfSpreadsheets = 1'048'576;
    rows_.finish();
    if (count_ <= kRowsOfSpreadsheets) return;
    say_error_line(fmt::format("{} rows are more than the {} that a spreadsheet takes", count_, kRowsOfSpreadsheets));
  }

 private:
  void write_values(u64 time_us) {
    for (ChannelCursor& cursor : cursors_) {
      rows_.text() += ',';
      if (const std::optional<float> value = cursor.at(time_us)) append_shortest_f32(&rows_.text(), *value);
    }
    end_row();
  }
  void end_row() {
    rows_.text() += '\n';
    rows_.end_row();
    ++count_;
  }

  RowPieces<std::function<bool(std::string_view)>> rows_;
  std::vector<ChannelCursor> cursors_;
  std::string prefix_;
  u64 from_us_ = 0;
  std::uint64_t count_ = 0;
};

void write_by_time(WideWriter* writer, const std::vector<Stretch>& stretches, double rate_hz) {
  for (const Stretch& stretch : stretches) {
    writer->begin(stretch);
    const u64 length_us = stretch.to_us - stretch.from_us;
    for (u64 row = 0;; ++row) {
      const u64 since_us = static_cast<u64>(std::llround(static_cast<double>(row) * 1e6 / rate_hz));
      if (since_us >= length_us) break;
      writer->write_row(since_us);
    }
  }
}

void write_by_distance(WideWriter* writer, const std::vector<Stretch>& stretches, double step_m, DistanceWalk walk) {
  for (const Stretch& stretch : stretches) {
    writer->begin(stretch);
    walk.start(stretch.from_us, stretch.to_us);
    for (u64 row = 0;; ++row) {
      const double distance_m = static_cast<double>(row) * step_m;
      const std::optional<double> time_s = walk.time_at(distance_m);
      if (!time_s) break;
      writer->write_row(distance_m, to_us(*time_s));
    }
  }
}

}  // namespace

void write_wide(OutputFile& out, Session& session, const std::vector<Channel>& channels, const std::vector<Lap>& laps,
                const WideGrid& grid) {
  for (const Channel& channel : channels) {
    if (channel.kind == ChannelKind::gps_raw) {
      throw Failure(fmt::format("raw GPS channels such as \"{}\" stand in no wide table", channel.name));
    }
  }
  const std::vector<Stretch> stretches = stretches_of(session, laps);
  WideWriter writer(out, session, channels);
  if (grid.step_m > 0) {
    DistanceWalk walk(session, speed_channel(session, grid.speed, "--speed"));
    writer.write_headings(out, !laps.empty(), "distance (m),time (s)");
    write_by_distance(&writer, stretches, grid.step_m, std::move(walk));
  } else {
    double rate_hz = grid.rate_hz;
    for (const Channel& channel : channels) {
      if (grid.rate_hz <= 0) rate_hz = std::max(rate_hz, rate_of(session, channel));
    }
    writer.write_headings(out, !laps.empty(), "time (s)");
    write_by_time(&writer, stretches, rate_hz);
  }
  writer.finish();
}

}  // namespace traguardo::tool
