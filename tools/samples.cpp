// SPDX-License-Identifier: MIT
// traguardo samples: the samples of one channel, for the whole file or for one lap.
#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <string>

#include "command.h"
#include "json_output.h"
#include "output_file.h"
#include "session.h"
#include "text.h"

namespace traguardo::tool {

namespace {

struct SamplesOptions {
  std::string file;
  bool recover = false;
  std::string channel;
  bool one_lap = false;
  int lap = 0;
  bool head_only = false;
  int head = 0;
  bool json = false;
};

constexpr std::size_t kFlushAt = 1 << 16;

// Hands over the samples that were asked for, piece by piece. A wild clock makes hundreds of millions of them.
class ChosenSamples {
 public:
  ChosenSamples(const Session& session, const Channel& channel, const SamplesOptions& options)
      : session_(session), channel_(channel) {
    if (options.one_lap) lap_ = session.lap_index(options.lap);
    if (options.head_only) most_ = static_cast<std::uint64_t>(options.head);
  }

  template <typename Take>
  void each(Take take) const {
    std::uint64_t left = most_;
    session_.read_in_pieces(channel_, lap_, [&](const Samples& piece) {
      const std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>(piece.values.size(), left));
      for (std::size_t i = 0; i < count; ++i) take(piece.times_s[i], piece.values[i]);
      left -= count;
      return left > 0;
    });
  }

 private:
  const Session& session_;
  const Channel& channel_;
  std::optional<int> lap_;
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
  fmt::memory_buffer text;
  fmt::format_to(std::back_inserter(text), "{:>14}  {:>16}\n", "Time (s)",
                 out.in_place(channel.name + (channel.unit.empty() ? "" : " (" + channel.unit + ")")));
  samples.each([&](double time_s, double value) {
    fmt::format_to(std::back_inserter(text), "{:>14.6f}  {:>16}\n", time_s, shortest_f32(value));
    if (text.size() < kFlushAt) return;
    out.write(text.data(), text.size());
    text.clear();
  });
  out.write(text.data(), text.size());
}

void show_samples(const SamplesOptions& options) {
  Session session(options.file, options.recover);
  const Channel channel = session.find_channel(options.channel);
  const ChosenSamples samples(session, channel, options);
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
  command.add("CHANNEL", options->channel, "Name of the channel").required();
  const Option lap = command.add_lap(options->lap);
  const Option head = command.add("--head", options->head, "Only the first samples").at_least(0);
  command.add_json(options->json);
  command.add_recover(options->recover);
  command.calls([options, lap, head] {
    options->one_lap = lap.is_given();
    options->head_only = head.is_given();
    show_samples(*options);
  });
}

}  // namespace traguardo::tool
