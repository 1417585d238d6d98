// SPDX-License-Identifier: MIT
// traguardo channels: what was logged, how fast, and between which bounds.
#include <fmt/format.h>

#include <cmath>
#include <cstddef>

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
  std::size_t samples = 0;
  double rate_hz = 0;
  double min = std::nan("");  // over the samples that are numbers
  double max = std::nan("");
};

Figures figures_of(const Samples& samples) {
  Figures figures;
  figures.samples = samples.values.size();
  for (const double value : samples.values) {
    if (std::isnan(value)) continue;
    if (!(figures.min <= value)) figures.min = value;
    if (!(figures.max >= value)) figures.max = value;
  }
  if (samples.times_s.size() < 2) return figures;
  const double span_s = samples.times_s.back() - samples.times_s.front();
  if (span_s > 0) figures.rate_hz = static_cast<double>(samples.times_s.size() - 1) / span_s;
  return figures;
}

void show_channels(const ChannelsOptions& options) {
  const Session session(options.file, options.recover);
  Json json = Json::array();
  Table table({{"Index", Align::right},
               {"Name", Align::left},
               {"Unit", Align::left},
               {"Samples", Align::right},
               {"Rate (Hz)", Align::right},
               {"Minimum", Align::right},
               {"Maximum", Align::right}});
  Samples samples;
  for (const Channel& channel : session.logged_channels()) {
    session.read(channel, std::nullopt, samples);
    const Figures figures = figures_of(samples);
    if (options.json) {
      Json row;
      row["index"] = channel.index;
      row["name"] = json_text(channel.name);
      row["unit"] = json_text(channel.unit);
      row["samples"] = figures.samples;
      row["rate_hz"] = json_number(figures.rate_hz);
      row["min"] = figures.samples == 0 ? Json() : json_number(figures.min);
      row["max"] = figures.samples == 0 ? Json() : json_number(figures.max);
      json.push_back(row);
    } else {
      table.add_row({std::to_string(channel.index), channel.name, channel.unit, std::to_string(figures.samples),
                     fmt::format("{:.4g}", figures.rate_hz), figures.samples == 0 ? "-" : shortest_f32(figures.min),
                     figures.samples == 0 ? "-" : shortest_f32(figures.max)});
    }
  }
  print_out(options.json ? to_document(json) : table.to_text());
}

}  // namespace

void add_channels_command(CLI::App& app, int& /*status*/) {
  add_plain_command<ChannelsOptions>(app, "channels", "Show the logged channels with rates and bounds", show_channels);
}

}  // namespace traguardo::tool
