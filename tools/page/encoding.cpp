// SPDX-License-Identifier: MIT
#include "encoding.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <future>
#include <limits>
#include <memory>
#include <numeric>
#include <optional>
#include <set>
#include <span>
#include <thread>
#include <utility>

#include "kept_values.h"
#include "rows.h"

namespace traguardo::tool {

namespace {

std::int64_t microseconds(double time_s) {
  constexpr double kMost = 9e15;  // what a double, and so a script, still counts
  return std::llround(std::clamp(time_s * 1e6, 0.0, kMost));
}

// Where a clock steps back a reader of the page would search in vain.
void put_in_order(Samples* samples) {
  if (std::is_sorted(samples->times_s.begin(), samples->times_s.end())) return;
  std::vector<std::size_t> order(samples->times_s.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [samples](std::size_t a, std::size_t b) { return samples->times_s[a] < samples->times_s[b]; });
  Samples sorted;
  for (const std::size_t i : order) {
    sorted.times_s.push_back(samples->times_s[i]);
    sorted.values.push_back(samples->values[i]);
  }
  *samples = std::move(sorted);
}

// Laps overlap where a lap time is longer than the way to the next mark: what both have comes once.
void append(const Samples& piece, Samples* samples) {
  std::ptrdiff_t first = 0;
  if (!samples->times_s.empty() && std::is_sorted(piece.times_s.begin(), piece.times_s.end())) {
    first =
        std::upper_bound(piece.times_s.begin(), piece.times_s.end(), samples->times_s.back()) - piece.times_s.begin();
  }
  samples->times_s.insert(samples->times_s.end(), piece.times_s.begin() + first, piece.times_s.end());
  samples->values.insert(samples->values.end(), piece.values.begin() + first, piece.values.end());
}

void read_samples(const PageFile& file, const Channel& channel, Samples* samples) {
  if (channel.kind != ChannelKind::gps && file.laps.empty()) {
    file.session->read(channel, std::nullopt, *samples);
  } else {
    samples->times_s.clear();
    samples->values.clear();
    file.session->read_in_pieces(channel, file.laps, [samples](const Samples& piece) {
      append(piece, samples);
      return true;
    });
  }
  put_in_order(samples);
}

// The memory of one channel at work. It goes from channel to channel: to get it from the system anew takes longer than
// the work itself.
struct Workbench {
  Samples samples;
  std::vector<std::int64_t> times_us;
  std::vector<std::int32_t> kept;
};

// Channels of one rate have the same times: they are encoded once.
class TimesOfOneRate {
 public:
  // Empty for times that weren't there yet.
  std::shared_future<std::string> find(const std::vector<double>& times_s, std::size_t stretch) const {
    for (const Entry& entry : entries_) {
      if (entry.stretch == stretch && entry.count == times_s.size() && are_of(times_s, entry)) return entry.block;
    }
    return {};
  }
  void add(const std::vector<double>& times_s, std::size_t stretch, std::shared_future<std::string> block) {
    constexpr std::size_t kMostTimes = 16'000'000;
    Entry entry{stretch, times_s.size(), {}, std::move(block)};
    if (count_ + times_s.size() / stretch > kMostTimes) return;
    for (std::size_t i = 0; i < times_s.size(); i += stretch) entry.first_times_s.push_back(times_s[i]);
    count_ += entry.first_times_s.size();
    entries_.push_back(std::move(entry));
  }

 private:
  struct Entry {
    std::size_t stretch;
    std::size_t count;
    std::vector<double> first_times_s;  // of each stretch
    std::shared_future<std::string> block;
  };
  static bool are_of(const std::vector<double>& times_s, const Entry& entry) {
    if (entry.stretch == 1) return entry.first_times_s == times_s;
    return std::all_of(entry.first_times_s.begin(), entry.first_times_s.end(),
                       [at = std::size_t{0}, &times_s, stretch = entry.stretch](double time_s) mutable {
                         return times_s[std::exchange(at, at + stretch)] == time_s;
                       });
  }
  std::vector<Entry> entries_;
  std::size_t count_ = 0;
};

std::string times_block(Workbench* bench, std::size_t stretch) {
  bench->times_us.clear();
  for (std::size_t i = 0; i < bench->samples.times_s.size(); i += stretch) {
    bench->times_us.push_back(microseconds(bench->samples.times_s[i]));
  }
  return block_of_times(bench->times_us);
}

struct Extremes {
  double min = 0;
  double max = 0;
};

// Of the numbers; the first value in both places where there is none.
Extremes extremes_of(std::span<const double> values) {
  constexpr double kInfinite = std::numeric_limits<double>::infinity();
  Extremes found{kInfinite, -kInfinite};
  for (const double value : values) {
    found.min = value < found.min ? value : found.min;
    found.max = value > found.max ? value : found.max;
  }
  if (std::isfinite(found.min) && std::isfinite(found.max)) return found;
  found = {kInfinite, -kInfinite};
  for (const double value : values) {
    if (std::isfinite(value)) found = {std::min(found.min, value), std::max(found.max, value)};
  }
  return found.min <= found.max ? found : Extremes{values.front(), values.front()};
}

// The minima of all stretches, then their maxima.
std::vector<double> extremes_of(const std::vector<double>& values, std::size_t stretch) {
  const std::size_t count = (values.size() + stretch - 1) / stretch;
  std::vector<double> extremes(2 * count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t from = i * stretch;
    const Extremes found = extremes_of(std::span(values).subspan(from, std::min(stretch, values.size() - from)));
    extremes[i] = found.min;
    extremes[count + i] = found.max;
  }
  return extremes;
}

struct Values {
  int decimals = 0;
  std::string block;
};

// First thinned, then encoded: what is left out isn't looked at twice.
Values values_block(Workbench* bench, std::size_t stretch) {
  Values encoded;
  if (stretch == 1) {
    encoded.decimals = keep_values(bench->samples.values, &bench->kept);
    encoded.block = block_of_values(bench->kept);
    return encoded;
  }
  std::vector<double> extremes = extremes_of(bench->samples.values, stretch);
  encoded.decimals = keep_values(extremes, &bench->kept);
  const auto middle = bench->kept.begin() + static_cast<std::ptrdiff_t>(bench->kept.size() / 2);
  encoded.block = block_of_extremes({bench->kept.begin(), middle}, {middle, bench->kept.end()});
  return encoded;
}

// A session is read by one thread; the others encode what it has read.
class Encoder {
 public:
  void add(EncodedChannel* channel) {
    const std::size_t most_at_once = std::max(2U, std::thread::hardware_concurrency());
    if (running_.size() >= most_at_once) take_first();
    std::shared_ptr<Workbench> bench = free_bench();
    read_samples(*channel->file, channel->channel, &bench->samples);
    channel->count = bench->samples.values.size();
    const std::size_t stretch = channel->stretch;
    std::shared_future<std::string> times = times_.find(bench->samples.times_s, stretch);
    if (!times.valid()) {
      times = std::async(std::launch::async, [bench, stretch] { return times_block(bench.get(), stretch); }).share();
      times_.add(bench->samples.times_s, stretch, times);
    }
    auto values = std::async(std::launch::async, [bench, stretch] { return values_block(bench.get(), stretch); });
    running_.push_back({channel, std::move(bench), std::move(times), std::move(values)});
  }
  void finish() {
    while (!running_.empty()) take_first();
  }

 private:
  struct Running {
    EncodedChannel* channel;
    std::shared_ptr<Workbench> bench;
    std::shared_future<std::string> times;
    std::future<Values> values;
  };

  std::shared_ptr<Workbench> free_bench() {
    if (free_.empty()) return std::make_shared<Workbench>();
    std::shared_ptr<Workbench> bench = std::move(free_.back());
    free_.pop_back();
    return bench;
  }
  void take_first() {
    Running& first = running_.front();
    Values values = first.values.get();
    first.channel->times = first.times.get();
    first.channel->decimals = values.decimals;
    first.channel->values = std::move(values.block);
    free_.push_back(std::move(first.bench));
    running_.pop_front();
  }

  TimesOfOneRate times_;
  std::deque<Running> running_;
  std::vector<std::shared_ptr<Workbench>> free_;
};

}  // namespace

std::vector<EncodedChannel> listed_channels(const std::vector<PageFile>& files) {
  std::vector<EncodedChannel> channels;
  for (const PageFile& file : files) {
    for (const Channel& channel : file.channels) {
      EncodedChannel& listed = channels.emplace_back();
      listed.file = &file;
      listed.channel = channel;
      if (file.laps.empty()) listed.count = file.session->sample_count(channel, std::nullopt);
      for (const Lap& lap : file.laps) listed.count += file.session->sample_count(channel, lap.index());
    }
  }
  return channels;
}

void encode(std::vector<EncodedChannel*> channels) {
  // Memory that holds the longest holds all.
  std::stable_sort(channels.begin(), channels.end(),
                   [](const EncodedChannel* a, const EncodedChannel* b) { return a->count > b->count; });
  Encoder encoder;
  for (EncodedChannel* channel : channels) encoder.add(channel);
  encoder.finish();
}

}  // namespace traguardo::tool
