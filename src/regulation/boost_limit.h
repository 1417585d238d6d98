// SPDX-License-Identifier: MIT
// The boost limit: the boost pressure of a run against a limit that depends on the engine speed, and the flag that is
// raised when the pressure was too high for too long. Configured by FIA.txt in the session's working folder.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "regulation/first_above.h"
#include "regulation/scalers.h"
#include "regulation/session_view.h"
#include "support/bytes.h"

namespace traguardo {

inline constexpr const wchar_t* kBoostConfigurationName = L"\\FIA.txt";
inline constexpr std::string_view kBoostLimitFileKey = "maxpboost=";
inline constexpr const wchar_t* kBoostReportName = L"\\FIA_comp_output.txt";

// The limit over the engine speed, in the unit that the limits have.
class CPBoostLimit {
 public:
  // Borrowed, of equal length and not empty.
  CPBoostLimit(const std::vector<float>& engine_speeds, const std::vector<float>& limits);
  // Below the first point its limit, between two points in a straight line, 0 from the last point on.
  float limit_at(float rpm) const;

 private:
  const std::vector<float>& engine_speeds_;
  const std::vector<float>& limits_;
  FirstAbove speeds_above_;
};

// A file of such points: "rpm=bar" lines, both above 0; the limits in mbar.
struct BoostLimitFile {
  enum class State { kMissing, kUnusable, kGood };
  State state = State::kMissing;
  std::vector<float> engine_speeds;
  std::vector<float> limits;

  static BoostLimitFile read(const std::wstring& path);
};

struct BoostTriggers {
  float counter_low = 5.0F;     // crossings of the low trigger that raise the flag
  float trigger_low = 30.0F;    // on the decayed integral
  float trigger_high = 100.0F;  // on the same; one crossing raises the flag
  float decay = 5.0F;           // of the integral, per second
};

// The flag over the samples of one run.
class BoostFlagRun {
 public:
  struct Sample {
    float integral = 0.0F;
    u32 low_counter = 0;
    u32 high_counter = 0;
    bool flag = false;
  };

  BoostFlagRun(const BoostTriggers& triggers, u32 period_ms, u32 frequency_hz)
      : triggers_(triggers), period_ms_(period_ms), frequency_hz_(static_cast<float>(frequency_hz)) {}
  // The next sample. boost and limit in mbar, throttle in percent.
  Sample step(float boost, float limit, float rpm, float throttle);

 private:
  BoostTriggers triggers_;
  u32 period_ms_;
  float frequency_hz_;
  Sample last_;
  float decayed_ = 0.0F;
  u64 engine_off_ms_ = 0;
};

// What a section of the configuration file says.
struct BoostSettings {
  std::string pressure;
  std::string limit_file;
  std::optional<std::size_t> boost;
  std::optional<std::size_t> second_boost;
  std::optional<std::size_t> rpm;
  std::optional<std::size_t> throttle;
  bool step_values_wanted = false;
  bool fir = false;
  i32 scaling = 0;
  float to_mbar = 1.0F;
  BoostTriggers triggers;

  static BoostSettings read(std::string_view section, const ChannelNames& channels);
};

// Places of the channels that the calculator fills; -1 for one that the table lacks.
struct BoostOutputs {
  i32 flag = -1;
  i32 limit = -1;
  i32 value = -1;
  i32 integral = -1;
  i32 low_counter = -1;
  i32 high_counter = -1;
};

// The calculator, over the runs of one session. Configuration and limit file are read once: every run has the session's
// racer.
class BoostLimitCheck {
 public:
  BoostLimitCheck(SessionView* session, const BoostOutputs& outputs);
  BoostLimitCheck(const BoostLimitCheck&) = delete;
  BoostLimitCheck& operator=(const BoostLimitCheck&) = delete;
  // One run; what it has to say goes into the report. False where the run could not be computed for a fault of its
  // configuration; the outputs are untouched then.
  bool run(const SessionRun& run);
  const std::string& report() const { return report_; }
  // In the place of that of an earlier computation, which goes in any case.
  void write_report() const;

 private:
  void report(const SessionRun& run, std::string_view text);
  bool report_what_is_missing(const SessionRun& run);
  bool read_limit_file(const SessionRun& run);
  std::vector<float> boost_signal(const SessionRun& run) const;
  void raise_flags(const SessionRun& run, const CScaler& scaler);
  std::span<float> output(i32 place) const;
  std::size_t longest_output() const;

  SessionView* session_;
  BoostOutputs outputs_;
  std::optional<BoostSettings> settings_;
  std::optional<BoostLimitFile> limit_file_;
  std::optional<CPBoostLimit> limits_;  // over limit_file_, if that is good
  std::string report_;
};

}  // namespace traguardo
