// SPDX-License-Identifier: MIT
#include "inside.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

#include "failure.h"
#include "support/platform/platform.h"
#include "text.h"

namespace traguardo::tool {

namespace {

constexpr u64 kMostPoints = 100'000'000;

struct FreeBlock {
  void operator()(float* block) const { platform::heap_free(nullptr, block); }
};

}  // namespace

SFileQLT& inside_of(const Session& session) {
  return *find_file(session.handle());
}

// What a mark fills has the mark's number of laps; a lap that was only begun, or that the reader added, has none. The
// older family says of each lap whether it counts: one that the end of the recording cut doesn't.
bool was_lap_finished(const Session& session, int lap) {
  const SRkLap* found = nullptr;
  if (find_lap(inside_of(session), lap, &found) != LapLookup::kFound) return false;
  return found->lap_number != 0 && found->counts;
}

bool is_held(const Session& session, const Channel& channel) {
  const CParsedChannel* const parsed = parsed_channel_of(session, channel);
  return parsed != nullptr && parsed->GetTieniUltimoValore();
}

const CParsedChannel* parsed_channel_of(const Session& session, const Channel& channel) {
  if (channel.kind != ChannelKind::logged) return nullptr;
  for (const auto& known : inside_of(session).reader->GetCanali()) {
    if (to_utf8(known->GetNome()) == channel.name) return dynamic_cast<const CParsedChannel*>(known.get());
  }
  return nullptr;
}

std::vector<const SGpsRecord*> gps_solutions_of(const SFileQLT& file) {
  std::vector<const SGpsRecord*> solutions;
  std::string name;
  const IRkGpsTrace* const trace = file.view->GetTracciaGpsMigliore(&name);
  if (trace != nullptr) trace->GetGoodSamplePointers(solutions);
  return solutions;
}

LapSlice grid_slice_of(const SFileQLT& file, std::optional<int> lap) {
  if (!lap) return {0, file.gps.grid().size()};
  const SRkLap* found = nullptr;
  if (find_lap(file, *lap, &found) != LapLookup::kFound) return {};
  return file.gps.grid_lap(found->start, found->start + found->duration);
}

u64 axis_us(const SFileQLT& file) {
  const auto& channels = file.view->GetCanali();
  return channels.empty() ? 0 : channels.front()->GetA() - channels.front()->GetDa();
}

std::optional<double> last_time_s(CSuperChannel& channel) {
  constexpr u64 kFirstStretchUs = 1'000'000;
  if (channel.GetNumValori() == 0) return std::nullopt;
  const u64 end = channel.GetA();
  // Backwards from the end of the axis, in stretches that double until one has samples.
  for (u64 stretch = kFirstStretchUs;; stretch *= 2) {
    const u64 from = end - std::min(stretch, end - channel.GetDa());
    const u64 count = channel.GetNumValoriRange(from, end);
    if (count == 0 && from > channel.GetDa()) continue;
    std::vector<double> times(static_cast<std::size_t>(count));
    std::vector<double> values(times.size());
    const u32 written = channel.GetValoriRange(from, end, times.data(), values.data(), static_cast<int>(count));
    return written == 0 ? std::nullopt : std::optional<double>(times[written - 1]);
  }
}

u64 points_on_axis(const SFileQLT& file, u64 step_us) {
  const u64 points = axis_us(file) / step_us;
  if (points > kMostPoints) {
    throw Failure(fmt::format("{} s in steps of {} s are more than a grid can hold in {}",
                              static_cast<double>(axis_us(file)) * 1e-6, static_cast<double>(step_us) * 1e-6,
                              file.path));
  }
  return points;
}

std::vector<float> on_even_grid(const SFileQLT& file, CSuperChannel& channel, u64 step_us) {
  points_on_axis(file, step_us);  // Throws before any memory is taken.
  float* block = nullptr;
  u32 count = 0;
  const bool good = channel.GetValoriEvery(nullptr, step_us, &block, &count);
  const std::unique_ptr<float, FreeBlock> owner(block);
  if (!good || block == nullptr) throw std::bad_alloc();
  return std::vector<float>(block, block + count);
}

}  // namespace traguardo::tool
