// SPDX-License-Identifier: MIT
// regulation/ holds what a legacy session computes per run beyond plain channels: the boost limit, the limiter seconds,
// the export to comma-separated text and the elapsed-time tables. It includes support, units and math only; legacy,
// which owns the session, calls it through RegulationCalculator (calculator.h).
//
// The session is seen through the small view below, which legacy implements, so that no arrow runs back to the reader.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/bytes.h"

namespace traguardo {

// One channel as it stands. Sample i stands at i * period_ms from the start of the session.
struct SessionChannel {
  std::string name;
  u32 period_ms = 0;
  u32 frequency_hz = 0;
  // As many as the channel has; lives until the table or its values are made anew.
  std::span<const float> samples;
};

// A run: from the start of its first lap over `duration_ms`, which is last lap start - first lap start + last lap time.
struct SessionRun {
  u16 number = 0;
  u32 start_ms = 0;
  u32 duration_ms = 0;
};

class SessionView {
 public:
  virtual ~SessionView() = default;

  // Channels in table order, logged and derived ones alike. REQUIRES: index below channel_count().
  virtual std::size_t channel_count() const = 0;
  virtual SessionChannel channel(std::size_t index) const = 0;
  // The unit text of the channel's measure, 8-bit.
  virtual std::string channel_unit(std::size_t index) const = 0;
  // The same samples as channel(index).samples, to be written.
  virtual std::span<float> output_samples(std::size_t index) = 0;

  // One per record of the run table, in its order.
  virtual std::vector<SessionRun> runs() const = 0;
  virtual std::string racer() const = 0;
  // In decimal: the serial number of the header, or the device ID of the identity block where the header has none.
  virtual std::string logger_id() const = 0;
  // The session file without its folder, and whole.
  virtual std::wstring session_file_name() const = 0;
  virtual std::wstring session_path() const = 0;
  // All files that the session is read from, whole.
  virtual std::vector<std::wstring> input_paths() const { return {session_path()}; }
  // Where configuration files are sought and reports written; without a trailing slash.
  virtual std::wstring working_folder() const = 0;
};

// Channels by exact name; of several with one name the first of the table.
class ChannelNames {
 public:
  explicit ChannelNames(const SessionView& session);
  std::optional<std::size_t> find(std::string_view name) const;

 private:
  std::map<std::string, std::size_t, std::less<>> places_;
};

// The value at a time from the first sample on: between its two neighbours in a straight line, the last sample behind
// them, 0.0 with fewer than two samples.
float value_at(std::span<const float> samples, u32 period_ms, u64 time_ms);

// The runs of the session as far as they are believed. Spans are claims of a lap table: together they count up to twice
// what the channels cover, and an hour in any case, so that no file asks for work that its size doesn't warrant.
std::vector<SessionRun> believed_runs(const SessionView& session);

// "Run 2 of file NAME" and a line feed: what every report of a run begins with.
std::string run_header(const SessionView& session, const SessionRun& run);

}  // namespace traguardo
