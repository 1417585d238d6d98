// SPDX-License-Identifier: MIT
// The tags of the file's top level: who, where, when, with which devices. What they say is taken as it comes; what
// needs the whole file (date, idents, ECU info) is collected and worked out after the walk.

#include <algorithm>
#include <chrono>
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

// Field by field; the day of the week and of the year follow from the date.
std::tm clamped(const std::tm& given) {
  using std::chrono::month;
  using std::chrono::sys_days;
  using std::chrono::year;
  constexpr int kYearZero = 1900;
  std::tm time{};
  time.tm_year = std::max(given.tm_year, 1990 - kYearZero);
  time.tm_mon = std::clamp(given.tm_mon, 0, 11);
  // The calendar comes again every 400 years: what isn't digits may give a year beyond those that the library knows.
  const year known{2000 + (time.tm_year + kYearZero) % 400};
  const std::chrono::year_month in = known / month{static_cast<unsigned>(time.tm_mon + 1)};
  const unsigned last_day = static_cast<unsigned>((in / std::chrono::last).day());
  time.tm_mday = std::clamp(given.tm_mday, 1, static_cast<int>(last_day));
  time.tm_hour = std::clamp(given.tm_hour, 0, 23);
  time.tm_min = std::clamp(given.tm_min, 0, 59);
  time.tm_sec = std::clamp(given.tm_sec, 0, 59);
  const sys_days day{in / time.tm_mday};
  time.tm_wday = static_cast<int>(std::chrono::weekday{day}.c_encoding());
  time.tm_yday = static_cast<int>((day - sys_days{known / std::chrono::January / 1}).count());
  return time;
}

bool is_time_separator(u8 c) {
  return c == ':' || c == '.';
}

}  // namespace

bool CParserZep_2Gv4::wants_bytes_of(const SAtomTag& tag) const {
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
    watch_clock_of(tag);
    return true;
  }
  if (tag.name == "LAP") {
    laps_.take_tag(tag);
  } else if (is_gps_name(tag.name)) {
    add_gps_tag(tag);
  } else if (!is_header_tag(tag)) {
    collect_debug_tag(tag);
  }
  return true;
}

// Takes a tag that describes the session; false if it is none of them.
bool CParserZep_2Gv4::is_header_tag(const SAtomTag& tag) {
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
void CParserZep_2Gv4::watch_clock_of(const SAtomTag& tag) {
  if (!is_gps_name(tag.name) || tag.payloadSize != SGpsRecord::kSize) return;
  const u64 time = u64{load_u32(tag.payload)} * kMicrosecondsPerMillisecond;
  clock_.watch_tag(tag.offset, time);
}

void CParserZep_2Gv4::add_gps_tag(const SAtomTag& tag) {
  if (clock_.is_taken_back(tag.offset)) {
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

void CParserZep_2Gv4::extract_date_and_time() {
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

void CParserZep_2Gv4::extract_idents(const std::vector<KeptTag>& tags, IdentMap* idents) {
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

void CParserZep_2Gv4::extract_ecu_info() {
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
