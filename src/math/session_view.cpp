// SPDX-License-Identifier: MIT
#include "math/session_view.h"

#include <algorithm>

namespace traguardo {

void resample_linear(std::span<const float> source, u32 source_period_ms, u32 target_period_ms, std::size_t first,
                     std::span<float> out) {
  std::size_t filled = 0;
  if (source_period_ms == target_period_ms) {
    const std::span<const float> present = source.subspan(std::min(first, source.size()));
    filled = std::min(present.size(), out.size());
    std::ranges::copy(present.first(filled), out.begin());
  } else if (source_period_ms > 0 && !source.empty()) {
    const u64 last_ms = u64{source_period_ms} * (source.size() - 1);
    for (u64 time_ms = u64{target_period_ms} * first; filled < out.size() && time_ms <= last_ms;
         ++filled, time_ms += target_period_ms) {
      const std::size_t before = static_cast<std::size_t>(time_ms / source_period_ms);
      const std::size_t behind = std::min(before + 1, source.size() - 1);
      const u64 past_ms = time_ms - u64{before} * source_period_ms;
      const float fraction = static_cast<float>(past_ms) / static_cast<float>(source_period_ms);
      out[filled] = source[before] + (source[behind] - source[before]) * fraction;
    }
  }
  std::ranges::fill(out.subspan(filled), 0.0F);
}

}  // namespace traguardo
