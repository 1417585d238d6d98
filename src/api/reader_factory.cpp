// SPDX-License-Identifier: MIT
#include "api/reader_factory.h"

#include <map>
#include <new>
#include <utility>

#include "legacy/wmp_parser.h"
#include "logger/logger_parser.h"
#include "logger/lz77.h"
#include "support/host_folders.h"
#include "support/platform/platform.h"

namespace traguardo {

namespace {

constexpr int kHighestKind = 10;

struct ReaderOptions {
  LoggerReportOptions report;
  bool recover_clock = false;
  bool copies = true;
  std::map<std::string, std::string> debug_tags;
};

// A request for a debug tag: '+' at offset 13, ';' at an offset from 14 to 17. Of two requests for one tag the first
// stays.
void take_debug_request(const std::string& option, std::map<std::string, std::string>* requests) {
  constexpr std::size_t kPlus = 13;
  constexpr std::size_t kFirstSemicolon = 14;
  constexpr std::size_t kLastSemicolon = 17;
  if (!option.starts_with("zep-dbg-info")) return;
  const std::size_t plus = option.find('+');
  const std::size_t semicolon = option.find(';');
  if (plus != kPlus || semicolon < kFirstSemicolon || semicolon > kLastSemicolon) return;
  requests->emplace(option.substr(plus, semicolon - plus), option.substr(semicolon + 1));
}

ReaderOptions parsed(const std::list<std::string>* options) {
  ReaderOptions result;
  if (options == nullptr) return result;
  for (const std::string& option : *options) {
    if (option == "stat-misure=1") {
      result.report.measure_statistics = true;
    } else if (option == "stat-lap=1") {
      result.report.lap_statistics = true;
    } else if (option == "stat-gps=1") {
      result.report.gps_statistics = true;
    } else if (option == "gps-samples=1") {
      result.report.gps_samples = true;
    } else if (option == "recover-clock=1") {
      result.recover_clock = true;
    } else if (option == "wmp-copy=0") {
      result.copies = false;
    } else {
      take_debug_request(option, &result.debug_tags);
    }
  }
  return result;
}

std::wstring with_qlt_ending(const std::wstring& path) {
  return path.substr(0, path.rfind(L'.')) + L".qlt";
}

platform::File open_to_read(const std::wstring& path) {
  return platform::File::open(path, platform::Access::kRead, platform::Share::kRead, platform::Creation::kMustExist);
}

// Expands a compressed session beside itself. Where nothing can be made there the expansion goes to the folder for
// stores, if one is named, into a file without a name. Gives why the session can't be read then; kContent where what
// stands there has to show.
ParseFailure expand_session(const std::wstring& source_path, const std::wstring& target_path, platform::File* unnamed) {
  Expansion result = CLz77::expand_to(source_path, target_path);
  const std::wstring folder = store_folder();
  if (result == Expansion::kNoPlace && !folder.empty() && !platform::file_exists(target_path)) {
    const platform::File source = open_to_read(source_path);
    *unnamed = platform::File::create_unnamed(folder);
    if (!*unnamed) return ParseFailure::kStore;
    u64 written = 0;
    result = expand(source, [&](const u8* bytes, std::size_t count) {
      const bool good = unnamed->write_at(written, bytes, count);
      written += count;
      return good;
    });
  }
  switch (result) {
    case Expansion::kUnreadable:
      return ParseFailure::kReading;
    case Expansion::kNotTaken:
      return ParseFailure::kStore;
    case Expansion::kNoMemory:
      return ParseFailure::kMemory;
    case Expansion::kNoPlace:
      return platform::file_exists(target_path) ? ParseFailure::kContent : ParseFailure::kStore;
    case Expansion::kWhole:
    case Expansion::kDamaged:
    case Expansion::kNoSource:
      break;
  }
  return ParseFailure::kContent;
}

}  // namespace

int file_kind_of(const std::wstring& path) {
  constexpr std::size_t kEnding = 4;
  if (path.size() < kEnding) return kKindUnknown;
  std::wstring ending = path.substr(path.size() - kEnding);
  for (wchar_t& c : ending) {
    if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c - L'A' + L'a');
  }
  if (ending == L".qlt") return kKindQlt;
  if (ending == L".qlc") return kKindQlc;
  if (ending == L".wmp") return kKindWmp;
  return kKindUnknown;
}

std::unique_ptr<IRkParser> CreaParser(const std::wstring& path, int kind, const std::list<std::string>* options,
                                      bool keep_constant) {
  if (kind > kHighestKind) return nullptr;
  const ReaderOptions settings = parsed(options);
  if (kind == kKindWmp) {
    std::unique_ptr<CParserWMP> reader(new (std::nothrow) CParserWMP(path));
    if (reader != nullptr) reader->set_copies(settings.copies);
    return reader;
  }
  if (kind != kKindQlt && kind != kKindQlc) return nullptr;
  std::wstring work_path = path;
  ParseFailure failure = ParseFailure::kContent;
  platform::File expanded;
  if (kind == kKindQlc) {
    work_path = with_qlt_ending(path);
    failure = expand_session(path, work_path, &expanded);
  }
  std::unique_ptr<CParserZep_2Gv4> reader(new (std::nothrow)
                                              CParserZep_2Gv4(work_path, settings.report, std::move(expanded)));
  if (reader == nullptr) return nullptr;
  if (kind == kKindQlc) reader->AddFileTemporaneo(work_path);
  if (failure != ParseFailure::kContent) reader->refuse(failure);
  reader->set_recover_clock(settings.recover_clock);
  reader->SetTagDiDebug(settings.debug_tags);
  reader->SetMantieniCostanti(keep_constant);
  return reader;
}

}  // namespace traguardo
