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
  DropTables();
}

bool CParserZep_2Gv4::ParsaFile(IProgress* progress) {
  progress_ = nullptr;
  for (ErrorList* list : {&errors_s_, &errors_m_, &errors_a_, &errors_g_, &errors_c_}) list->Clear();
  if (!input_.IsValido()) {
    TRAGUARDO_LOG(kParsaFile, "%s [%d] ERROR = Can't alloc memory\n");
    return false;
  }
  if (refused_ || size_ == 0) return false;
  laps_.Begin(options_.lap_statistics);
  TRAGUARDO_LOG(kParsaFile, "%s [%d] NOTICE = OK parsing file %s\n", GetNomeFile());
  if (progress != nullptr) {
    progress_ = progress;
    bool stop = false;
    progress_handle_ = progress->Apri(&stop, 100, 1);
    if (stop) {
      TRAGUARDO_LOG(kParsaFile, "%s [%d] ALERT = Ext break\n");
      TellSinkTheEnd(false);
      return false;
    }
  }

  bool good = false;
  try {
    good = (!recover_clock_ || FindWrongClocks()) && Walk();
  } catch (const std::exception& problem) {
    TRAGUARDO_LOG(kParsaFile, "%s [%d] ERROR = Exception caught!\n");
    const bool is_reading = dynamic_cast<const platform::ReadFailure*>(&problem) != nullptr;
    set_failure(is_reading ? ParseFailure::kReading : ParseFailure::kMemory);
    good = false;
  }
  DropTables();
  TellSinkTheEnd(good);
  progress_ = nullptr;
  return good;
}

// Leaves the reader as it was, but for the clocks to take back.
bool CParserZep_2Gv4::FindWrongClocks() {
  clock_watch_ = std::make_unique<ClockWatch>();
  IProgress* const sink = std::exchange(progress_, nullptr);
  const bool whole = tags::walk(&input_, size_, *this);
  progress_ = sink;
  const u64 none = taken_back_.back();
  taken_back_ = clock_watch_->taken_back();
  taken_back_.push_back(none);
  next_taken_back_ = taken_back_.begin();
  clock_watch_.reset();

  DropTables();
  assemblers_.clear();
  without_converter_.clear();
  for (ErrorList* list : {&errors_s_, &errors_m_, &errors_a_, &errors_g_, &errors_c_, &errors_file_}) list->Clear();
  losses_ = {};
  ++table_generation_;
  tag_count_ = 0;
  highest_time_ = 0;
  empty_samples_ = 0;
  resolved_places_ = 0;
  return whole;
}

bool CParserZep_2Gv4::Walk() {
  if (!tags::walk(&input_, size_, *this)) {
    TRAGUARDO_LOG(kParsaFile, "%s [%d] ERROR = Bad something\n");
    return false;
  }
  losses_.bytes += size_ - std::min<u64>(known_end_, size_);
  bool good = false;
  if (tag_count_ == 0) {
    TRAGUARDO_LOG(kParsaFile, "%s [%d] ERROR = No tags found\n");
  } else {
    RunAfterWalkSteps();
    HandOverChannels();
    // Samples that never reached the disk are no session: a full disk is a failed open.
    if (!FinishStores()) {
      TRAGUARDO_LOG(kParsaFile, "%s [%d] ERROR = Bad something\n");
      return false;
    }
    if (highest_time_ > 0) laps_.AddClosingLap(sessions(), first_time_);
    RicalcolaInizioGiri();
    RimuoviTracceVuote();
    good = true;
  }
  WriteReport(GetNomeFile() + L".tw3.log");
  SalvaTagDiDebugSePresenti();
  return good;
}

void CParserZep_2Gv4::RunAfterWalkSteps() {
  ExtractDateAndTime();
  ExtractIdents(main_ident_tags_, &main_idents_);
  ExtractIdents(net_ident_tags_, &net_idents_);
  ExtractEcuInfo();
}

void CParserZep_2Gv4::HandOverChannels() {
  for (const auto& object : s_channels_) {
    if (object != nullptr && object->channel() != nullptr) channels_.push_back(object->HandOverChannel());
  }
}

bool CParserZep_2Gv4::FinishStores() {
  u64 first = std::numeric_limits<u64>::max();
  bool good = true;
  for (const auto& channel : channels_) {
    auto* parsed = static_cast<CParsedChannel*>(channel.get());
    if (!parsed->ChiudiStore()) good = false;
    if (parsed->GetNumValori() != 0) first = std::min(first, parsed->GetPrimoTempo());
  }
  first_time_ = first == std::numeric_limits<u64>::max() ? 0 : first;
  return good;
}

void CParserZep_2Gv4::DropTables() {
  by_index_.clear();
  acquisitions_.Clear();
  groups_.Clear();
  s_channels_.clear();
}

bool CParserZep_2Gv4::TellSink(u64 position) {
  // Rounded to the nearest whole percent.
  const int percent = static_cast<int>((position * 200 + size_) / (u64{2} * size_));
  if (progress_->Avanza(progress_handle_, percent)) return true;
  TellSinkTheEnd(false);
  return false;
}

void CParserZep_2Gv4::TellSinkTheEnd(bool good) {
  if (progress_ != nullptr) progress_->Chiudi(progress_handle_, good ? 1 : 0);
}

}  // namespace traguardo
