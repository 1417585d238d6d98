// SPDX-License-Identifier: MIT
#include "logger/losses.h"

#include <array>
#include <cmath>

namespace traguardo {

namespace {

// Whether most samples follow each other by a period, looked at in a few places: damage leaves holes in an even rate,
// but between them it stays even.
bool holds_its_rate(CParsedChannel* channel, u64 period, u64 first, u64 last) {
  constexpr u64 kPlaces = 16;
  constexpr std::size_t kSamples = 17;
  constexpr double kClockStep = 0.001;
  std::array<double, kSamples> times{};
  std::array<double, kSamples> values{};
  const double period_s = static_cast<double>(period) * 1e-6;
  u64 places_with_samples = 0;
  u64 intervals = 0;
  u64 even = 0;
  for (u64 place = 0; place < kPlaces; ++place) {
    const u64 from = first + (last - first) / kPlaces * place;
    const u32 count = channel->GetValoriRange(from, from + period * (kSamples + 1), times.data(), values.data(),
                                              static_cast<int>(kSamples));
    if (count != 0) ++places_with_samples;
    for (u32 i = 1; i < count; ++i) {
      ++intervals;
      if (std::abs(times[i] - times[i - 1] - period_s) <= kClockStep + period_s / 8) ++even;
    }
  }
  return 2 * places_with_samples >= kPlaces && intervals != 0 && 4 * even >= 3 * intervals;
}

}  // namespace

std::optional<u64> missing_samples(CParsedChannel* channel) {
  const u64 count = channel->GetNumValori();
  const u64 period = channel->GetPeriodo();
  const u64 first = channel->GetPrimoTempo();
  const u64 last = channel->GetUltimoTempo();
  if (count < 2 || period == 0 || last <= first) return std::nullopt;
  // Times are whole milliseconds, and so up to one of them off.
  const u64 wanted = (last - first + period / 2) / period + 1;
  if (wanted <= count) return 0;
  if (!holds_its_rate(channel, period, first, last)) return std::nullopt;
  return wanted - count;
}

}  // namespace traguardo
