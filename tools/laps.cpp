// SPDX-License-Identifier: MIT
// traguardo laps: the lap table with the gap to the best lap.
#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "command.h"
#include "json_output.h"
#include "print_out.h"
#include "session.h"
#include "table.h"
#include "text.h"

namespace traguardo::tool {

namespace {

struct LapsOptions {
  std::string file;
  bool recover = false;
  bool json = false;
};

// The shortest duration above zero of a lap that was driven to its end; nothing if there is none.
std::optional<double> best_duration(const std::vector<Lap>& laps) {
  std::optional<double> best;
  for (const Lap& lap : laps) {
    if (lap.finished && lap.duration_s > 0) best = std::min(best.value_or(lap.duration_s), lap.duration_s);
  }
  return best;
}

// Behind the best lap; nothing for a lap that isn't over.
std::optional<double> gap_of(const Lap& lap, std::optional<double> best_s) {
  if (!lap.finished || !best_s) return std::nullopt;
  return lap.duration_s - *best_s;
}

void show_laps(const LapsOptions& options) {
  const Session session(options.file, options.recover);
  const std::vector<Lap> laps = session.laps();
  const std::optional<double> best_s = best_duration(laps);

  if (options.json) {
    Json json = Json::array();
    for (const Lap& lap : laps) {
      Json row;
      row["lap"] = lap.number;
      row["start_s"] = json_number(lap.start_s);
      row["duration_s"] = json_number(lap.duration_s);
      const std::optional<double> gap_s = gap_of(lap, best_s);
      row["gap_s"] = gap_s ? json_number(*gap_s) : Json();
      row["finished"] = lap.finished;
      json.push_back(row);
    }
    print_out(to_document(json));
    return;
  }
  Table table(
      {{"Lap", Align::right}, {"Start (s)", Align::right}, {"Time (min:s)", Align::right}, {"Gap (s)", Align::right}});
  for (const Lap& lap : laps) {
    const std::optional<double> gap_s = gap_of(lap, best_s);
    const std::string gap = !lap.finished ? "unfinished" : gap_s ? fmt::format("{:.3f}", *gap_s) : "-";
    table.add_row({std::to_string(lap.number), fmt::format("{:.3f}", lap.start_s), lap_clock(lap.duration_s), gap});
  }
  print_out(table.to_text());
}

}  // namespace

void add_laps_command(CLI::App& app, int& /*status*/) {
  add_plain_command<LapsOptions>(app, "laps", "Show the laps with their times and gaps", show_laps);
}

}  // namespace traguardo::tool
