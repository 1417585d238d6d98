// SPDX-License-Identifier: MIT
#include "regulation/limiter.h"

#include <algorithm>

#include "regulation/config_file.h"
#include "regulation/number_text.h"
#include "regulation/output_files.h"
#include "support/platform/platform.h"

namespace traguardo {

namespace {

constexpr std::string_view kEngineName = "Engine";
constexpr u32 kShortestWindow = 3;
// A longer window counts as memory that can't be had; no logger records so many samples above a limit.
constexpr u32 kLongestWindow = 1U << 28;

}  // namespace

LimiterSettings LimiterSettings::read(std::string_view section) {
  LimiterSettings settings;
  LineWalk lines(section);
  for (std::string_view line; lines.next(&line);) {
    if (const auto text = value_of(line, "limiter=")) settings.limiter = float_from_text(*text);
    if (const auto text = value_of(line, "pts_number=")) settings.pts_number = u32_from_text(*text);
    if (const auto text = value_of(line, "threshold=")) settings.threshold = float_from_text(*text);
  }
  return settings;
}

SecondsOverLimit::SecondsOverLimit(const LimiterSettings& settings, u32 period_ms)
    : settings_(settings),
      period_s_(static_cast<float>(period_ms) / 1000.0F),
      above_(0.0F > settings.limiter ? settings.pts_number : 0) {}

float SecondsOverLimit::step(float engine) {
  const float limit = settings_.limiter;
  above_ = engine > limit ? std::min(above_, settings_.pts_number - 1) + 1 : 0;
  if (engine > limit && limit >= previous_ && settings_.threshold > engine - previous_) armed_ = true;
  if (limit >= engine) {
    armed_ = false;
  } else if (armed_ && above_ >= settings_.pts_number) {
    seconds_ += period_s_;
  }
  previous_ = engine;
  return seconds_;
}

LimiterCheck::LimiterCheck(SessionView* session, std::size_t output)
    : session_(session),
      output_(output),
      logger_id_(session->logger_id()),
      engine_(ChannelNames(*session).find(kEngineName)) {
  read_section();
}

void LimiterCheck::read_section() {
  constexpr std::size_t kIdPrefix = 3;
  settings_.reset();
  const std::optional<ConfigFile> file =
      ConfigFile::read(platform::path_in_folder(session_->working_folder(), kLimiterConfigurationName));
  if (!file) return;
  const std::optional<std::string_view> lines = file->section(
      [&](std::string_view key) { return key.size() >= kIdPrefix && key.substr(kIdPrefix) == logger_id_; });
  if (lines) settings_ = LimiterSettings::read(*lines);
}

// The line feed in front ends a last line that has none of its own.
void LimiterCheck::append_section() {
  const std::string section = "\n{\nid=" + logger_id_ +
                              "\n"
                              "comment=Commento personalizzabile\n"
                              "limiter=13000\n"
                              "pts_number=4\n"
                              "threshold=2000\n"
                              "}\n\n";
  const std::wstring path = platform::path_in_folder(session_->working_folder(), kLimiterConfigurationName);
  if (may_be_written(*session_, path) && platform::append_text(path, section)) read_section();
}

bool LimiterCheck::run(const SessionRun& run) {
  if (!settings_) {
    report(run, "\n");
    append_section();
    return true;
  }
  if (!engine_) {
    report(run, "\tCan't find any 'Engine' channel\n\n");
    return false;
  }
  if (settings_->pts_number < kShortestWindow) {
    report(run, "\tBad 'pts_number' value (" + std::to_string(settings_->pts_number) + ") for logger id " + logger_id_ +
                    ", please edit file FMI-limiter.txt and add a section with correct values \n"
                    "{\npts_number=4\n}\n"
                    "\n\n");
    return true;
  }
  if (settings_->pts_number > kLongestWindow) {
    report(run, "\n\tCan't alloc mem\n");
    return true;
  }
  std::string text = "\t";
  append_number(&text, fill(run));
  text += " seconds over limiter for logger id " + logger_id_ + ": with limiter ";
  append_number(&text, settings_->limiter);
  text += ", pts_number " + std::to_string(settings_->pts_number) + " and threshold ";
  append_number(&text, settings_->threshold);
  report(run, text + "\n\n");
  return true;
}

void LimiterCheck::report(const SessionRun& run, std::string_view text) {
  report_.append(run_header(*session_, run)).append(text);
}

// A report that can't be written is lost, and nothing else with it.
void LimiterCheck::write_report() const {
  const std::wstring path = platform::path_in_folder(session_->working_folder(), kLimiterReportName);
  if (!report_.empty() && may_be_written(*session_, path)) platform::append_text(path, report_);
}

// The total is that of the whole run, also where the run claims more than the output channel holds.
float LimiterCheck::fill(const SessionRun& run) {
  const u32 period_ms = session_->channel(output_).period_ms;
  if (period_ms == 0) return 0.0F;
  const SessionChannel engine = session_->channel(*engine_);
  const std::span<float> output = session_->output_samples(output_);
  const u64 first = run.start_ms / period_ms;
  const u64 count = run.duration_ms / period_ms;
  SecondsOverLimit total(*settings_, period_ms);
  for (u64 i = 0; i < count; ++i) {
    const float seconds = total.step(value_at(engine.samples, engine.period_ms, run.start_ms + i * period_ms));
    if (first + i < output.size()) output[static_cast<std::size_t>(first + i)] = seconds;
  }
  return total.seconds();
}

}  // namespace traguardo
