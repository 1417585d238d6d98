// SPDX-License-Identifier: MIT
// The limiter: how many seconds of a run the engine stayed above a speed limit, short spikes and sudden jumps left
// aside. Configured by FMI-limiter.txt in the session's working folder.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "regulation/session_view.h"
#include "support/bytes.h"

namespace traguardo {

inline constexpr const wchar_t* kLimiterConfigurationName = L"\\FMI-limiter.txt";
inline constexpr const wchar_t* kLimiterReportName = L"\\FMI-output.txt";

struct LimiterSettings {
  float limiter = 9000.0F;    // in the unit of the engine speed
  u32 pts_number = 4;         // samples in a row that must lie above it
  float threshold = 2000.0F;  // a rise across the limit that is this big isn't believed

  // What a section says; a key that it doesn't hold keeps its default.
  static LimiterSettings read(std::string_view section);
};

// The running total over the samples of one run.
class SecondsOverLimit {
 public:
  SecondsOverLimit(const LimiterSettings& settings, u32 period_ms);
  // The next sample; the total so far.
  float step(float engine);
  float seconds() const { return seconds_; }

 private:
  LimiterSettings settings_;
  float period_s_;
  float seconds_ = 0.0F;
  float previous_ = 0.0F;
  // The latest samples in a row that lay above the limit, counted up to pts_number. The samples before the first one
  // count as 0.0.
  u32 above_;
  bool armed_ = false;
};

// The calculator, over the runs of one session.
class LimiterCheck {
 public:
  // `output`: the channel that is filled.
  LimiterCheck(SessionView* session, std::size_t output);
  // One run; what it has to say goes into the report. Without a section for the logger one is appended to the
  // configuration file, for the runs that follow. False without an engine speed; the output is untouched then.
  bool run(const SessionRun& run);
  const std::string& report() const { return report_; }
  // Adds it to the reports of earlier computations, in one piece.
  void write_report() const;

 private:
  void read_section();
  void append_section();
  void report(const SessionRun& run, std::string_view text);
  float fill(const SessionRun& run);

  SessionView* session_;
  std::size_t output_;
  std::string logger_id_;
  std::optional<std::size_t> engine_;
  std::optional<LimiterSettings> settings_;
  std::string report_;
};

}  // namespace traguardo
