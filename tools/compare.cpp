// SPDX-License-Identifier: MIT
// traguardo compare: where one lap is faster than another.
#include <fmt/format.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "command.h"
#include "failure.h"
#include "json_output.h"
#include "lap_choice.h"
#include "lap_comparison.h"
#include "paths.h"
#include "print_out.h"
#include "same_file.h"
#include "session.h"
#include "speed.h"
#include "table.h"
#include "text.h"

namespace traguardo::tool {

namespace {

constexpr double kKmhPerMps = 3.6;

struct CompareOptions {
  // FILE or FILE:LAP, without a lap the best one. The first is the reference.
  std::string reference;
  std::string other;
  bool recover = false;
  double step_m = 100;
  int sectors = 0;    // of equal length; 0: the logger's
  std::string speed;  // whose way is the distance; empty: the speed of the session
  bool json = false;
};

struct LapOfFile {
  std::string file;
  std::string lap;  // empty: the best one
};

LapOfFile lap_of_file(const std::string& text) {
  std::error_code problem;
  const std::size_t colon = text.rfind(':');
  if (colon == std::string::npos || std::filesystem::exists(path_of(text), problem)) return {text, ""};
  const std::string lap = text.substr(colon + 1);
  // What else stands behind a colon is part of the name.
  return reason_not_a_lap_choice(lap).empty() ? LapOfFile{text.substr(0, colon), lap} : LapOfFile{text, ""};
}

struct SectorRow {
  double end_m = 0;
  double reference_s = 0;
  double other_s = 0;
};

struct IdealLap {
  std::string file;
  double time_s = 0;
  std::vector<IdealSector> sectors;
};

// All that is said of two laps.
struct Comparison {
  std::string files[2];
  Lap laps[2];
  double length_m = 0;
  bool by_places = false;
  bool has_splits = false;
  std::vector<DeltaPoint> deltas;
  std::vector<SectorRow> sectors;
  std::vector<Gain> gains;
  std::vector<Apex> apexes;
  std::vector<IdealLap> ideals;

  double delta_s() const { return laps[1].duration_s - laps[0].duration_s; }
};

std::vector<SectorRow> sector_rows(const SectorPlan& plan, const Comparison& found, const LapSource& reference,
                                   const LapLine& line, const LapSource& other, const LapLine& laid) {
  const auto mine = sector_times(plan, reference.session(), found.laps[0], line, found.length_m);
  const auto theirs = sector_times(plan, other.session(), found.laps[1], laid, found.length_m);
  std::vector<SectorRow> rows;
  if (!mine || !theirs) return rows;
  double end_s = 0;
  for (std::size_t i = 0; i < plan.count; ++i) {
    end_s += (*mine)[i];
    rows.push_back({i + 1 == plan.count ? found.length_m : line.place_at(end_s), (*mine)[i], (*theirs)[i]});
  }
  return rows;
}

IdealLap ideal_lap(const SectorPlan& plan, LapSource* source, const ReferenceLine& reference) {
  IdealLap ideal{to_utf8(source->session().path()), 0, ideal_sectors(plan, source, reference)};
  for (const IdealSector& sector : ideal.sectors) ideal.time_s += sector.time_s;
  return ideal;
}

Comparison comparison_of(const CompareOptions& options, const LapOfFile& mine, const LapOfFile& theirs) {
  // A file that is opened twice would be closed under the feet of the second.
  const auto session = std::make_shared<Session>(mine.file, options.recover);
  const bool is_same = mine.file == theirs.file || are_same_file(mine.file, theirs.file);
  const auto second = is_same ? session : std::make_shared<Session>(theirs.file, options.recover);
  Comparison found;
  found.files[0] = to_utf8(mine.file);
  found.files[1] = to_utf8(theirs.file);
  found.laps[0] = chosen_lap(*session, mine.lap);
  found.laps[1] = chosen_lap(*second, theirs.lap);

  LapSource source(*session, speed_channel(*session, options.speed, "--speed"));
  LapSource other_source(*second, speed_channel(*second, options.speed, "--speed"));
  const ReferenceLine reference(&source, found.laps[0]);
  const ReferenceLine::Laid laid = reference.lay(&other_source, found.laps[1]);
  const LapLine& line = reference.line();
  found.length_m = line.length_m();
  found.by_places = laid.by_places;
  found.deltas = deltas_between(line, laid.line, options.step_m);
  found.gains = largest_gains(found.deltas);
  found.apexes = apexes_of(line, laid.line);

  SectorPlan plan = plan_sectors(*session, found.laps[0], options.sectors);
  found.sectors = sector_rows(plan, found, source, line, other_source, laid.line);
  if (found.sectors.empty()) {
    // The two laps don't have the same marks.
    plan = SectorPlan{plan.count, false};
    found.sectors = sector_rows(plan, found, source, line, other_source, laid.line);
  }
  found.has_splits = plan.by_splits;
  found.ideals.push_back(ideal_lap(plan, &source, reference));
  if (!is_same) found.ideals.push_back(ideal_lap(plan, &other_source, reference));
  return found;
}

// --- JSON ------------------------------------------------------------------------------------------------------------

Json lap_json(const std::string& file, const Lap& lap) {
  Json json;
  json["file"] = file;
  json["lap"] = lap.number;
  json["duration_s"] = json_number(lap.duration_s);
  return json;
}

template <typename Row, typename Fill>
Json rows_json(const std::vector<Row>& rows, Fill fill) {
  Json json = Json::array();
  for (const Row& row : rows) fill(json.emplace_back(Json::object()), row);
  return json;
}

Json to_json(const Comparison& found) {
  Json json;
  json["reference"] = lap_json(found.files[0], found.laps[0]);
  json["other"] = lap_json(found.files[1], found.laps[1]);
  json["delta_s"] = json_number(found.delta_s());
  json["length_m"] = json_number(found.length_m);
  json["laid_by"] = found.by_places ? "gps" : "distance";
  json["deltas"] = rows_json(found.deltas, [](Json& row, const DeltaPoint& point) {
    row["distance_m"] = json_number(point.place_m);
    row["delta_s"] = json_number(point.delta_s);
    row["reference_kmh"] = json_number(point.reference_mps * kKmhPerMps);
    row["other_kmh"] = json_number(point.other_mps * kKmhPerMps);
  });
  json["sectors_by"] = found.has_splits ? "splits" : "length";
  json["sectors"] = rows_json(found.sectors, [](Json& row, const SectorRow& sector) {
    row["end_m"] = json_number(sector.end_m);
    row["reference_s"] = json_number(sector.reference_s);
    row["other_s"] = json_number(sector.other_s);
    row["delta_s"] = json_number(sector.other_s - sector.reference_s);
  });
  json["places"] = rows_json(found.gains, [](Json& row, const Gain& gain) {
    row["from_m"] = json_number(gain.from_m);
    row["to_m"] = json_number(gain.to_m);
    row["delta_s"] = json_number(gain.lost_s);
  });
  json["apexes"] = rows_json(found.apexes, [](Json& row, const Apex& apex) {
    row["reference_m"] = json_number(apex.reference_m);
    row["reference_kmh"] = json_number(apex.reference_mps * kKmhPerMps);
    row["other_m"] = json_number(apex.other_m);
    row["other_kmh"] = json_number(apex.other_mps * kKmhPerMps);
  });
  json["ideal"] = rows_json(found.ideals, [](Json& row, const IdealLap& ideal) {
    row["file"] = ideal.file;
    row["duration_s"] = json_number(ideal.time_s);
    row["sectors"] = rows_json(ideal.sectors, [](Json& part, const IdealSector& sector) {
      part["lap"] = sector.lap;
      part["time_s"] = json_number(sector.time_s);
    });
  });
  return json;
}

// --- Text ------------------------------------------------------------------------------------------------------------

std::string metres(double value) {
  return fmt::format("{:.1f}", value);
}
std::string kmh(double speed_mps) {
  return fmt::format("{:.1f}", speed_mps * kKmhPerMps);
}
std::string seconds(double value) {
  return fmt::format("{:.3f}", value);
}
// With its sign; what rounds to zero has none.
std::string difference(double value, int decimals) {
  const std::string text = fmt::format("{:+.{}f}", value, decimals);
  return text.find_first_of("123456789") == std::string::npos ? text.substr(1) : text;
}
Tone tone_of(double lost) {
  constexpr double kShown = 0.0005;
  return lost >= kShown ? Tone::bad : lost <= -kShown ? Tone::good : Tone::plain;
}

Table table_of(std::initializer_list<const char*> titles) {
  std::vector<Column> columns;
  for (const char* const title : titles) columns.push_back({title, Align::right});
  return Table(columns);
}

std::string head_text(const Comparison& found) {
  const auto lap_text = [&found](std::size_t i) {
    return fmt::format("{} lap {}, {} (min:s)", found.files[i], found.laps[i].number,
                       lap_clock(found.laps[i].duration_s));
  };
  return pairs_to_text({{"Reference", lap_text(0)},
                        {"Other", lap_text(1)},
                        {"Difference", difference(found.delta_s(), 3) + " s", tone_of(found.delta_s())},
                        {"Length", metres(found.length_m) + " m"},
                        {"Laid by", found.by_places ? "GPS" : "distance"}});
}

std::string deltas_text(const Comparison& found) {
  Table table = table_of({"Distance (m)", "Delta (s)", "Reference (km/h)", "Other (km/h)"});
  for (const DeltaPoint& point : found.deltas) {
    table.add_row(
        {metres(point.place_m), difference(point.delta_s, 3), kmh(point.reference_mps), kmh(point.other_mps)});
  }
  return table.to_text();
}

std::string sectors_text(const Comparison& found) {
  Table table = table_of({"Sector", "End (m)", "Reference (s)", "Other (s)", "Delta (s)"});
  for (std::size_t i = 0; i < found.sectors.size(); ++i) {
    const SectorRow& sector = found.sectors[i];
    const double lost_s = sector.other_s - sector.reference_s;
    table.add_row({std::to_string(i + 1), metres(sector.end_m), seconds(sector.reference_s), seconds(sector.other_s),
                   difference(lost_s, 3)},
                  tone_of(lost_s));
  }
  return table.to_text();
}

std::string gains_text(const Comparison& found) {
  Table table = table_of({"From (m)", "To (m)", "Delta (s)"});
  for (const Gain& gain : found.gains) {
    table.add_row({metres(gain.from_m), metres(gain.to_m), difference(gain.lost_s, 3)}, tone_of(gain.lost_s));
  }
  return table.to_text();
}

std::string apexes_text(const Comparison& found) {
  Table table = table_of({"Apex (m)", "Reference (km/h)", "Other (m)", "Other (km/h)", "Difference (km/h)"});
  for (const Apex& apex : found.apexes) {
    const double gained = apex.other_mps - apex.reference_mps;
    table.add_row({metres(apex.reference_m), kmh(apex.reference_mps), metres(apex.other_m), kmh(apex.other_mps),
                   difference(gained * kKmhPerMps, 1)},
                  tone_of(-gained));
  }
  return table.to_text();
}

std::string ideals_text(const Comparison& found) {
  std::vector<Pair> pairs;
  for (const IdealLap& ideal : found.ideals) {
    std::string parts;
    for (const IdealSector& sector : ideal.sectors) {
      parts += fmt::format("{}{} of lap {}", parts.empty() ? "" : " + ", seconds(sector.time_s), sector.lap);
    }
    pairs.push_back({"Ideal of " + ideal.file,
                     ideal.sectors.empty() ? "no finished lap" : lap_clock(ideal.time_s) + " (min:s) = " + parts});
  }
  return pairs_to_text(pairs);
}

void compare_laps(const CompareOptions& options) {
  const Comparison found = comparison_of(options, lap_of_file(options.reference), lap_of_file(options.other));
  if (options.json) {
    print_out(to_document(to_json(found)));
    return;
  }
  print_shown(head_text(found) + '\n' + deltas_text(found) + '\n' + sectors_text(found) + '\n' + gains_text(found) +
              '\n' + apexes_text(found) + '\n' + ideals_text(found));
}

}  // namespace

void add_compare_command(CLI::App& app, int& /*status*/) {
  Command command(app, "compare", "Show where one lap is faster than another, over the distance");
  const auto options = std::make_shared<CompareOptions>();
  command.add("REFERENCE", options->reference, "Session file, and behind a colon the lap (default: the best)")
      .required();
  command.add("OTHER", options->other, "The same for the lap that is compared with it").required();
  command.add("--every", options->step_m, "Metres from one delta to the next").between(1.0, 1e6).shows_default();
  command.add("--sectors", options->sectors, "Sectors of equal length (default: the logger's splits, or 3)")
      .between(1, 1000);
  command.add_speed(options->speed);
  command.add_json(options->json);
  command.add_recover(options->recover);
  command.calls([options] { compare_laps(*options); });
}

}  // namespace traguardo::tool
