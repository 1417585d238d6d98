// traguardo samples: the samples of one channel, for the whole file or for one lap.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "json_output.h"
#include "output_file.h"
#include "session.h"
#include "text.h"

namespace traguardo::tool {

namespace {

constexpr std::size_t kFlushAt = 1 << 16;

// A JSON array of numbers, written as it goes: a channel may have millions of them.
void write_array(OutputFile& out, const std::vector<double>& numbers) {
  fmt::memory_buffer text;
  text.push_back('[');
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const char* const comma = i == 0 ? "" : ", ";
    const char* const quote = std::isfinite(numbers[i]) ? "" : "\"";
    fmt::format_to(std::back_inserter(text), "{}{}{}{}", comma, quote, shortest(numbers[i]), quote);
    if (text.size() >= kFlushAt) {
      out.write(text.data(), text.size());
      text.clear();
    }
  }
  text.push_back(']');
  out.write(text.data(), text.size());
}

void write_json(OutputFile& out, const Channel& channel, const Samples& samples) {
  out.write("{\"name\": " + json_text(channel.name).dump() + ", \"unit\": " + json_text(channel.unit).dump());
  out.write(", \"times_s\": ");
  write_array(out, samples.times_s);
  out.write(", \"values\": ");
  write_array(out, samples.values);
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
