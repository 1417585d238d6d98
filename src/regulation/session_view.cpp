// SPDX-License-Identifier: MIT
#include "regulation/session_view.h"

#include <algorithm>

#include "support/event_log.h"
#include "support/platform/platform.h"
#include "support/table_rows.h"

namespace traguardo {

ChannelNames::ChannelNames(const SessionView& session) {
  for (std::size_t i = 0; i < session.channel_count(); ++i) places_.try_emplace(session.channel(i).name, i);
}

std::optional<std::size_t> ChannelNames::find(std::string_view name) const {
  const auto place = places_.find(name);
  if (place == places_.end()) return std::nullopt;
  return place->second;
}

float value_at(std::span<const float> samples, u32 period_ms, u64 time_ms) {
  if (samples.size() < 2 || period_ms == 0) return 0.0F;
  const u64 before = time_ms / period_ms;
  const u64 last = samples.size() - 1;
  const float from = samples[static_cast<std::size_t>(std::min(before, last))];
  const float to = samples[static_cast<std::size_t>(std::min(before + 1, last))];
  return on_line(from, to, static_cast<float>(time_ms % period_ms), static_cast<float>(period_ms));
}

std::vector<SessionRun> believed_runs(const SessionView& session) {
  constexpr u64 kAlwaysBelievedMs = 3600000;
  // The slowest real rate; what claims to be slower doesn't cover more.
  constexpr u32 kLongestPeriodMs = 1000;
  u64 covered_ms = 0;
  for (std::size_t i = 0; i < session.channel_count(); ++i) {
    const SessionChannel channel = session.channel(i);
    covered_ms = std::max<u64>(covered_ms, channel.samples.size() * u64{std::min(channel.period_ms, kLongestPeriodMs)});
  }
  std::vector<SessionRun> runs = session.runs();
  u64 left_ms = kAlwaysBelievedMs + 2 * covered_ms;
  for (SessionRun& run : runs) {
    // What stands behind a run's own start comes first, so that a damaged one leaves the others their time.
    constexpr u64 kSlackMs = 60000;
    const u64 behind_ms = (covered_ms > run.start_ms ? covered_ms - run.start_ms : 0) + kSlackMs;
    const u32 claimed_ms = run.duration_ms;
    run.duration_ms = static_cast<u32>(std::min({u64{claimed_ms}, behind_ms, left_ms}));
    if (run.duration_ms < claimed_ms) {
      TRAGUARDO_LOG("believed_runs", "%s [%d] WARNING = Run %u claims %u ms, %u ms are believed\n", run.number,
                    claimed_ms, run.duration_ms);
    }
    left_ms -= run.duration_ms;
  }
  return runs;
}

std::string run_header(const SessionView& session, const SessionRun& run) {
  return "Run " + std::to_string(run.number) + " of file " +
         platform::host_bytes_from_path(session.session_file_name()) + "\n";
}

}  // namespace traguardo
