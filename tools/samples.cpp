// SPDX-License-Identifier: MIT
// traguardo samples: the samples of one channel, for the whole file or for some laps.
#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "command.h"
#include "json_output.h"
#include "lap_choice.h"
#include "many_points.h"
#include "output_file.h"
#include "session.h"
#include "support/table_rows.h"
#include "text.h"

namespace traguardo::tool {

namespace {

struct SamplesOptions {
  std::string file;
  bool recover = false;
  std::string channel;
  std::string lap;  // as people name laps; empty: the whole file
  bool head_only = false;
  int head = 0;
  bool json = false;
};

// Hands over the samples that were asked for, piece by piece. A wild clock makes hundreds of millions of them.
class ChosenSamples {
 public:
  ChosenSamples(const Session& session, const Channel& channel, const SamplesOptions& options)
      : session_(session), channel_(channel) {
    if (!options.lap.empty()) laps_ = chosen_laps(session, options.lap);
    if (options.head_only) most_ = static_cast<std::uint64_t>(options.head);
  }

  void announce() const { announce_many_points(session_, {channel_}, laps_, most_); }

  template <typename Take>
  void each(Take take) const {
    std::uint64_t left = most_;
    session_.read_in_pieces(channel_, laps_, [&](const Samples& piece) {
      const std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>(piece.values.size(), left));
      for (std::size_t i = 0; i < count; ++i) take(piece.times_s[i], piece.values[i]);
      left -= count;
      return left > 0;
    });
  }

 private:
  const Session& session_;
  const Channel& channel_;
  std::vector<Lap> laps_;  // none: the whole file
  std::uint64_t most_ = std::numeric_limits<std::uint64_t>::max();
};

void write_json(OutputFile& out, const Channel& channel, const ChosenSamples& samples) {
  out.write("{\"name\": " + to_line(json_text(channel.name)) + ", \"unit\": " + to_line(json_text(channel.unit)));
  out.write(", \"times_s\": ");
  JsonArray times(out);
  samples.each([&times](double time_s, double) { times.add(time_s); });
  times.close();
  out.write(", \"values\": ");
  JsonArray values(out);
  samples.each([&values](double, double value) { values.add(value); });
  values.close();
  out.write("}\n");
}

void write_table(OutputFile& out, const Channel& channel, const ChosenSamples& samples) {
  RowPieces rows([&out](std::string_view piece) {
    out.write(piece);
    return true;
  });
  rows.text() = fmt::format("{:>14}  {:>16}\n", "Time (s)",
                            out.in_place(channel.name + (channel.unit.empty() ? "" : " (" + channel.unit + ")")));
  samples.each([&rows](double time_s, double value) {
    rows.text() += fmt::format("{:>14.6f}  {:>16}\n", time_s, shortest_f32(value));
    rows.end_row();
  });
  rows.finish();
}

void show_samples(const SamplesOptions& options) {
  Session session(options.file, options.recover);
  const Channel channel = session.find_channel(options.channel);
  const ChosenSamples samples(session, channel, options);
  samples.announce();
  OutputFile out("-");
  if (options.json) {
    write_json(out, channel, samples);
  } else {
    write_table(out, channel, samples);
  }
  out.keep();
}

}  // namespace

void add_samples_command(CLI::App& app, int& /*status*/) {
  Command command(app, "samples", "Show the samples of a channel");
  const auto options = std::make_shared<SamplesOptions>();
  command.add_file(options->file);
  command.add("CHANNEL", options->channel, "Name of the channel, or #INDEX; NAME=UNIT for another unit").required();
  command.add_lap(options->lap);
  const Option head = command.add("--head", options->head, "Only the first samples").at_least(0);
  command.add_json(options->json);
  command.add_recover(options->recover);
  command.calls([options, head] {
    options->head_only = head.is_given();
    show_samples(*options);
  });
}

}  // namespace traguardo::tool
