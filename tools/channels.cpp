// SPDX-License-Identifier: MIT
// traguardo channels: what was logged or derived from the GPS, how fast, and between which bounds.
#include <fmt/format.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "command.h"
#include "json_output.h"
#include "print_out.h"
#include "session.h"
#include "table.h"
#include "text.h"

namespace traguardo::tool {

namespace {

struct ChannelsOptions {
  std::string file;
  bool recover = false;
  bool json = false;
};

struct Figures {
  std::uint64_t samples = 0;
  double first_s = 0;
  double last_s = 0;
  double min = std::nan("");  // over the samples that are numbers
  double max = std::nan("");

  void take(const Samples& piece) {
    if (piece.values.empty()) return;
    if (samples == 0) first_s = piece.times_s.front();
    last_s = piece.times_s.back();
    samples += piece.values.size();
    for (const double value : piece.values) {
      if (std::isnan(value)) continue;
      if (!(min <= value)) min = value;
      if (!(max >= value)) max = value;
    }
  }
  double rate_hz() const {
    return samples > 1 && last_s > first_s ? static_cast<double>(samples - 1) / (last_s - first_s) : 0;
  }
};

void show_channels(const ChannelsOptions& options) {
  Session session(options.file, options.recover);
  Json json = Json::array();
  Table table({{"Index", Align::right},
               {"Name", Align::left},
               {"Unit", Align::left},
               {"Samples", Align::right},
               {"Rate (Hz)", Align::right},
               {"Minimum", Align::right},
               {"Maximum", Align::right}});
  std::size_t index = 0;
  for (const Channel& channel : session.channels()) {
    Figures figures;
    session.read_in_pieces(channel, {}, [&figures](const Samples& piece) {
      figures.take(piece);
      return true;
    });
    const bool has_bounds = figures.samples > 0;
    if (options.json) {
      Json row;
      row["index"] = index;
      row["name"] = json_text(channel.name);
      row["unit"] = json_text(channel.unit);
      row["samples"] = figures.samples;
      row["rate_hz"] = json_number(figures.rate_hz());
      row["min"] = has_bounds ? json_number(figures.min) : Json();
      row["max"] = has_bounds ? json_number(figures.max) : Json();
      row["derived_from_gps"] = channel.kind == ChannelKind::gps;
      json.push_back(row);
    } else {
      table.add_row({std::to_string(index), channel.name, channel.unit, std::to_string(figures.samples),
                     fmt::format("{:.4g}", figures.rate_hz()), has_bounds ? shortest_f32(figures.min) : "-",
                     has_bounds ? shortest_f32(figures.max) : "-"});
    }
    ++index;
  }
  print_shown(options.json ? to_document(json) : table.to_text());
}

}  // namespace

void add_channels_command(CLI::App& app, int& /*status*/) {
  add_plain_command<ChannelsOptions>(app, "channels", "Show the channels with rates and bounds", show_channels);
}

}  // namespace traguardo::tool
