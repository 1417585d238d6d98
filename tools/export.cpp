// SPDX-License-Identifier: MIT
// traguardo export: samples as comma-separated values, one a line, or the driven track for a map.
#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "command.h"
#include "error_line.h"
#include "failure.h"
#include "inputs.h"
#include "output_file.h"
#include "session.h"
#include "text.h"
#include "track.h"
#include "track_file.h"

namespace traguardo::tool {

namespace {

enum class ExportFormat { csv, gpx, geojson };
struct ExportOptions {
  std::string file;
  bool recover = false;
  std::string output;
  std::vector<std::string> channels;  // empty: all logged and all derived GPS channels
  bool one_lap = false;
  int lap = 0;
  ExportFormat format = ExportFormat::csv;
};

constexpr std::size_t kFlushAt = 1 << 16;

// A field with separators, quotes or line ends goes in quotes, its own quotes doubled.
std::string csv_field(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string field = "\"";
  for (const char c : text) {
    if (c == '"') field += '"';
    field += c;
  }
  return field + '"';
}

std::vector<Channel> chosen_channels(Session& session, const std::vector<std::string>& names) {
  std::vector<Channel> channels;
  if (names.empty()) {
    channels = session.logged_channels();
    const std::vector<Channel>& gps = session.gps_channels();
    channels.insert(channels.end(), gps.begin(), gps.end());
  }
  for (const std::string& name : names) channels.push_back(session.find_channel(name));
  return channels;
}

// Nobody expects more points than a day of them; then a clock went wild, and a person may want to stop.
void announce_many_points(const Session& session, const std::vector<Channel>& channels, std::optional<int> lap) {
  constexpr std::uint64_t kDayOfPoints = 8'640'000;
  std::uint64_t points = 0;
  std::uint64_t most = 0;
  for (const Channel& channel : channels) {
    if (channel.kind != ChannelKind::gps) continue;
    const std::uint64_t count = session.sample_count(channel, lap);
    points += count;
    most = std::max(most, count);
  }
  if (most <= kDayOfPoints) return;
  say_error_line(
      fmt::format("about to write {} GPS points, one every 10 ms over {:.0f} s: its clock leaps between two solutions",
                  points, static_cast<double>(most) / 100));
}

void write_csv(OutputFile& out, const Session& session, const std::vector<Channel>& channels, std::optional<int> lap) {
  fmt::memory_buffer text;
  const auto at_end = [&text] { return std::back_inserter(text); };
  fmt::format_to(at_end(), "channel,unit,time,value\n");
  for (const Channel& channel : channels) {
    const std::string name = csv_field(out.in_place(channel.name)) + ',' + csv_field(out.in_place(channel.unit)) + ',';
    session.read_in_pieces(channel, lap, [&](const Samples& samples) {
      for (std::size_t i = 0; i < samples.values.size(); ++i) {
        fmt::format_to(at_end(), "{}{},{}\n", name, shortest(samples.times_s[i]), shortest(samples.values[i]));
        if (text.size() < kFlushAt) continue;
        out.write(text.data(), text.size());
        text.clear();
      }
      return true;
    });
  }
  out.write(text.data(), text.size());
}

std::string title_of(const Session& session, const ExportOptions& options) {
  std::string title = to_utf8(session.track());
  const std::string vehicle = to_utf8(session.vehicle());
  if (!title.empty() && !vehicle.empty()) title += ", ";
  title += vehicle;
  if (title.empty()) title = to_utf8(session.path());
  if (options.one_lap) title += fmt::format(", lap {}", options.lap);
  return title;
}

void export_session(const ExportOptions& options) {
  Inputs inputs;
  inputs.add_session(options.file);
  inputs.refuse(options.output);
  Session session(options.file, options.recover);
  std::optional<int> lap;
  if (options.one_lap) lap = session.lap_index(options.lap);

  if (options.format == ExportFormat::csv) {
    const std::vector<Channel> channels = chosen_channels(session, options.channels);
    announce_many_points(session, channels, lap);
    OutputFile out(options.output);
    write_csv(out, session, channels, lap);
    out.keep();
    return;
  }
  const std::vector<TrackPoint> track = read_track(session, lap);
  if (track.size() < 2) throw Failure(fmt::format("no GPS track in {}", session.path()));
  const TrackTitle title{title_of(session, options), session.date()};
  OutputFile out(options.output);
  if (options.format == ExportFormat::gpx) {
    write_gpx(out, title, track);
  } else {
    write_geojson(out, title, track);
  }
  out.keep();
}

}  // namespace

void add_export_command(CLI::App& app, int& /*status*/) {
  Command command(app, "export", "Write samples as CSV, one a line, or the GPS track for a map program");
  const auto options = std::make_shared<ExportOptions>();
  command.add_file(options->file);
  command.add("-o,--output", options->output, "File to write, - for standard output").required();
  const Option channels =
      command.add("--channel", options->channels,
                  "Only this channel; may be repeated (default: all logged and all derived GPS channels)");
  const Option lap = command.add_lap(options->lap);
  const Option gpx = command.add_flag("--gpx", "Write the GPS track as GPX 1.1").excludes(channels);
  const Option geojson =
      command.add_flag("--geojson", "Write the GPS track as GeoJSON").excludes(channels).excludes(gpx);
  command.add_recover(options->recover);
  command.calls([options, lap, gpx, geojson] {
    options->one_lap = lap.is_given();
    if (gpx.is_given()) options->format = ExportFormat::gpx;
    if (geojson.is_given()) options->format = ExportFormat::geojson;
    export_session(*options);
  });
}

}  // namespace traguardo::tool
