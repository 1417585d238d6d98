// SPDX-License-Identifier: MIT
#include "model/parser.h"

#include <algorithm>
#include <limits>

#include "model/parsed_channel.h"

namespace traguardo {

namespace {

constexpr std::size_t kTrackReferenceOffset = 36;
constexpr std::size_t kTrackNameWidth = 32;
const std::string kNoText;

}  // namespace

void SRkSession::AggiornaStatistiche() {
  lap_count = static_cast<u32>(laps.size());
  total_lap_time = 0;
  best_lap = -1;
  best_lap_time = std::numeric_limits<u64>::max();
  for (const auto& [number, lap] : laps) {
    if (lap == nullptr) continue;
    if (lap->duration < best_lap_time) {
      best_lap = number;
      best_lap_time = lap->duration;
    }
    total_lap_time += lap->duration;
  }
}

CParser::~CParser() {
  traces_.clear();
  channels_.clear();
  for (auto& [number, session] : sessions_) {
    if (session != nullptr) session->laps.clear();
  }
  sessions_.clear();
}

const SessionMap& CParser::GetSessioni() {
  for (auto& [number, session] : sessions_) {
    if (session != nullptr) session->AggiornaStatistiche();
  }
  return sessions_;
}

const std::string& CParser::text_of_session(std::string SRkSession::*field) const {
  return current_session_ != nullptr ? current_session_->*field : kNoText;
}

void CParser::set_text(std::string SRkSession::*field, const std::string& text) {
  if (SRkSession* session = make_current_session()) session->*field = text;
}

SRkSession* CParser::make_current_session() {
  if (current_session_ == nullptr) {
    session_outside_map_ = std::make_unique<SRkSession>();
    current_session_ = session_outside_map_.get();
  }
  return current_session_;
}

IRkGpsTrace* CParser::GetTracciaGps(const std::string& name) const {
  const auto found = traces_.find(name);
  return found == traces_.end() ? nullptr : found->second.get();
}

IRkGpsTrace* CParser::GetTracciaGpsMigliore(std::string* name) const {
  // The largest value and not the smallest, though quality is a mean inaccuracy: kept, hosts see this trace.
  double best = 0.0;
  IRkGpsTrace* trace = nullptr;
  for (const auto& [trace_name, candidate] : traces_) {
    const double quality = candidate->GetQuality();
    if (quality > best) {
      best = quality;
      trace = candidate.get();
      if (name != nullptr) *name = trace_name;
    }
  }
  return trace;
}

void CParser::GetNomiTracceGps(std::set<std::string>* names) const {
  names->insert("GPS");
  for (const auto& [name, trace] : traces_) names->insert(name);
}

void CParser::GetFileTemporanei(std::list<std::wstring>* files) const {
  files->insert(files->end(), temporary_files_.begin(), temporary_files_.end());
}

std::size_t CParser::AddFileTemporaneo(const std::wstring& path) {
  temporary_files_.push_back(path);
  return temporary_files_.size();
}

const u8* CParser::GetRecordTracciato() const {
  return current_session_ != nullptr ? current_session_->track_record.data() : nullptr;
}

void CParser::SetRecordTracciato(const u8* record) {
  if (SRkSession* session = make_current_session()) {
    std::copy(record, record + kTrackRecordSize, session->track_record.begin());
  }
  SetNomeTracciato(text_field(record, kTrackNameWidth));
  track_reference_[0] = load_i32(record + kTrackReferenceOffset);
  track_reference_[1] = load_i32(record + kTrackReferenceOffset + 4);
}

void CParser::SetDataOra(const std::tm& when) {
  date_and_time_ = when;
  if (SRkSession* session = make_current_session()) session->date_and_time = when;
}

void CParser::GetLimitiTemporali(u64* first, u64* last, i16* week, u32* time_of_week, u64* period) {
  *first = std::numeric_limits<u64>::max();
  *last = 0;
  *week = 0;
  *time_of_week = 0;
  *period = 0;
  for (const auto& channel : channels_) {
    if (channel->GetNumValori() == 0) continue;
    *first = std::min(*first, channel->GetPrimoTempo());
    *last = std::max(*last, channel->GetUltimoTempo());
    *period = std::max(*period, channel->GetPeriodo());
  }
  for (const auto& [name, trace] : traces_) {
    if (!trace->HasSamples()) continue;
    *first = std::min(*first, trace->GetFirstTime());
    *last = std::max(*last, trace->GetLastTime());
    i16 trace_week = 0;
    u32 trace_time_of_week = 0;
    trace->GetLastGpsTime(trace_week, trace_time_of_week);
    if (trace_week > *week || *time_of_week > trace_time_of_week) {
      *week = trace_week;
      *time_of_week = trace_time_of_week;
    }
  }
  for (const auto& [number, session] : GetSessioni()) {
    if (session == nullptr) continue;
    for (const auto& [lap_number, lap] : session->laps) {
      if (lap == nullptr) continue;
      *first = std::min(*first, lap->marker_time - lap->duration);
      *last = std::max(*last, lap->end);
    }
  }
}

SRkLap* CParser::GetGiro(i32 session_number, i32 lap_number) {
  if (sessions_.empty() && session_outside_map_ != nullptr) {
    session_outside_map_->session_number = session_number;
    sessions_[session_number] = std::move(session_outside_map_);
  }
  std::unique_ptr<SRkSession>& session = sessions_[session_number];
  if (session == nullptr) {
    session = std::make_unique<SRkSession>();
    session->session_number = session_number;
  }
  std::unique_ptr<SRkLap>& lap = session->laps[lap_number];
  if (lap == nullptr) lap = std::make_unique<SRkLap>();
  return lap.get();
}

CGPSSamples* CParser::GetOCreaTracciaGps(const std::string& name) {
  std::unique_ptr<CGPSSamples>& trace = traces_[name];
  if (trace == nullptr) trace = std::make_unique<CGPSSamplesLibXml2>();
  return trace.get();
}

void CParser::RimuoviTracceVuote() {
  std::erase_if(traces_, [](const auto& entry) { return entry.second == nullptr || !entry.second->HasSamples(); });
}

void CParser::RicalcolaInizioGiri() {
  u64 running = 0;
  u64 last = 0;
  i16 week = 0;
  u32 time_of_week = 0;
  u64 period = 0;
  GetLimitiTemporali(&running, &last, &week, &time_of_week, &period);
  for (auto& [number, session] : sessions_) {
    if (session == nullptr) continue;
    for (auto& [lap_number, lap] : session->laps) {
      if (lap == nullptr) continue;
      lap->start = running;
      running = lap->end;
    }
  }
}

void CParser::TraslaTempi(u64 from, u64 to, u64 end) {
  const u64 distance = to - from;
  for (auto& [name, trace] : traces_) trace->ShiftTime(from, to);
  for (const auto& channel : channels_) {
    if (auto* parsed = dynamic_cast<CParsedChannel*>(channel.get())) parsed->TraslaTempi(from, to);
  }
  SRkLap* last_visited = nullptr;
  for (auto& [number, session] : sessions_) {
    if (session == nullptr) continue;
    for (auto& [lap_number, lap] : session->laps) {
      if (lap == nullptr) continue;
      lap->start += distance;
      lap->end += distance;
      lap->marker_time += distance;
      for (auto& [split_number, split] : lap->splits) {
        split->start += distance;
        split->end += distance;
        split->marker_time += distance;
      }
      last_visited = lap.get();
    }
  }
  if (last_visited != nullptr) last_visited->end = end;
}

void CParser::RiallineaGps(u32 reference, u16 week, u32 time_of_week) {
  for (auto& [name, trace] : traces_) trace->RiallineaGps(reference, static_cast<i16>(week), time_of_week);
}

StoreFile* CParser::GetFileStore() {
  if (store_file_ == nullptr) store_file_ = std::make_unique<StoreFile>(path_);
  return store_file_.get();
}

}  // namespace traguardo
