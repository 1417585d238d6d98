// SPDX-License-Identifier: MIT
// traguardo stats: what each channel did in each lap.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "command.h"
#include "failure.h"
#include "json_output.h"
#include "lap_choice.h"
#include "print_out.h"
#include "session.h"
#include "table.h"
#include "text.h"

namespace traguardo::tool {

namespace {

struct StatsOptions {
  std::string file;
  bool recover = false;
  std::vector<std::string> channels;  // names or patterns; empty: all logged and all derived GPS channels
  std::string lap;                    // as people name laps; empty: every lap
  bool clean = false;                 // without unfinished and slow laps
  bool json = false;
};

// Over the samples that are numbers; mean and deviation in one pass, without the loss of digits that sums of squares
// have.
class Statistics {
 public:
  void take(double value) {
    if (std::isnan(value)) return;
    if (count_ == 0) first_ = min_ = max_ = value;
    last_ = value;
    min_ = std::min(min_, value);
    max_ = std::max(max_, value);
    ++count_;
    const double apart = value - mean_;
    mean_ += apart / static_cast<double>(count_);
    squares_ += apart * (value - mean_);
  }

  std::uint64_t count() const { return count_; }
  // REQUIRES (all): count() above 0.
  double min() const { return min_; }
  double max() const { return max_; }
  double mean() const { return mean_; }
  double deviation() const { return std::sqrt(squares_ / static_cast<double>(count_)); }
  double first() const { return first_; }
  double last() const { return last_; }

 private:
  std::uint64_t count_ = 0;
  double first_ = 0;
  double last_ = 0;
  double min_ = 0;
  double max_ = 0;
  double mean_ = 0;
  double squares_ = 0;
};

Statistics statistics_of(const Session& session, const Channel& channel, const Lap& lap) {
  Statistics statistics;
  session.read_in_pieces(channel, {lap}, [&statistics](const Samples& piece) {
    for (const double value : piece.values) statistics.take(value);
    return true;
  });
  return statistics;
}

std::vector<Lap> laps_of(const Session& session, const StatsOptions& options) {
  std::vector<Lap> laps = options.lap.empty() ? all_laps(session) : chosen_laps(session, options.lap);
  if (!options.clean) return laps;
  const std::vector<Lap> clean = clean_laps(session.laps());
  std::erase_if(laps, [&clean](const Lap& lap) {
    return std::none_of(clean.begin(), clean.end(), [&lap](const Lap& good) { return good.number == lap.number; });
  });
  if (laps.empty()) throw Failure(fmt::format("no clean lap in {}", session.path()));
  return laps;
}

Json json_row(const Lap& lap, const Channel& channel, const Statistics& statistics) {
  const bool has_any = statistics.count() > 0;
  Json row;
  row["lap"] = lap.number;
  row["channel"] = json_text(channel.name);
  row["unit"] = json_text(channel.unit);
  row["samples"] = statistics.count();
  row["min"] = has_any ? json_number(statistics.min()) : Json();
  row["max"] = has_any ? json_number(statistics.max()) : Json();
  row["mean"] = has_any ? json_number(statistics.mean()) : Json();
  row["stddev"] = has_any ? json_number(statistics.deviation()) : Json();
  row["first"] = has_any ? json_number(statistics.first()) : Json();
  row["last"] = has_any ? json_number(statistics.last()) : Json();
  return row;
}

void add_row(Table* table, const Lap& lap, const Channel& channel, const Statistics& statistics) {
  std::vector<std::string> cells{channel.name, channel.unit, std::to_string(lap.number),
                                 std::to_string(statistics.count())};
  if (statistics.count() == 0) {
    cells.insert(cells.end(), 6, "-");
  } else {
    cells.push_back(shortest_f32(statistics.min()));
    cells.push_back(shortest_f32(statistics.max()));
    cells.push_back(fmt::format("{:.6g}", statistics.mean()));
    cells.push_back(fmt::format("{:.6g}", statistics.deviation()));
    cells.push_back(shortest_f32(statistics.first()));
    cells.push_back(shortest_f32(statistics.last()));
  }
  table->add_row(std::move(cells), lap.finished ? Tone::plain : Tone::faint);
}

void show_stats(const StatsOptions& options) {
  Session session(options.file, options.recover);
  const std::vector<Lap> laps = laps_of(session, options);
  Json json = Json::array();
  Table table({{"Channel", Align::left},
               {"Unit", Align::left},
               {"Lap", Align::right},
               {"Samples", Align::right},
               {"Minimum", Align::right},
               {"Maximum", Align::right},
               {"Mean", Align::right},
               {"Std dev", Align::right},
               {"First", Align::right},
               {"Last", Align::right}});
  for (const Channel& channel : find_all_channels(session, options.channels)) {
    for (const Lap& lap : laps) {
      const Statistics statistics = statistics_of(session, channel, lap);
      if (options.json) {
        json.push_back(json_row(lap, channel, statistics));
      } else {
        add_row(&table, lap, channel, statistics);
      }
    }
  }
  print_shown(options.json ? to_document(json) : table.to_text());
}

}  // namespace

void add_stats_command(CLI::App& app, int& /*status*/) {
  Command command(app, "stats", "Show bounds, mean and deviation of channels in each lap");
  const auto options = std::make_shared<StatsOptions>();
  command.add_file(options->file);
  command.add_channels(options->channels);
  command.add_lap(options->lap);
  command.add_flag("--clean", options->clean, "Leave out unfinished laps and those beyond 107 % of the best");
  command.add_json(options->json);
  command.add_recover(options->recover);
  command.calls([options] { show_stats(*options); });
}

}  // namespace traguardo::tool
