// traguardo laps: the lap table with the gap to the best lap.
#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "commands.h"
#include "json_output.h"
#include "session.h"
#include "table.h"
#include "text.h"

namespace traguardo::tool {

namespace {

// The shortest duration above zero; 0 if there is none.
double best_duration(const std::vector<Lap>& laps) {
  double best = std::numeric_limits<double>::infinity();
  for (const Lap& lap : laps) {
    if (lap.duration_s > 0) best = std::min(best, lap.duration_s);
  }
  return best == std::numeric_limits<double>::infinity() ? 0 : best;
}

}  // namespace

void show_laps(const LapsOptions& options) {
  const Session session(options.file);
  const std::vector<Lap> laps = session.laps();
  const double best_s = best_duration(laps);

  if (options.json) {
    Json json = Json::array();
    for (const Lap& lap : laps) {
      Json row;
      row["lap"] = lap.number;
      row["start_s"] = json_number(lap.start_s);
      row["duration_s"] = json_number(lap.duration_s);
      row["gap_s"] = json_number(lap.duration_s - best_s);
      json.push_back(row);
    }
    print_out(to_document(json));
    return;
  }
  Table table(
      {{"Lap", Align::right}, {"Start (s)", Align::right}, {"Time (min:s)", Align::right}, {"Gap (s)", Align::right}});
  for (const Lap& lap : laps) {
    table.add_row({std::to_string(lap.number), fmt::format("{:.3f}", lap.start_s), lap_clock(lap.duration_s),
                   fmt::format("{:.3f}", lap.duration_s - best_s)});
  }
  print_out(table.to_text());
}

}  // namespace traguardo::tool
