// SPDX-License-Identifier: MIT
// traguardo laps: the lap table with the gap to the best lap; of many files the best lap of each.
#include <fmt/format.h>

#include <optional>
#include <string>
#include <vector>

#include "command.h"
#include "error_line.h"
#include "failure.h"
#include "file_patterns.h"
#include "json_output.h"
#include "lap_choice.h"
#include "print_out.h"
#include "session.h"
#include "table.h"
#include "text.h"

namespace traguardo::tool {

namespace {

struct LapsOptions {
  std::vector<std::string> files;  // or patterns for them
  bool recover = false;
  bool json = false;
};

// --- One file --------------------------------------------------------------------------------------------------------

// Behind the best lap; nothing for a lap that isn't over.
std::optional<double> gap_of(const Lap& lap, const std::optional<Lap>& best) {
  if (!lap.finished || !best) return std::nullopt;
  return lap.duration_s - best->duration_s;
}

Json laps_document(const std::vector<Lap>& laps, const std::optional<Lap>& best) {
  Json json = Json::array();
  for (const Lap& lap : laps) {
    Json row;
    row["lap"] = lap.number;
    row["start_s"] = json_number(lap.start_s);
    row["duration_s"] = json_number(lap.duration_s);
    const std::optional<double> gap_s = gap_of(lap, best);
    row["gap_s"] = gap_s ? json_number(*gap_s) : Json();
    row["finished"] = lap.finished;
    json.push_back(row);
  }
  return json;
}

std::string laps_table(const std::vector<Lap>& laps, const std::optional<Lap>& best) {
  Table table(
      {{"Lap", Align::right}, {"Start (s)", Align::right}, {"Time (min:s)", Align::right}, {"Gap (s)", Align::right}});
  for (const Lap& lap : laps) {
    const std::optional<double> gap_s = gap_of(lap, best);
    const std::string gap = !lap.finished ? "unfinished" : gap_s ? fmt::format("{:.3f}", *gap_s) : "-";
    const Tone tone = !lap.finished ? Tone::faint : best && lap.number == best->number ? Tone::good : Tone::plain;
    table.add_row({std::to_string(lap.number), fmt::format("{:.3f}", lap.start_s), lap_clock(lap.duration_s), gap},
                  tone);
  }
  return table.to_text();
}

// --- Many files ------------------------------------------------------------------------------------------------------

struct FileRow {
  std::string file;
  std::size_t laps = 0;
  std::optional<Lap> best;
  std::string problem;  // why the file can't be read
};

FileRow row_of(const std::string& file, bool recover) {
  FileRow row;
  row.file = to_utf8(file);
  try {
    const Session session(file, recover);
    const std::vector<Lap> laps = session.laps();
    row.laps = laps.size();
    row.best = best_lap(laps);
  } catch (const Failure& failure) {
    row.problem = to_utf8(failure.what());
  }
  return row;
}

std::optional<double> best_of_all(const std::vector<FileRow>& rows) {
  std::optional<double> best_s;
  for (const FileRow& row : rows) {
    if (row.best && (!best_s || row.best->duration_s < *best_s)) best_s = row.best->duration_s;
  }
  return best_s;
}

Json files_document(const std::vector<FileRow>& rows, std::optional<double> best_s) {
  Json json = Json::array();
  for (const FileRow& row : rows) {
    Json entry;
    entry["file"] = row.file;
    entry["laps"] = row.laps;
    entry["best_lap"] = row.best ? Json(row.best->number) : Json();
    entry["best_s"] = row.best ? json_number(row.best->duration_s) : Json();
    entry["gap_s"] = row.best ? json_number(row.best->duration_s - *best_s) : Json();
    entry["error"] = row.problem.empty() ? Json() : Json(row.problem);
    json.push_back(entry);
  }
  return json;
}

std::string files_table(const std::vector<FileRow>& rows, std::optional<double> best_s) {
  Table table({{"File", Align::left},
               {"Laps", Align::right},
               {"Best", Align::right},
               {"Time (min:s)", Align::right},
               {"Gap (s)", Align::right},
               {"", Align::left}});
  for (const FileRow& row : rows) {
    if (!row.problem.empty()) {
      table.add_row({row.file, "-", "-", "-", "-", row.problem}, Tone::bad);
    } else if (!row.best) {
      table.add_row({row.file, std::to_string(row.laps), "-", "-", "-", "no finished lap"}, Tone::faint);
    } else {
      const double gap_s = row.best->duration_s - *best_s;
      table.add_row({row.file, std::to_string(row.laps), std::to_string(row.best->number),
                     lap_clock(row.best->duration_s), fmt::format("{:.3f}", gap_s), gap_s == 0 ? "best of all" : ""},
                    gap_s == 0 ? Tone::good : Tone::plain);
    }
  }
  return table.to_text();
}

int show_best_laps(const std::vector<std::string>& files, const LapsOptions& options) {
  std::vector<FileRow> rows;
  std::size_t broken = 0;
  for (const std::string& file : files) {
    rows.push_back(row_of(file, options.recover));
    if (!rows.back().problem.empty()) ++broken;
  }
  const std::optional<double> best_s = best_of_all(rows);
  print_shown(options.json ? to_document(files_document(rows, best_s)) : files_table(rows, best_s));
  if (broken == 0) return 0;
  say_error_line(fmt::format("{} of {} files could not be read", broken, files.size()));
  return 1;
}

// 0, or 1 where some of several files could not be read.
int show_laps(const LapsOptions& options) {
  const std::vector<std::string> files = opened_patterns(options.files);
  const bool is_pattern = options.files.size() == 1 && files != options.files;
  if (files.size() > 1 || is_pattern) return show_best_laps(files, options);
  const Session session(files.front(), options.recover);
  const std::vector<Lap> laps = session.laps();
  const std::optional<Lap> best = best_lap(laps);
  print_shown(options.json ? to_document(laps_document(laps, best)) : laps_table(laps, best));
  return 0;
}

}  // namespace

void add_laps_command(CLI::App& app, int& status) {
  Command command(app, "laps", "Show the laps with their times and gaps, or of many files the best lap of each");
  const auto options = std::make_shared<LapsOptions>();
  command.add_files(options->files);
  command.add_json(options->json);
  command.add_recover(options->recover);
  command.calls([options, &status] { status = show_laps(*options); });
}

}  // namespace traguardo::tool
