// SPDX-License-Identifier: MIT
// traguardo eval: a formula over the channels of a session, tried without a legacy file around it.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "command.h"
#include "failure.h"
#include "inputs.h"
#include "inside.h"
#include "json_output.h"
#include "math/math_channel_manager.h"
#include "math/math_tables.h"
#include "near_names.h"
#include "output_file.h"
#include "print_out.h"
#include "text.h"
#include "units/user_units_manager.h"

namespace traguardo::tool {

namespace {

struct EvalOptions {
  std::string formula;
  std::string file;
  double rate_hz = 0;  // 0: the highest one among the channels
  bool json = false;
  std::string output;  // empty: standard output
};

constexpr double kRateOfRatelessFiles = 100;
constexpr std::size_t kFlushAt = 1 << 16;

// The merged view as the formula language sees it: every channel on one even grid over the whole axis, and behind them
// the result, which no formula can name.
class FormulaSession : public IMathSession {
 public:
  FormulaSession(const SFileQLT& file, double rate_hz)
      : file_(file),
        step_us_(static_cast<u64>(std::llround(1e6 / rate_hz))),
        frequency_hz_(static_cast<u32>(std::llround(rate_hz))),
        values_(static_cast<std::size_t>(points_on_axis(file, step_us_))) {
    for (const auto& channel : file.view->GetCanali()) names_.push_back(to_utf8(channel->GetNome()));
    take_laps();
  }

  const std::vector<std::string>& names() const { return names_; }
  std::size_t result() const { return names_.size(); }
  const std::vector<float>& values() const { return values_; }
  double time_s(std::size_t index) const { return static_cast<double>(index * step_us_) * 1e-6; }

  // --- IMathSession
  std::size_t ChannelCount() const override { return names_.size(); }
  std::string_view ChannelName(std::size_t index) const override { return names_[index]; }
  std::string_view Formula(std::size_t) const override { return {}; }
  double PeriodMs(std::size_t) const override { return static_cast<double>(step_us_) / 1000.0; }
  u32 FrequencyHz(std::size_t) const override { return frequency_hz_; }
  std::span<float> Samples(std::size_t) override { return values_; }
  std::size_t LapCount() const override { return laps_.size(); }
  SMathLap Lap(std::size_t index) const override { return laps_[index]; }
  void FillInput(std::size_t source, std::size_t, std::size_t first, std::span<float> out) override {
    auto [known, is_new] = grids_.try_emplace(source);
    if (is_new) known->second = on_even_grid(file_, *file_.view->GetCanali()[source], step_us_);
    resample_linear(known->second, 1, 1, first, out);
  }

 private:
  void take_laps() {
    for (const auto& [number, session] : file_.view->GetSessioni()) {
      if (session == nullptr) continue;
      for (const auto& [lap_number, lap] : session->laps) {
        if (lap == nullptr) continue;
        // A time below 0 wraps in the file's model.
        laps_.push_back({static_cast<double>(static_cast<i64>(lap->start)) / 1000.0,
                         static_cast<double>(static_cast<i64>(lap->duration)) / 1000.0});
      }
    }
    std::stable_sort(laps_.begin(), laps_.end(),
                     [](const SMathLap& a, const SMathLap& b) { return a.start_ms < b.start_ms; });
  }

  const SFileQLT& file_;
  u64 step_us_;
  u32 frequency_hz_;
  std::vector<float> values_;
  std::map<std::size_t, std::vector<float>> grids_;
  std::vector<std::string> names_;
  std::vector<SMathLap> laps_;
};

double highest_rate(const SFileQLT& file) {
  float highest = 0.0F;
  for (const auto& channel : file.view->GetCanali()) highest = std::max(highest, channel->GetFrequenzaMassima());
  return highest > 0.0F ? static_cast<double>(highest) : kRateOfRatelessFiles;
}

// The message, and below it the formula and a mark under the place.
Failure explained(const FormulaOutcome& outcome, const std::string& formula, const FormulaSession& session) {
  std::string shown = formula;
  for (char& c : shown) {
    if (static_cast<unsigned char>(c) < ' ') c = '?';
  }
  const std::size_t column = display_width(std::string_view(shown).substr(0, outcome.character));
  // What stands there up to the next operator was meant for the name of a channel.
  std::string question;
  if (outcome.code == kErrorUnknownName) {
    const std::string rest = formula.substr(std::min(outcome.character, formula.size()));
    question = question_about_names(rest.substr(0, rest.find_first_of("+-*/^()<>=!&|,;")), session.names());
  }
  return Failure(outcome.message + question, fmt::format("\n  {}\n  {}^", shown, std::string(column, ' ')));
}

std::string outcome_document(const FormulaOutcome& outcome) {
  Json json;
  json["code"] = outcome.code;
  json["position"] = outcome.position;
  json["message"] = outcome.message;
  return to_document(json);
}

void write_json(OutputFile& out, const FormulaSession& session, double rate_hz) {
  const std::vector<float>& values = session.values();
  out.write("{\"code\": 0, \"rate_hz\": " + json_number(rate_hz).dump() + ", \"times\": ");
  JsonArray times(out);
  for (std::size_t i = 0; i < values.size(); ++i) times.add(session.time_s(i));
  times.close();
  out.write(", \"values\": ");
  JsonArray results(out);
  for (const float value : values) results.add(static_cast<double>(value));
  results.close();
  out.write("}\n");
}

// `row` appends the line of one sample.
template <typename Row>
void write_rows(OutputFile& out, std::string_view title, const std::vector<float>& values, Row row) {
  fmt::memory_buffer text;
  text.append(title);
  for (std::size_t i = 0; i < values.size(); ++i) {
    row(text, i);
    if (text.size() < kFlushAt) continue;
    out.write(text.data(), text.size());
    text.clear();
  }
  out.write(text.data(), text.size());
}

void write_csv(OutputFile& out, const FormulaSession& session) {
  const std::vector<float>& values = session.values();
  write_rows(out, "time,value\n", values, [&](fmt::memory_buffer& text, std::size_t i) {
    fmt::format_to(std::back_inserter(text), "{},{}\n", shortest(session.time_s(i)),
                   shortest(static_cast<double>(values[i])));
  });
}

void write_table(OutputFile& out, const FormulaSession& session) {
  const std::vector<float>& values = session.values();
  const std::string title = fmt::format("{:>14}  {:>16}\n", "Time (s)", "Value");
  write_rows(out, title, values, [&](fmt::memory_buffer& text, std::size_t i) {
    fmt::format_to(std::back_inserter(text), "{:>14.6f}  {:>16}\n", session.time_s(i),
                   shortest_f32(static_cast<double>(values[i])));
  });
}

int evaluate_formula(const EvalOptions& options) {
  // As a terminal shows the names, so they can be typed.
  const std::string formula = to_utf8(options.formula);
  const std::string output = options.output.empty() ? "-" : options.output;
  Inputs inputs;
  inputs.add_session(options.file);
  inputs.refuse(output);
  const Session session(options.file);
  const SFileQLT& file = inside_of(session);
  const double rate_hz = options.rate_hz > 0 ? options.rate_hz : highest_rate(file);
  FormulaSession channels(file, rate_hz);
  CGestMathChan math(*CUserUnitsOfMeasureMgr::GetInstance(), std::wstring());
  const FormulaOutcome outcome = math.ComputeFormula(formula, channels, channels.result());
  if (!outcome) {
    if (!options.json) throw explained(outcome, formula, channels);
    print_out(outcome_document(outcome));
    return 1;
  }
  OutputFile out(output);
  if (options.json) {
    write_json(out, channels, rate_hz);
  } else if (options.output.empty()) {
    write_table(out, channels);
  } else {
    write_csv(out, channels);
  }
  out.keep();
  return 0;
}

}  // namespace

void add_eval_command(CLI::App& app, int& status) {
  Command command(app, "eval", "Compute a formula over the channels of a session");
  const auto options = std::make_shared<EvalOptions>();
  command.add("FORMULA", options->formula, "Formula, with channels by their names").required();
  command.add_file(options->file);
  command.add("--rate", options->rate_hz, "Samples a second (default: as the fastest channel, or 100)")
      .between(0.001, 1e6)
      // Not-a-number lies in no range, and out of none.
      .check(
          [](const std::string& text) { return std::isnan(std::strtod(text.c_str(), nullptr)) ? "not a number" : ""; });
  command.add_json(options->json);
  command.add("-o,--output", options->output, "File to write as CSV, - for standard output");
  command.calls([options, &status] { status = evaluate_formula(*options); });
}

}  // namespace traguardo::tool
