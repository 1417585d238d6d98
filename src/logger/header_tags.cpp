// SPDX-License-Identifier: MIT
// The tags of the file's top level: who, where, when, with which devices. What they say is taken as it comes; what
// needs the whole file (date, idents, ECU info) is collected and worked out after the walk.

#include <algorithm>
#include <ctime>

#include "logger/logger_parser.h"
#include "support/event_log.h"

namespace traguardo {

namespace {

constexpr u64 kMicrosecondsPerMillisecond = 1000;

std::string text_of(const SAtomTag& tag) {
  return text_field(tag.payload, tag.payloadSize);
}

bool is_gps_name(const std::string& name) {
  if (!name.starts_with("GPS")) return false;
  return name.size() == 3 || (name.size() == 4 && name[3] >= '1' && name[3] <= '8');
}

// Characters are taken to be digits without a test; what comes out is clamped.
int digits(const u8* text, int count) {
  int value = 0;
  for (int i = 0; i < count; ++i) value = value * 10 + (text[i] - '0');
  return value;
}

bool is_leap(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int days_of(int month, int year) {
  constexpr int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 1 && is_leap(year) ? 29 : kDays[month];
}

// Days since Monday, 1 January of the year 1.
int day_number(int year, int month, int day) {
  const int before = year - 1;
  int days = before * 365 + before / 4 - before / 100 + before / 400;
  for (int m = 0; m < month; ++m) days += days_of(m, year);
  return days + day - 1;
}

// Field by field; the day of the week and of the year follow from the date.
std::tm clamped(const std::tm& given) {
  constexpr int kYearZero = 1900;
  std::tm time{};
  time.tm_year = std::max(given.tm_year, 1990 - kYearZero);
  time.tm_mon = std::clamp(given.tm_mon, 0, 11);
  time.tm_mday = std::clamp(given.tm_mday, 1, days_of(time.tm_mon, time.tm_year + kYearZero));
  time.tm_hour = std::clamp(given.tm_hour, 0, 23);
  time.tm_min = std::clamp(given.tm_min, 0, 59);
  time.tm_sec = std::clamp(given.tm_sec, 0, 59);
  const int day = day_number(time.tm_year + kYearZero, time.tm_mon, time.tm_mday);
  time.tm_wday = (day + 1) % 7;
  time.tm_yday = day - day_number(time.tm_year + kYearZero, 0, 1);
  return time;
}

bool is_time_separator(u8 c) {
  return c == ':' || c == '.';
}

}  // namespace

bool CParserZep_2Gv4::WantsBytesOf(const SAtomTag& tag) const {
  return tag.name != "CNF";
}

bool CParserZep_2Gv4::OnTag(const SAtomTag& tag) {
  ++tag_count_;
  known_end_ = u64{tag.offset} + tag.totalSize;
  if (!walk_progress_.Report(tag.offset)) return false;
  if (tag.name == "CNF") {
    if (table_.Take(tag)) return true;
    walk_progress_.End(false);
    return false;
  }
  if (clock_.is_watched()) {
    WatchClockOf(tag);
    return true;
  }
  if (tag.name == "LAP") {
    laps_.TakeTag(tag);
  } else if (is_gps_name(tag.name)) {
    AddGpsTag(tag);
  } else if (!IsHeaderTag(tag)) {
    CollectDebugTag(tag);
  }
  return true;
}

// Takes a tag that describes the session; false if it is none of them.
bool CParserZep_2Gv4::IsHeaderTag(const SAtomTag& tag) {
  struct TextTag {
    const char* name;
    void (CParser::*set)(const std::string&);
  };
  static constexpr TextTag kTextTags[] = {
      {"RCR", &CParser::SetNomePilota},     {"VEH", &CParser::SetNomeVeicolo}, {"CMP", &CParser::SetNomeCampionato},
      {"VTY", &CParser::SetNomeTipoVenue},  {"RACM", &CParser::SetModoGara},   {"PRFD", &CParser::SetTestoPrfd},
      {"TRTY", &CParser::SetTipoTracciato},
  };
  for (const TextTag& text_tag : kTextTags) {
    if (tag.name == text_tag.name) {
      (this->*text_tag.set)(text_of(tag));
      return true;
    }
  }
  if (tag.name == "TRK ") {
    if (tag.payloadSize < kTrackRecordSize) {
      SetNomeTracciato(text_of(tag));
    } else {
      SetRecordTracciato(tag.payload);
      has_track_record_ = true;
    }
  } else if (tag.name == "SRC") {
    main_ident_tags_.emplace_back(tag);
  } else if (tag.name == "iSLV") {
    net_ident_tags_.emplace_back(tag);
  } else if (tag.name == "TMD" || tag.name == "TMT") {
    time_tags_.emplace_back(tag);
  } else if (tag.name == "ENF") {
    ecu_tags_.emplace_back(tag);
  } else {
    // Events mean nothing here, but they are known.
    return tag.name == "EVT";
  }
  return true;
}

// Only tags that may set the reader's time matter while nothing but clocks is looked at.
void CParserZep_2Gv4::WatchClockOf(const SAtomTag& tag) {
  if (!is_gps_name(tag.name) || tag.payloadSize != SGpsRecord::kSize) return;
  const u64 time = u64{load_u32(tag.payload)} * kMicrosecondsPerMillisecond;
  clock_.WatchTag(tag.offset, time);
}

void CParserZep_2Gv4::AddGpsTag(const SAtomTag& tag) {
  if (clock_.IsTakenBack(tag.offset)) {
    decoder_.errors().file.Append(tag.offset);
    ++decoder_.losses().clocks;
    return;
  }
  CGPSSamples* trace = GetOCreaTracciaGps(tag.name);
  const u64 offset = u64{tag.offset} + kTagOpeningSize;
  // An assignment, not a maximum: a receiver's clock that runs back takes the reader's clock with it.
  if (trace->AddRecord(clock_.now(), tag.payload, tag.payloadSize, offset)) {
    clock_.Set(u64{load_u32(tag.payload)} * kMicrosecondsPerMillisecond);
  }
}

void CParserZep_2Gv4::ExtractDateAndTime() {
  std::tm time{};
  platform::local_time(std::time(nullptr), &time);
  for (const KeptTag& tag : time_tags_) {
    const u8* text = tag.payload.data();
    if (tag.name == "TMD") {
      if (tag.payload.size() < 10 || text[2] != '/' || text[5] != '/') continue;
      time.tm_mon = digits(text, 2) - 1;
      time.tm_mday = digits(text + 3, 2);
      time.tm_year = digits(text + 6, 4) - 1900;
    } else {
      if (tag.payload.size() < 8 || !is_time_separator(text[2]) || !is_time_separator(text[5])) continue;
      time.tm_hour = digits(text, 2);
      time.tm_min = digits(text + 3, 2);
      time.tm_sec = digits(text + 6, 2);
    }
  }
  SetDataOra(clamped(time));
}

void CParserZep_2Gv4::ExtractIdents(const std::vector<KeptTag>& tags, IdentMap* idents) {
  constexpr u32 kNoDevice = 0xFFFFFFFF;
  for (const KeptTag& tag : tags) {
    if (tag.payload.size() % SIdentRecord::kSize != 0) {
      TRAGUARDO_LOG("CParserZep_2Gv4::EstraiIdents", "%s [%d] ERROR = Bad data\n");
      continue;
    }
    std::vector<SIdentRecord> records(tag.payload.size() / SIdentRecord::kSize);
    u32 key = kNoDevice;
    for (std::size_t i = 0; i < records.size(); ++i) {
      const u8* bytes = tag.payload.data() + i * SIdentRecord::kSize;
      std::copy(bytes, bytes + SIdentRecord::kSize, records[i].bytes.begin());
      if (key == kNoDevice) key = records[i].device_id();
    }
    // Of two lists under one key the earlier stays.
    idents->emplace(key, std::move(records));
  }
}

void CParserZep_2Gv4::ExtractEcuInfo() {
  for (const KeptTag& tag : ecu_tags_) {
    std::vector<SAtomTag> inner_tags;
    CAtomTagDecoder().VectorTagsNamed(tag.payload.data(), static_cast<u32>(tag.payload.size()), {"MAN", "MOD"},
                                      inner_tags);
    std::pair<std::string, std::string> info;
    for (const SAtomTag& inner : inner_tags) {
      const std::string_view bytes(reinterpret_cast<const char*>(inner.payload), inner.payloadSize);
      if (inner.name == "MAN") info.first += bytes;
      if (inner.name == "MOD") info.second += bytes;
    }
    ecu_info_.push_back(std::move(info));
  }
}

}  // namespace traguardo
