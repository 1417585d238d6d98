#include "regulation/exporter.h"

#include <algorithm>
#include <string>

#include "regulation/config_file.h"
#include "regulation/number_text.h"
#include "support/platform/platform.h"

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

// Lap tables may claim runs far beyond what was logged, and configuration files any number of columns: rows end where
// the table would have nothing to do any more with the size of the session.
u64 row_count(const SessionView& session, u64 wanted, std::size_t columns) {
  constexpr u64 kAlwaysAllowedCells = u64{1} << 21;
  constexpr u64 kCellsPerSample = 64;
  u64 samples = 0;
  for (std::size_t i = 0; i < session.channel_count(); ++i) samples += session.channel(i).samples.size();
  return std::min(wanted, (kAlwaysAllowedCells + kCellsPerSample * samples) / columns);
}

std::string table_of(const SessionView& session, const SessionRun& run, const std::vector<Column>& columns,
                     u32 period_ms) {
  std::string text;
  for (const Column& column : columns) text.append(session.channel(column.channel).name).append(kCellEnd);
  text += '\n';
  for (const Column& column : columns) text.append(session.channel_unit(column.channel)).append(kCellEnd);
  text += '\n';
  const u64 rows = row_count(session, run.duration_ms / period_ms, columns.size());
  for (u64 i = 0; i < rows; ++i) {
    const u64 time_ms = run.start_ms + i * period_ms;
    for (const Column& column : columns) {
      append_number(&text, value_at(column.samples, column.period_ms, time_ms));
      text.append(kCellEnd);
    }
    text += '\n';
  }
  return text;
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
  const std::string racer = session.racer();
  const std::string where = " for racer [" + racer + "] in file:" + platform::host_bytes_from_path(path);

  const std::optional<std::string_view> lines = configuration.racer_lines(racer);
  if (!lines) {
    platform::write_whole_file(output, "Please doublecheck parameters" + where);
    return false;
  }
  const std::vector<Column> columns = columns_of(session, *lines);
  if (columns.empty()) {
    platform::write_whole_file(
        output, "No valid channel name" + where + "\nPlease notice that channels names are case sensitive");
    return false;
  }
  platform::write_whole_file(output, table_of(session, run, columns, export_period_ms(configuration.text())));
  return true;
}

}  // namespace traguardo
