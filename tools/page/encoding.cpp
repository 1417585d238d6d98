// SPDX-License-Identifier: MIT
#include "encoding.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <future>
#include <numeric>
#include <set>
#include <thread>
#include <utility>

#include "kept_values.h"
#include "rows.h"

namespace traguardo::tool {

namespace {

std::int64_t microseconds(double time_s) {
  constexpr double kMost = 9e15;  // what a double still counts, and so a script
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

Samples samples_of(const PageFile& file, const Channel& channel) {
  Samples samples;
  file.session->read_in_pieces(channel, file.laps, [&samples](const Samples& piece) {
    append(piece, &samples);
    return true;
  });
  return samples;
}

EncodedChannel encoded(EncodedChannel channel, Samples samples) {
  put_in_order(&samples);
  channel.count = samples.values.size();
  std::vector<std::int64_t> times_us;
  times_us.reserve(samples.times_s.size() / channel.stretch + 1);
  for (std::size_t i = 0; i < samples.times_s.size(); i += channel.stretch) {
    times_us.push_back(microseconds(samples.times_s[i]));
  }
  channel.times = block_of_times(times_us);
  const KeptValues kept = kept_values_of(samples.values);
  channel.decimals = kept.decimals;
  channel.values = channel.stretch > 1 ? block_of_extremes(kept.values, channel.stretch) : block_of_values(kept.values);
  return channel;
}

// A session is read by one thread; the others encode what it has read.
void encode(const std::vector<EncodedChannel*>& channels) {
  const std::size_t most_at_once = std::max(2U, std::thread::hardware_concurrency());
  std::deque<std::pair<EncodedChannel*, std::future<EncodedChannel>>> running;
  const auto take_first = [&running] {
    *running.front().first = running.front().second.get();
    running.pop_front();
  };
  for (EncodedChannel* channel : channels) {
    if (running.size() >= most_at_once) take_first();
    Samples samples = samples_of(*channel->file, channel->channel);
    running.emplace_back(channel, std::async(std::launch::async, encoded, *channel, std::move(samples)));
  }
  while (!running.empty()) take_first();
}

// Which is thinned first. Derived channels are computed between far fewer solutions, and distances need all of a speed.
std::size_t cost_of(const EncodedChannel& channel) {
  constexpr std::size_t kSparedBy = 8;
  const PageFile& file = *channel.file;
  const bool is_derived = channel.channel.kind == ChannelKind::gps;
  const bool is_speed = file.speed && are_same(file.channels[*file.speed], channel.channel);
  return is_speed ? channel.bytes() / kSparedBy : is_derived ? channel.bytes() * kSparedBy : channel.bytes();
}

std::size_t bytes_of(const std::vector<EncodedChannel>& channels) {
  return std::accumulate(channels.begin(), channels.end(), std::size_t{0},
                         [](std::size_t sum, const EncodedChannel& channel) { return sum + channel.bytes(); });
}

}  // namespace

std::vector<EncodedChannel> encode_channels(const std::vector<PageFile>& files) {
  std::vector<EncodedChannel> channels;
  for (const PageFile& file : files) {
    for (const Channel& channel : file.channels) channels.push_back({&file, channel, 1, 0, 0, {}, {}});
  }
  std::vector<EncodedChannel*> all;
  for (EncodedChannel& channel : channels) all.push_back(&channel);
  encode(all);
  return channels;
}

void thin_channels(std::vector<EncodedChannel>* channels, std::size_t most_bytes) {
  constexpr std::size_t kShortestStretch = 4;  // that takes less than its samples
  for (std::size_t bytes = bytes_of(*channels); bytes > most_bytes; bytes = bytes_of(*channels)) {
    struct Size {
      std::size_t cost;
      std::size_t bytes;
      EncodedChannel* channel;
      bool operator<(const Size& other) const { return cost < other.cost; }
    };
    std::vector<Size> sizes;
    for (EncodedChannel& channel : *channels) {
      if (channel.count > channel.stretch) sizes.push_back({cost_of(channel), channel.bytes(), &channel});
    }
    if (sizes.empty()) return;
    std::make_heap(sizes.begin(), sizes.end());
    std::set<EncodedChannel*> thinned;
    // By what each will take: twice the stretch takes about half.
    while (bytes > most_bytes && sizes.front().bytes > 1) {
      std::pop_heap(sizes.begin(), sizes.end());
      Size& size = sizes.back();
      size.channel->stretch = std::max(kShortestStretch, size.channel->stretch * 2);
      thinned.insert(size.channel);
      bytes -= size.bytes - size.bytes / 2;
      size.bytes /= 2;
      size.cost /= 2;
      std::push_heap(sizes.begin(), sizes.end());
    }
    if (thinned.empty()) return;
    encode({thinned.begin(), thinned.end()});
  }
}

}  // namespace traguardo::tool
