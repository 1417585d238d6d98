// SPDX-License-Identifier: MIT
// traguardo eval: a formula over the channels of a session, tried without a legacy file around it.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "channel_cursor.h"
#include "channel_names.h"
#include "command.h"
#include "failure.h"
#include "inputs.h"
#include "inside.h"
#include "json_output.h"
#include "lap_choice.h"
#include "math/math_channel_manager.h"
#include "math/math_tables.h"
#include "output_file.h"
#include "print_out.h"
#include "support/table_rows.h"
#include "text.h"
#include "units/user_units_manager.h"

namespace traguardo::tool {

namespace {

struct EvalOptions {
  std::string formula;
  std::string file;
  std::string lap;     // as people name laps; empty: the whole file
  double rate_hz = 0;  // 0: the highest one among the channels
  bool json = false;
  std::string output;  // empty: standard output
};

constexpr double kRateOfRatelessFiles = 100;

// The merged view as the formula language sees it: every channel, logged or derived from the GPS, on one even grid over
// the whole axis, and behind them the result, which no formula can name.
class FormulaSession : public IMathSession {
 public:
  FormulaSession(Session& session, double rate_hz, const std::vector<tool::Lap>& chosen)
      : session_(session),
        file_(inside_of(session)),
        step_us_(static_cast<u64>(std::llround(1e6 / rate_hz))),
        frequency_hz_(static_cast<u32>(std::llround(rate_hz))),
        values_(static_cast<std::size_t>(points_on_axis(file_, step_us_))),
        channels_(session.channels()) {
    for (const Channel& channel : channels_) names_.push_back(channel.name);
    take_laps();
    choose(chosen);
  }

  const std::vector<std::string>& names() const { return names_; }
  std::size_t result() const { return names_.size(); }
  // Calls take(time in seconds, value) for every point that was asked for.
  template <typename Take>
  void each(Take take) const {
    for (const auto& [first, last] : chosen_) {
      for (std::size_t i = first; i < last; ++i) take(static_cast<double>(i * step_us_) * 1e-6, values_[i]);
    }
  }

  // --- IMathSession
  std::size_t channel_count() const override { return names_.size(); }
  std::string_view channel_name(std::size_t index) const override { return names_[index]; }
  std::string_view Formula(std::size_t) const override { return {}; }
  double period_ms(std::size_t) const override { return static_cast<double>(step_us_) / 1000.0; }
  u32 frequency_hz(std::size_t) const override { return frequency_hz_; }
  std::span<float> Samples(std::size_t) override { return values_; }
  std::size_t lap_count() const override { return laps_.size(); }
  SMathLap Lap(std::size_t index) const override { return laps_[index]; }
  void fill_input(std::size_t source, std::size_t, std::size_t first, std::span<float> out) override {
    auto [known, is_new] = grids_.try_emplace(source);
    if (is_new) known->second = grid_of(source);
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

  std::vector<float> grid_of(std::size_t source) {
    const Channel& channel = channels_[source];
    if (channel.kind == ChannelKind::logged) return on_even_grid(file_, *file_.view->GetCanali()[source], step_us_);
    std::vector<float> grid(values_.size());
    ChannelCursor cursor(session_, channel);
    float last = 0;  // what the channel keeps behind its end
    for (std::size_t i = 0; i < grid.size(); ++i) grid[i] = last = cursor.at(i * step_us_).value_or(last);
    return grid;
  }

  // The points from `start` of each lap to below its end.
  void choose(const std::vector<tool::Lap>& laps) {
    const auto point_from = [this](double time_s) {
      const double point = std::ceil(std::round(std::max(time_s, 0.0) * 1e6) / static_cast<double>(step_us_));
      return static_cast<std::size_t>(std::min(point, static_cast<double>(values_.size())));
    };
    if (laps.empty()) chosen_.emplace_back(0, values_.size());
    for (const tool::Lap& lap : laps) {
      chosen_.emplace_back(point_from(lap.start_s), point_from(lap.start_s + lap.duration_s));
    }
  }

  Session& session_;
  const SFileQLT& file_;
  u64 step_us_;
  u32 frequency_hz_;
  std::vector<float> values_;
  std::map<std::size_t, std::vector<float>> grids_;
  std::vector<Channel> channels_;
  std::vector<std::string> names_;
  std::vector<SMathLap> laps_;
  std::vector<std::pair<std::size_t, std::size_t>> chosen_;
};

double highest_rate(const SFileQLT& file) {
  float highest = 0.0F;
  for (const auto& channel : file.view->GetCanali()) highest = std::max(highest, channel->GetFrequenzaMassima());
  return highest > 0.0F ? static_cast<double>(highest) : kRateOfRatelessFiles;
}

// What stands there up to the next operator was meant for the name of a channel.
std::string name_at(const std::string& formula, std::size_t place) {
  const std::string rest = formula.substr(std::min(place, formula.size()));
  const std::string name = rest.substr(0, rest.find_first_of("+-*/^()<>=!&|,;"));
  return name.substr(0, name.find_last_not_of(' ') + 1);
}

// The formula language wants exact names. Those that people give a channel otherwise give way to them, one by one, in
// `formula`.
FormulaOutcome compute(std::string* formula, FormulaSession& session, const std::string& path) {
  constexpr int kMostNames = 128;
  CGestMathChan math(*CUserUnitsOfMeasureMgr::GetInstance(), std::wstring());
  FormulaOutcome outcome = math.compute_formula(*formula, session, session.result());
  for (int i = 0; i < kMostNames; ++i) {
    if (outcome.code != kErrorUnknownName && outcome.code != kErrorUnknownSymbol) break;
    const std::string name = name_at(*formula, outcome.character);
    const std::vector<std::size_t> places = named(name, session.names(), path);
    if (places.size() != 1 || session.names()[places.front()] == name) break;
    formula->replace(outcome.character, name.size(), session.names()[places.front()]);
    outcome = math.compute_formula(*formula, session, session.result());
  }
  return outcome;
}

// The message, and below it the formula and a mark under the place.
Failure explained(const FormulaOutcome& outcome, const std::string& formula, const FormulaSession& session) {
  std::string shown = formula;
  for (char& c : shown) {
    if (static_cast<unsigned char>(c) < ' ') c = '?';
  }
  const std::size_t column = display_width(std::string_view(shown).substr(0, outcome.character));
  std::string question;
  if (outcome.code == kErrorUnknownName) {
    question = question_about_names(name_at(formula, outcome.character), session.names());
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
  out.write("{\"code\": 0, \"rate_hz\": " + json_number(rate_hz).dump() + ", \"times\": ");
  JsonArray times(out);
  session.each([&times](double time_s, float) { times.add(time_s); });
  times.close();
  out.write(", \"values\": ");
  JsonArray results(out);
  session.each([&results](double, float value) { results.add(static_cast<double>(value)); });
  results.close();
  out.write("}\n");
}

// `append(text, time, value)` appends the line of one sample.
template <typename Append>
void write_rows(OutputFile& out, std::string_view title, const FormulaSession& session, Append append) {
  RowPieces rows([&out](std::string_view piece) {
    out.write(piece);
    return true;
  });
  rows.text() = title;
  session.each([&](double time_s, float value) {
    append(rows.text(), time_s, value);
    rows.end_row();
  });
  rows.finish();
}

void write_csv(OutputFile& out, const FormulaSession& session) {
  write_rows(out, "time,value\n", session, [](std::string& text, double time_s, float value) {
    text.append(shortest(time_s)).append(1, ',').append(shortest(static_cast<double>(value))).append(1, '\n');
  });
}

void write_table(OutputFile& out, const FormulaSession& session) {
  const std::string title = fmt::format("{:>14}  {:>16}\n", "Time (s)", "Value");
  write_rows(out, title, session, [](std::string& text, double time_s, float value) {
    text += fmt::format("{:>14.6f}  {:>16}\n", time_s, shortest_f32(static_cast<double>(value)));
  });
}

int evaluate_formula(const EvalOptions& options) {
  // As a terminal shows the names, so they can be typed.
  std::string formula = to_utf8(options.formula);
  const std::string output = options.output.empty() ? "-" : options.output;
  Inputs inputs;
  inputs.add_session(options.file);
  inputs.refuse(output);
  Session session(options.file);
  const SFileQLT& file = inside_of(session);
  const double rate_hz = options.rate_hz > 0 ? options.rate_hz : highest_rate(file);
  std::vector<Lap> laps;
  if (!options.lap.empty()) laps = chosen_laps(session, options.lap);
  FormulaSession channels(session, rate_hz, laps);
  const FormulaOutcome outcome = compute(&formula, channels, session.path());
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
      .between(0.001, 1e6);
  command.add_lap(options->lap);
  command.add_json(options->json);
  command.add_output(options->output, "File to write as CSV, - for standard output");
  command.calls([options, &status] { status = evaluate_formula(*options); });
}

}  // namespace traguardo::tool
