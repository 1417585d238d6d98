// traguardo samples: the samples of one channel, for the whole file or for one lap.
#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string>

#include "commands.h"
#include "json_output.h"
#include "output_file.h"
#include "session.h"
#include "text.h"

namespace traguardo::tool {

namespace {

constexpr std::size_t kFlushAt = 1 << 16;

void write_json(OutputFile& out, const Channel& channel, const Samples& samples) {
  out.write("{\"name\": " + json_text(channel.name).dump() + ", \"unit\": " + json_text(channel.unit).dump());
  out.write(", \"times_s\": ");
  write_json_array(out, samples.times_s.size(), [&samples](std::size_t i) { return samples.times_s[i]; });
  out.write(", \"values\": ");
  write_json_array(out, samples.values.size(), [&samples](std::size_t i) { return samples.values[i]; });
  out.write("}\n");
}

void write_table(OutputFile& out, const Channel& channel, const Samples& samples) {
  const std::string unit = readable_unit(channel.unit);
  fmt::memory_buffer text;
  fmt::format_to(std::back_inserter(text), "{:>14}  {:>16}\n", "Time (s)",
                 to_utf8(channel.name) + (unit.empty() ? "" : " (" + unit + ")"));
  for (std::size_t i = 0; i < samples.values.size(); ++i) {
    fmt::format_to(std::back_inserter(text), "{:>14.6f}  {:>16}\n", samples.times_s[i],
                   shortest_f32(samples.values[i]));
    if (text.size() >= kFlushAt) {
      out.write(text.data(), text.size());
      text.clear();
    }
  }
  out.write(text.data(), text.size());
}

}  // namespace

void show_samples(const SamplesOptions& options) {
  Session session(options.file);
  const Channel channel = session.find_channel(options.channel);
  std::optional<int> lap;
  if (options.one_lap) lap = session.lap_index(options.lap);
  Samples samples;
  session.read(channel, lap, samples);
  if (options.head_only) {
    const std::size_t count = std::min(samples.values.size(), static_cast<std::size_t>(options.head));
    samples.times_s.resize(count);
    samples.values.resize(count);
  }
  OutputFile out("-");
  if (options.json) {
    write_json(out, channel, samples);
  } else {
    write_table(out, channel, samples);
  }
  out.keep();
}

}  // namespace traguardo::tool
