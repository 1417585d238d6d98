// SPDX-License-Identifier: MIT
#include "regulation/elapsed_time.h"

#include "regulation/config_file.h"
#include "regulation/number_text.h"
#include "support/platform/platform.h"

namespace traguardo {

namespace {

// A line in the manner of "%d\t%f\t%f\t%f", blanks in front of a number passed over. The row number isn't used.
std::optional<ElapsedTimeRow> row_of_line(std::string_view line) {
  float columns[4] = {};
  for (float& column : columns) {
    std::size_t used = 0;
    column = float_from_text(line, &used);
    if (used == 0) return std::nullopt;
    line.remove_prefix(used);
  }
  return ElapsedTimeRow{columns[1], columns[2], columns[3]};
}

}  // namespace

std::wstring table_path(const std::wstring& folder, std::wstring_view name) {
  std::wstring path = folder;
  return path.append(name).append(L".etp");
}

std::string table_text(std::span<const ElapsedTimeRow> rows) {
  std::string text;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    text += std::to_string(i);
    for (const float column : {rows[i].distance_ft, rows[i].speed_mph, rows[i].fraction}) {
      text += '\t';
      append_thousandths(&text, column);
    }
    text += '\n';
  }
  return text;
}

std::vector<ElapsedTimeRow> rows_of_table(std::string_view text) {
  std::vector<ElapsedTimeRow> rows;
  LineWalk lines(text);
  for (std::string_view line; lines.next(&line);) {
    if (const auto row = row_of_line(line)) rows.push_back(*row);
  }
  return rows;
}

std::optional<std::vector<ElapsedTimeRow>> read_table(const std::wstring& folder, std::wstring_view name) {
  const std::optional<ConfigFile> file = ConfigFile::read(table_path(folder, name));
  if (!file) return std::nullopt;
  return rows_of_table(file->text());
}

bool write_table(const std::wstring& folder, std::wstring_view name, std::span<const ElapsedTimeRow> rows) {
  return platform::write_whole_file(table_path(folder, name), table_text(rows));
}

void ensure_default_table(const std::wstring& folder) {
  if (platform::file_exists(table_path(folder, kDefaultTableName))) return;
  platform::create_folders(folder);
  write_table(folder, kDefaultTableName, default_elapsed_times());
}

}  // namespace traguardo
