// SPDX-License-Identifier: MIT
#include "merged_session.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <utility>

#include "inputs.h"
#include "paths.h"
#include "support/platform/platform.h"

namespace traguardo::tool {

namespace {

constexpr u64 kMicrosecondsPerMs = 1000;

// Times may be wild, as a lap time in a file may be negative and wrap.
u32 whole_ms(u64 time_us) {
  constexpr u64 kLargest = std::numeric_limits<u32>::max();
  return static_cast<u32>(std::min(time_us / kMicrosecondsPerMs, kLargest));
}

// First and last lap; null without one.
struct LapEnds {
  const SRkLap* first = nullptr;
  const SRkLap* last = nullptr;
};

LapEnds lap_ends_of(const SRkSession& session) {
  LapEnds ends;
  for (const auto& [number, lap] : session.laps) {
    if (lap == nullptr) continue;
    if (ends.first == nullptr) ends.first = lap.get();
    ends.last = lap.get();
  }
  return ends;
}

// Microseconds between two samples in the mean; 0 where no rate can be told.
u64 mean_period_us(CSuperChannel& channel) {
  const u64 count = channel.GetNumValori();
  if (count < 2) return 0;
  std::vector<SChannelRecord> records(static_cast<std::size_t>(count));
  if (channel.GetRecord(records.data(), count) != count) return 0;
  const u64 first = records.front().time();
  const u64 last = records.back().time();
  return last > first ? (last - first) / (count - 1) : 0;
}

u64 rounded_quotient(u64 dividend, u64 divisor) {
  return (dividend + divisor / 2) / divisor;
}

}  // namespace

MergedSession::MergedSession(const Session& session, std::wstring working_folder,
                             const std::function<bool(const std::string& name)>& wanted)
    : file_(inside_of(session)), working_folder_(std::move(working_folder)) {
  for (const auto& channel : file_.view->GetCanali()) {
    Row row;
    row.name = channel->GetNome();
    row.unit = channel->GetUnita();
    if (wanted(row.name)) fill(*channel, &row);
    rows_.push_back(std::move(row));
  }
}

void MergedSession::fill(CSuperChannel& channel, Row* row) const {
  constexpr u64 kMicrosecondsPerSecond = 1'000'000;
  const u64 mean_us = mean_period_us(channel);
  if (mean_us == 0) return;
  row->period_ms = std::max(whole_ms(mean_us + kMicrosecondsPerMs / 2), u32{1});
  row->frequency_hz = static_cast<u32>(rounded_quotient(kMicrosecondsPerSecond, mean_us));
  row->samples = on_even_grid(file_, channel, row->period_ms * kMicrosecondsPerMs);
}

std::size_t MergedSession::add_output(const std::string& name, u32 period_ms) {
  // What a clock claims beyond an hour needs samples behind it, one a second at the least.
  constexpr u64 kAlwaysBelievedMs = 3'600'000;
  constexpr u32 kLongestPeriodMs = 1000;
  u64 covered_ms = 0;
  for (const Row& row : rows_) {
    covered_ms = std::max<u64>(covered_ms, row.samples.size() * u64{std::min(row.period_ms, kLongestPeriodMs)});
  }
  const u64 believed = (kAlwaysBelievedMs + 2 * covered_ms) / period_ms;
  const u64 points = std::min(axis_us(file_) / (period_ms * kMicrosecondsPerMs), believed);
  Row row;
  row.name = name;
  row.period_ms = period_ms;
  row.frequency_hz = 1000 / period_ms;
  row.samples.assign(static_cast<std::size_t>(points), std::numeric_limits<float>::quiet_NaN());
  rows_.push_back(std::move(row));
  return rows_.size() - 1;
}

SessionChannel MergedSession::channel(std::size_t index) const {
  const Row& row = rows_[index];
  SessionChannel channel;
  channel.name = row.name;
  channel.period_ms = row.period_ms;
  channel.frequency_hz = row.frequency_hz;
  channel.samples = row.samples;
  return channel;
}

std::vector<SessionRun> MergedSession::runs() const {
  std::vector<SessionRun> runs;
  for (const auto& [number, session] : file_.view->GetSessioni()) {
    if (session == nullptr) continue;
    const LapEnds ends = lap_ends_of(*session);
    if (ends.first == nullptr) continue;
    SessionRun run;
    run.number = static_cast<u16>(number);
    run.start_ms = whole_ms(ends.first->start);
    run.duration_ms = whole_ms(ends.last->start - ends.first->start + ends.last->duration);
    runs.push_back(run);
  }
  if (runs.empty()) runs.push_back({1, 0, whole_ms(axis_us(file_))});
  return runs;
}

std::string MergedSession::logger_id() const {
  for (const auto& [device_id, idents] : file_.reader->GetMainIdents()) {
    if (!idents.empty()) return std::to_string(device_id);
  }
  return "0";
}

std::wstring MergedSession::session_file_name() const {
  return platform::path_from_host_bytes(bytes_of(path_of(file_.path).filename()));
}

std::wstring MergedSession::session_path() const {
  return platform::path_from_host_bytes(file_.path);
}

std::vector<std::wstring> MergedSession::input_paths() const {
  Inputs inputs;
  inputs.add_session(file_.path);
  std::vector<std::wstring> paths;
  for (const std::string& path : inputs.paths()) paths.push_back(platform::path_from_host_bytes(path));
  return paths;
}

std::span<const float> samples_in(const SessionChannel& channel, const SessionRun& run) {
  if (channel.period_ms == 0) return {};
  const std::size_t first = std::min<std::size_t>(run.start_ms / channel.period_ms, channel.samples.size());
  const std::size_t count = run.duration_ms / channel.period_ms;
  return channel.samples.subspan(first, std::min(count, channel.samples.size() - first));
}

}  // namespace traguardo::tool
