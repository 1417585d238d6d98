// SPDX-License-Identifier: MIT
#include "thinning.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <set>

#include "inside.h"
#include "kept_values.h"
#include "rows.h"

namespace traguardo::tool {

namespace {

struct Size {
  EncodedChannel* channel = nullptr;
  std::size_t bytes = 0;
  std::size_t cost = 0;
};

bool costs_less(const Size& a, const Size& b) {
  return a.cost < b.cost;
}

// Which is thinned first. Derived channels are computed between far fewer solutions, and distances need all of a speed.
Size size_of(EncodedChannel* channel, std::size_t bytes) {
  constexpr std::size_t kSparedBy = 8;
  const PageFile& file = *channel->file;
  const bool is_derived = channel->channel.kind == ChannelKind::gps;
  const bool is_speed = file.speed && are_same(file.channels[*file.speed], channel->channel);
  return {channel, bytes, is_speed ? bytes / kSparedBy : is_derived ? bytes * kSparedBy : bytes};
}

std::size_t sum_of(const std::vector<Size>& sizes) {
  return std::accumulate(sizes.begin(), sizes.end(), std::size_t{0},
                         [](std::size_t sum, const Size& size) { return sum + size.bytes; });
}

// The channels whose stretches grew. Twice the stretch takes about half.
std::vector<EncodedChannel*> lengthen(std::vector<Size> sizes, std::size_t most_bytes) {
  constexpr std::size_t kShortestStretch = 4;  // that takes less than its samples
  std::size_t bytes = sum_of(sizes);
  std::erase_if(sizes, [](const Size& size) { return size.channel->count <= size.channel->stretch; });
  std::make_heap(sizes.begin(), sizes.end(), costs_less);
  std::set<EncodedChannel*> grown;
  while (bytes > most_bytes && !sizes.empty() && sizes.front().bytes > 1) {
    std::pop_heap(sizes.begin(), sizes.end(), costs_less);
    Size& size = sizes.back();
    size.channel->stretch = std::max(kShortestStretch, size.channel->stretch * 2);
    grown.insert(size.channel);
    bytes -= size.bytes - size.bytes / 2;
    size.bytes /= 2;
    size.cost /= 2;
    std::push_heap(sizes.begin(), sizes.end(), costs_less);
  }
  return {grown.begin(), grown.end()};
}

// A piece from the middle of the session; empty where that has none.
std::vector<double> values_from_the_middle(const EncodedChannel& channel) {
  constexpr u64 kWanted = 8192;
  const SFileQLT& file = inside_of(*channel.file->session);
  std::vector<double> values;
  std::vector<double> times;
  if (channel.channel.kind == ChannelKind::gps) {
    const u64 count = std::min<u64>(kWanted, file.gps.grid().size());
    values.resize(static_cast<std::size_t>(count));
    times.resize(values.size());
    file.gps.grid().fill(static_cast<u32>(channel.channel.index), (file.gps.grid().size() - count) / 2, count,
                         GpsTimeUnit::kSeconds, times.data(), values.data());
  } else if (channel.channel.kind == ChannelKind::logged && channel.count > 0) {
    CSuperChannel& logged = *file.view->GetCanali()[static_cast<std::size_t>(channel.channel.index)];
    const u64 axis = axis_us(file);
    const u64 width = axis / (1 + channel.count / kWanted);
    const u64 from = logged.GetDa() + (axis - width) / 2;
    values.resize(static_cast<std::size_t>(logged.GetNumValoriRange(from, from + width)));
    times.resize(values.size());
    logged.GetValoriRange(from, from + width, times.data(), values.data(), static_cast<int>(values.size()));
  }
  return values;
}

// Times take next to nothing.
std::size_t estimated_bytes(const EncodedChannel& channel) {
  const std::vector<double> values = values_from_the_middle(channel);
  std::vector<std::int32_t> kept;
  keep_values(values, &kept);
  if (values.empty()) return channel.count;
  return block_of_values(kept).size() * channel.count / values.size();
}

}  // namespace

void encode_within(std::vector<EncodedChannel>* channels, std::optional<std::size_t> most_bytes) {
  std::vector<EncodedChannel*> due;
  std::size_t samples = 0;
  for (EncodedChannel& channel : *channels) {
    due.push_back(&channel);
    samples += channel.count;
  }
  // Reading and encoding everything twice is what takes long: a look at a piece of each saves most of that.
  if (most_bytes && samples > *most_bytes) {
    std::vector<Size> sizes;
    sizes.reserve(due.size());
    for (EncodedChannel* channel : due) sizes.push_back(size_of(channel, estimated_bytes(*channel)));
    lengthen(sizes, *most_bytes);
  }
  while (!due.empty()) {
    encode(due);
    if (!most_bytes) return;
    std::vector<Size> sizes;
    for (EncodedChannel& channel : *channels) sizes.push_back(size_of(&channel, channel.bytes()));
    due = lengthen(sizes, *most_bytes);
  }
}

}  // namespace traguardo::tool
