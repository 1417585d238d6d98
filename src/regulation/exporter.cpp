// SPDX-License-Identifier: MIT
#include "regulation/exporter.h"

#include <string>

#include "regulation/config_file.h"
#include "regulation/number_text.h"
#include "regulation/output_files.h"
#include "support/platform/platform.h"
#include "support/platform/unfinished_files.h"
#include "support/table_rows.h"

namespace traguardo {

namespace {

constexpr std::string_view kCellEnd = ", ";

struct Column {
  std::size_t channel;
  u32 period_ms;
  std::span<const float> samples;
};

// In the order of the "ch=" lines. A name without a channel is dropped.
std::vector<Column> columns_of(const SessionView& session, std::string_view lines_of_racer) {
  const ChannelNames names(session);
  std::vector<Column> columns;
  LineWalk lines(lines_of_racer);
  for (std::string_view line; lines.next(&line);) {
    const std::optional<std::string_view> name = value_of(line, "ch=");
    if (!name) continue;
    const std::optional<std::size_t> place = names.find(*name);
    if (!place) continue;
    const SessionChannel channel = session.channel(*place);
    columns.push_back({*place, channel.period_ms, channel.samples});
  }
  return columns;
}

std::string headings_of(const SessionView& session, const std::vector<Column>& columns) {
  std::string text;
  for (const Column& column : columns) text.append(session.channel(column.channel).name).append(kCellEnd);
  text += '\n';
  for (const Column& column : columns) text.append(session.channel_unit(column.channel)).append(kCellEnd);
  text += '\n';
  return text;
}

// False if the disk doesn't take it.
bool write_table(platform::PartFile* file, const std::string& headings, const SessionRun& run,
                 const std::vector<Column>& columns, u32 period_ms) {
  RowPieces table([file](std::string_view piece) { return file->write(piece.data(), piece.size()); });
  table.text() = headings;
  const u64 rows = run.duration_ms / period_ms;
  for (u64 row = 0; row < rows; ++row) {
    const u64 time_ms = run.start_ms + row * period_ms;
    for (const Column& column : columns) {
      append_number(&table.text(), value_at(column.samples, column.period_ms, time_ms));
      table.text().append(kCellEnd);
    }
    table.text() += '\n';
    if (!table.end_row()) return false;
  }
  return table.finish();
}

}  // namespace

u32 export_period_ms(std::string_view configuration) {
  constexpr u32 kHighestRate = 2000;
  u32 period_ms = 20;
  LineWalk lines(configuration);
  for (std::string_view line; lines.next(&line);) {
    const std::optional<std::string_view> text = value_of(line, "frq=");
    if (!text) continue;
    const u32 rate = u32_from_text(*text);
    if (rate == 0 || rate > kHighestRate) continue;
    period_ms = truncate_to_u32(1000.0F / static_cast<float>(rate) + 0.5F);
  }
  return period_ms;
}

bool export_run(const SessionView& session, const SessionRun& run) {
  const std::wstring path = platform::path_in_folder(session.working_folder(), kExporterConfigurationName);
  const std::wstring output = session.session_path() + kExportSuffix;
  const ConfigFile configuration = ConfigFile::read(path).value_or(ConfigFile(""));
  const bool may_write = may_be_written(session, output);
  const std::string racer = session.racer();
  const std::string where = " for racer [" + racer + "] in file:" + platform::host_bytes_from_path(path);

  const std::optional<std::string_view> lines = configuration.racer_lines(racer);
  if (!lines) {
    if (may_write) platform::write_whole_file(output, "Please doublecheck parameters" + where);
    return false;
  }
  const std::vector<Column> columns = columns_of(session, *lines);
  if (columns.empty()) {
    const std::string advice = "\nPlease notice that channels names are case sensitive";
    if (may_write) platform::write_whole_file(output, "No valid channel name" + where + advice);
    return false;
  }
  // An earlier export stays until this one is whole.
  platform::PartFile file;
  if (!may_write || !file.begin(output)) return true;
  const u32 period_ms = export_period_ms(configuration.text());
  if (write_table(&file, headings_of(session, columns), run, columns, period_ms) && file.finish()) file.take_place();
  return true;
}

}  // namespace traguardo
