// SPDX-License-Identifier: MIT
#include "legacy/derived/regulation_view.h"

#include "legacy/texts/wmp_measure.h"
#include "legacy/wmp_parser.h"
#include "legacy/wmp_session.h"

namespace traguardo {

std::size_t RegulationView::channel_count() const {
  return session_->tables.channels.size();
}

SessionChannel RegulationView::channel(std::size_t index) const {
  SessionChannel channel;
  channel.name = session_->tables.channels[index].record.name();
  channel.period_ms = session_->tables.channels[index].statistics.period_ms;
  channel.frequency_hz = session_->tables.channels[index].statistics.frequency_hz;
  channel.samples = session_->store.values(index);
  return channel;
}

std::string RegulationView::channel_unit(std::size_t index) const {
  if (index >= session_->measures.size()) return {};
  return narrow_low_bytes(session_->measures[index]->unit_text());
}

std::span<float> RegulationView::output_samples(std::size_t index) {
  return session_->store.values(index);
}

std::vector<SessionRun> RegulationView::runs() const {
  std::vector<SessionRun> runs;
  for (const WmpRun& run : session_->tables.runs) runs.push_back({run.number, run.start_ms, run.length_ms});
  return runs;
}

std::string RegulationView::racer() const {
  return session_->tables.names.racer();
}

std::string RegulationView::logger_id() const {
  const WmpVersionRow* version = session_->tables.version;
  const u32 serial = version != nullptr && version->has_serial ? session_->tables.header.logger_serial() : 0;
  return std::to_string(serial != 0 ? serial : session_->tables.identity.device_id());
}

std::wstring RegulationView::session_file_name() const {
  return session_->file_name;
}
std::wstring RegulationView::session_path() const {
  return session_->file_path;
}
std::vector<std::wstring> RegulationView::input_paths() const {
  return {session_->file_path, CParserWMP::trace_path_of(session_->file_path)};
}
std::wstring RegulationView::working_folder() const {
  return session_->application_folder;
}

}  // namespace traguardo
