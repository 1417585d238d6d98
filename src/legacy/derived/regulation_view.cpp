#include "legacy/derived/regulation_view.h"

#include "legacy/texts/wmp_measure.h"
#include "legacy/wmp_session.h"

namespace traguardo {

std::size_t RegulationView::channel_count() const {
  return session_->channel_count();
}

SessionChannel RegulationView::channel(std::size_t index) const {
  SessionChannel channel;
  channel.name = session_->channel(index).name();
  channel.period_ms = session_->statistics(index).period_ms;
  channel.frequency_hz = session_->statistics(index).frequency_hz;
  channel.samples = session_->values(index);
  return channel;
}

std::string RegulationView::channel_unit(std::size_t index) const {
  if (index >= session_->measures().size()) return {};
  return narrow_low_bytes(session_->measures()[index]->unit_text());
}

std::span<float> RegulationView::output_samples(std::size_t index) {
  return session_->values(index);
}

std::vector<SessionRun> RegulationView::runs() const {
  std::vector<SessionRun> runs;
  for (const WmpRunSpan& span : session_->run_spans()) {
    SessionRun run;
    run.number = span.run;
    run.start_ms = span.start_ms;
    run.duration_ms = span.length_ms;
    runs.push_back(run);
  }
  return runs;
}

std::string RegulationView::racer() const {
  return session_->names().racer();
}

std::string RegulationView::logger_id() const {
  // Below this the header has no serial number.
  constexpr u16 kFirstVersionWithSerial = 452;
  const u32 serial = session_->file_version() >= kFirstVersionWithSerial ? session_->header().logger_serial() : 0;
  return std::to_string(serial != 0 ? serial : session_->identity().device_id());
}

std::wstring RegulationView::session_file_name() const {
  return session_->file_name();
}
std::wstring RegulationView::session_path() const {
  return session_->file_path();
}
std::wstring RegulationView::working_folder() const {
  return session_->application_folder();
}

}  // namespace traguardo
