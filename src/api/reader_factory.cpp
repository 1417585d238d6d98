#include "api/reader_factory.h"

#include <map>
#include <new>

#include "legacy/wmp_parser.h"
#include "logger/logger_parser.h"
#include "logger/lz77.h"
#include "support/platform/platform.h"

namespace traguardo {

namespace {

constexpr int kHighestKind = 10;

struct LoggerOptions {
  LoggerReportOptions report;
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

LoggerOptions parsed(const std::list<std::string>* options) {
  LoggerOptions result;
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
    } else {
      take_debug_request(option, &result.debug_tags);
    }
  }
  return result;
}

template <typename Text>
Text with_qlt_ending(const Text& path, const Text& ending) {
  const auto point = path.rfind(typename Text::value_type('.'));
  return (point == Text::npos ? path : path.substr(0, point)) + ending;
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
  if (kind == kKindWmp) return std::unique_ptr<IRkParser>(new (std::nothrow) CParserWMP(path));
  if (kind != kKindQlt && kind != kKindQlc) return nullptr;
  std::wstring work_path = path;
  std::wstring temporary;
  if (kind == kKindQlc) {
    const std::unique_ptr<ILz77> expander = CreaLz77();
    if (expander == nullptr) return nullptr;
    const std::string source = platform::host_bytes_from_path(path);
    const std::string target = with_qlt_ending(source, std::string(".qlt"));
    temporary = platform::path_from_host_bytes(target);
    expander->Decomprimi(source.c_str(), target.c_str());
    work_path = with_qlt_ending(path, std::wstring(L".qlt"));
  }
  const LoggerOptions settings = parsed(options);
  std::unique_ptr<CParserZep_2Gv4> reader(new (std::nothrow) CParserZep_2Gv4(work_path, settings.report));
  if (reader == nullptr) return nullptr;
  if (!temporary.empty()) reader->AddFileTemporaneo(temporary);
  reader->SetTagDiDebug(settings.debug_tags);
  reader->SetMantieniCostanti(keep_constant);
  return reader;
}

}  // namespace traguardo
