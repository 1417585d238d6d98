// SPDX-License-Identifier: MIT
#include "model/super_parser.h"

#include <algorithm>

namespace traguardo {

namespace {
constexpr u64 kShortestPeriod = 1'000'000;
const std::string kNoText;
}  // namespace

bool CSuperParser::AggiungiParser(const std::map<double, IRkParser*>& readers) {
  for (const auto& [key, reader] : readers) {
    if (auto* parser = dynamic_cast<CParser*>(reader)) entries_[key].reader = parser;
  }
  if (entries_.empty()) return false;
  lay_out();
  move_readers();
  const u64 axis_from = entries_.begin()->second.offset;
  const u64 axis_to = entries_.rbegin()->second.offset + entries_.rbegin()->second.length;
  i32 session_number = 1;
  for (const auto& [key, entry] : entries_) {
    take_channels(entry, axis_from, axis_to);
    for (const auto& [number, session] : entry.reader->GetSessioni()) sessions_[session_number++] = session.get();
  }
  return true;
}

void CSuperParser::lay_out() {
  u64 offset = 0;
  for (auto& [key, entry] : entries_) {
    u64 last = 0;
    u64 period = 0;
    i16 week = 0;
    entry.reader->GetLimitiTemporali(&entry.first_time, &last, &week, &entry.gps_time_of_week, &period);
    entry.gps_week = static_cast<u16>(week);
    entry.offset = offset;
    period = std::max(period, kShortestPeriod);
    entry.length = ((last - entry.first_time) / period + 1) * period;
    offset += entry.length;
  }
}

void CSuperParser::move_readers() {
  const Entry* before = nullptr;
  for (auto& [key, entry] : entries_) {
    entry.reader->TraslaTempi(entry.first_time, entry.offset, entry.offset + entry.length);
    if (before != nullptr) entry.reader->RiallineaGps(0, before->gps_week, before->gps_time_of_week);
    before = &entry;
  }
}

void CSuperParser::take_channels(const Entry& entry, u64 axis_from, u64 axis_to) {
  for (const auto& channel : entry.reader->GetCanali()) {
    auto* parsed = dynamic_cast<CParsedChannel*>(channel.get());
    if (parsed == nullptr) continue;
    CSuperChannel*& super = channels_by_name_[parsed->GetNome()];
    if (super == nullptr) {
      channels_.push_back(std::make_unique<CSuperChannel>(parsed->GetNome(), axis_from, axis_to));
      super = channels_.back().get();
    }
    super->AddParte(parsed, entry.offset, entry.length);
  }
}

const std::map<i32, SRkSession*>& CSuperParser::GetSessioni() {
  for (const auto& [number, session] : sessions_) {
    if (session != nullptr) session->AggiornaStatistiche();
  }
  return sessions_;
}

IRkGpsTrace* CSuperParser::GetTracciaGpsMigliore(std::string* name) const {
  for (const auto& [key, entry] : entries_) {
    if (IRkGpsTrace* trace = entry.reader->GetTracciaGpsMigliore(name)) return trace;
  }
  return nullptr;
}

const std::tm* CSuperParser::GetDataOra() const {
  return entries_.empty() ? &date_and_time_ : entries_.begin()->second.reader->GetDataOra();
}

const std::string& CSuperParser::first_text(const std::string& (CParser::*getter)() const) const {
  for (const auto& [key, entry] : entries_) {
    const std::string& text = (entry.reader->*getter)();
    if (!text.empty()) return text;
  }
  return kNoText;
}

void CSuperParser::set_all(void (CParser::*setter)(const std::string&), const std::string& text) {
  for (const auto& [key, entry] : entries_) (entry.reader->*setter)(text);
}

}  // namespace traguardo
