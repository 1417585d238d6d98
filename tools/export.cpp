// SPDX-License-Identifier: MIT
// traguardo export: samples as comma-separated values, one a line or side by side, or the driven track for a map.
#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "command.h"
#include "csv.h"
#include "failure.h"
#include "inputs.h"
#include "lap_choice.h"
#include "many_points.h"
#include "output_file.h"
#include "session.h"
#include "support/table_rows.h"
#include "text.h"
#include "track.h"
#include "track_file.h"
#include "wide_table.h"

namespace traguardo::tool {

namespace {

enum class ExportFormat { csv, wide, gpx, geojson };
struct ExportOptions {
  std::string file;
  bool recover = false;
  std::string output;
  std::vector<std::string> channels;  // names or patterns; empty: all logged and all derived GPS channels
  std::string lap;                    // as people name laps; empty: the whole file
  ExportFormat format = ExportFormat::csv;
  WideGrid grid;
};

void write_csv(OutputFile& out, const Session& session, const std::vector<Channel>& channels,
               const std::vector<Lap>& laps) {
  RowPieces rows([&out](std::string_view piece) {
    out.write(piece);
    return true;
  });
  rows.text() = "channel,unit,time,value\n";
  for (const Channel& channel : channels) {
    const std::string name = csv_field(out.in_place(channel.name)) + ',' + csv_field(out.in_place(channel.unit)) + ',';
    session.read_in_pieces(channel, laps, [&](const Samples& samples) {
      for (std::size_t i = 0; i < samples.values.size(); ++i) {
        rows.text().append(name).append(shortest(samples.times_s[i])) += ',';
        rows.text().append(shortest(samples.values[i])) += '\n';
        rows.end_row();
      }
      return true;
    });
  }
  rows.finish();
}

std::string title_of(const Session& session, const ExportOptions& options) {
  std::string title = to_utf8(session.track());
  const std::string vehicle = to_utf8(session.vehicle());
  if (!title.empty() && !vehicle.empty()) title += ", ";
  title += vehicle;
  if (title.empty()) title = to_utf8(session.path());
  if (!options.lap.empty()) title += ", lap " + options.lap;
  return title;
}

void export_session(const ExportOptions& options) {
  Inputs inputs;
  inputs.add_session(options.file);
  inputs.refuse(options.output);
  Session session(options.file, options.recover);
  std::vector<Lap> laps;
  if (!options.lap.empty()) laps = chosen_laps(session, options.lap);

  if (options.format == ExportFormat::csv || options.format == ExportFormat::wide) {
    const std::vector<Channel> channels = find_all_channels(session, options.channels);
    announce_many_points(session, channels, laps);
    OutputFile out(options.output);
    if (options.format == ExportFormat::csv) {
      write_csv(out, session, channels, laps);
    } else {
      write_wide(out, session, channels, laps, options.grid);
    }
    out.keep();
    return;
  }
  const std::vector<TrackPoint> track = read_track(session, laps);
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
  Command command(app, "export",
                  "Write samples as CSV, one a line or side by side, or the GPS track for a map program");
  const auto options = std::make_shared<ExportOptions>();
  command.add_file(options->file);
  command.add_output(options->output, "File to write, - for standard output").required();
  const Option channels = command.add_channels(options->channels);
  command.add_lap(options->lap);
  const Option gpx = command.add_flag("--gpx", "Write the GPS track as GPX 1.1").excludes(channels);
  const Option geojson =
      command.add_flag("--geojson", "Write the GPS track as GeoJSON").excludes(channels).excludes(gpx);
  const Option wide = command.add_flag("--wide", "One row per moment or place, with a column per channel")
                          .excludes(gpx)
                          .excludes(geojson);
  const Option rate =
      command.add("--rate", options->grid.rate_hz, "Rows of --wide a second (default: as the fastest of the channels)")
          .between(0.001, 1e6)
          .needs(wide);
  command.add("--by-distance", options->grid.step_m, "A row of --wide every so many metres, instead of moments")
      .between(0.001, 1e6)
      .needs(wide)
      .excludes(rate);
  command.add_speed(options->grid.speed);
  command.add_recover(options->recover);
  command.calls([options, wide, gpx, geojson] {
    if (wide.is_given()) options->format = ExportFormat::wide;
    if (gpx.is_given()) options->format = ExportFormat::gpx;
    if (geojson.is_given()) options->format = ExportFormat::geojson;
    export_session(*options);
  });
}

}  // namespace traguardo::tool
