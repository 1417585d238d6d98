// SPDX-License-Identifier: MIT
#include "lap_choice.h"

#include <fmt/format.h>

#include <charconv>
#include <utility>

#include "failure.h"

namespace traguardo::tool {

namespace {

constexpr const char* kBest = "best";

struct LapRange {
  int first = 0;
  int last = 0;
};

std::optional<LapRange> range_of(const std::string& text) {
  const char* const end = text.data() + text.size();
  LapRange range;
  std::from_chars_result read = std::from_chars(text.data(), end, range.first);
  if (read.ec != std::errc()) return std::nullopt;
  range.last = range.first;
  if (read.ptr != end && *read.ptr == '-') read = std::from_chars(read.ptr + 1, end, range.last);
  if (read.ec != std::errc() || read.ptr != end || range.last < range.first) return std::nullopt;
  return range;
}

}  // namespace

std::string reason_not_a_lap_choice(const std::string& text) {
  return text == kBest || range_of(text) ? "" : "neither a lap, as 4, nor a range, as 3-7, nor best: " + text;
}

std::vector<Lap> all_laps(const Session& session) {
  std::vector<Lap> laps = session.laps();
  if (laps.empty()) throw Failure(fmt::format("no laps in {}", session.path()));
  return laps;
}

std::vector<Lap> chosen_laps(const Session& session, const std::string& text) {
  std::vector<Lap> laps = session.laps();
  if (text == kBest) {
    const std::optional<Lap> best = best_lap(laps);
    if (!best) throw Failure(fmt::format("no finished lap in {}", session.path()));
    return {*best};
  }
  const LapRange range = range_of(text).value_or(LapRange{});
  std::vector<Lap> chosen;
  for (const Lap& lap : laps) {
    if (lap.number >= range.first && lap.number <= range.last) chosen.push_back(lap);
  }
  if (range.first < kFirstLapNumber || chosen.empty() || chosen.back().number != range.last) {
    throw Failure(fmt::format("no lap {} in {}, which has {}", text, session.path(), laps.size()));
  }
  return chosen;
}

Lap chosen_lap(const Session& session, const std::string& text) {
  const std::vector<Lap> laps = chosen_laps(session, text.empty() ? kBest : text);
  if (laps.size() > 1) throw Failure(fmt::format("one lap is wanted of {}, not {}", session.path(), text));
  return laps.front();
}

std::optional<Lap> best_lap(const std::vector<Lap>& laps) {
  std::optional<Lap> best;
  for (const Lap& lap : laps) {
    if (lap.finished && lap.duration_s > 0 && (!best || lap.duration_s < best->duration_s)) best = lap;
  }
  return best;
}

std::vector<Lap> clean_laps(const std::vector<Lap>& laps) {
  constexpr double kMost = 1.07;
  const std::optional<Lap> best = best_lap(laps);
  std::vector<Lap> clean;
  for (const Lap& lap : laps) {
    if (best && lap.finished && lap.duration_s > 0 && lap.duration_s <= best->duration_s * kMost) clean.push_back(lap);
  }
  return clean;
}

}  // namespace traguardo::tool
