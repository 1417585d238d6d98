// SPDX-License-Identifier: MIT
#include "logger/logger_parser.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>

#include "logger/tag_scan.h"
#include "support/event_log.h"

namespace traguardo {

namespace {
constexpr const char* kParsaFile = "CParserZep_2Gv4::ParsaFile";
}

CParserZep_2Gv4::CParserZep_2Gv4(const std::wstring& path, const LoggerReportOptions& options, platform::File expanded)
    : CParser(path),
      input_(expanded ? std::move(expanded) : InputFile::opened(path)),
      // Offsets inside a file of this family are 32-bit numbers, the highest of which ends a walk; what lies behind
      // can't be named.
      size_(static_cast<u32>(std::min<u64>(input_.size(), kStopWalk - 1))),
      options_(options) {}

CParserZep_2Gv4::~CParserZep_2Gv4() {
  TRAGUARDO_LOG("CParserZep_2Gv4::~CParserZep_2Gv4", "%s [%d] NOTICE = %p\n", static_cast<const void*>(this));
  table_.Clear();
}

bool CParserZep_2Gv4::ParsaFile(IProgress* progress) {
  if (!input_.IsValido()) {
    TRAGUARDO_LOG(kParsaFile, "%s [%d] ERROR = Can't alloc memory\n");
    return false;
  }
  if (refused_ || size_ == 0) return false;
  laps_.begin(options_.lap_statistics);
  TRAGUARDO_LOG(kParsaFile, "%s [%d] NOTICE = OK parsing file %s\n", GetNomeFile());
  if (!walk_progress_.begin(progress)) {
    TRAGUARDO_LOG(kParsaFile, "%s [%d] ALERT = Ext break\n");
    walk_progress_.End(false);
    return false;
  }

  bool good = false;
  try {
    good = (!recover_clock_ || find_wrong_clocks()) && Walk();
  } catch (const std::exception& problem) {
    TRAGUARDO_LOG(kParsaFile, "%s [%d] ERROR = Exception caught!\n");
    const bool is_reading = dynamic_cast<const platform::ReadFailure*>(&problem) != nullptr;
    set_failure(is_reading ? ParseFailure::kReading : ParseFailure::kMemory);
    good = false;
  }
  table_.Clear();
  walk_progress_.End(good);
  walk_progress_.forget();
  return good;
}

// Leaves the reader as it was, but for the clocks to take back.
bool CParserZep_2Gv4::find_wrong_clocks() {
  clock_.begin_watch();
  table_.set_keeps_samples(false);
  walk_progress_.set_silent(true);
  const bool whole = tags::walk(&input_, size_, *this);
  walk_progress_.set_silent(false);
  table_.set_keeps_samples(true);
  table_.Clear();
  decoder_.Reset();
  clock_.end_watch();
  tag_count_ = 0;
  return whole;
}

u32 CParserZep_2Gv4::OnUntaggedBytes(u32 offset) {
  const u32 advanced = decoder_.decode(offset);
  if (advanced != kStopWalk) known_end_ = u64{offset} + advanced;
  return advanced;
}

bool CParserZep_2Gv4::Walk() {
  if (!tags::walk(&input_, size_, *this)) {
    TRAGUARDO_LOG(kParsaFile, "%s [%d] ERROR = Bad something\n");
    return false;
  }
  decoder_.losses().bytes += size_ - std::min<u64>(known_end_, size_);
  bool good = false;
  if (tag_count_ == 0) {
    TRAGUARDO_LOG(kParsaFile, "%s [%d] ERROR = No tags found\n");
  } else {
    run_after_walk_steps();
    hand_over_channels();
    // Samples that never reached the disk are no session: a full disk is a failed open.
    if (!finish_stores()) {
      TRAGUARDO_LOG(kParsaFile, "%s [%d] ERROR = Bad something\n");
      return false;
    }
    if (clock_.now() > 0) laps_.add_closing_lap(sessions(), first_time_);
    RicalcolaInizioGiri();
    RimuoviTracceVuote();
    good = true;
  }
  write_report(GetNomeFile() + L".tw3.log");
  SalvaTagDiDebugSePresenti();
  return good;
}

void CParserZep_2Gv4::run_after_walk_steps() {
  extract_date_and_time();
  extract_idents(main_ident_tags_, &main_idents_);
  extract_idents(net_ident_tags_, &net_idents_);
  extract_ecu_info();
}

void CParserZep_2Gv4::hand_over_channels() {
  for (const auto& object : table_.channels()) {
    if (object != nullptr && object->channel() != nullptr) channels_.push_back(object->hand_over_channel());
  }
}

bool CParserZep_2Gv4::finish_stores() {
  u64 first = std::numeric_limits<u64>::max();
  bool good = true;
  for (const auto& channel : channels_) {
    auto* parsed = static_cast<CParsedChannel*>(channel.get());
    if (!parsed->ChiudiStore()) good = false;
    if (parsed->GetNumValori() != 0) first = std::min(first, parsed->GetPrimoTempo());
  }
  first_time_ = first == std::numeric_limits<u64>::max() ? 0 : first;
  return flush_store() && good;
}

}  // namespace traguardo
