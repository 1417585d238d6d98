// SPDX-License-Identifier: MIT
#include "legacy/file/jts_parser.h"

#include <exception>

#include "legacy/file/trace_file.h"

namespace traguardo {
namespace {

constexpr TraceFileKind kJts{"HEAD", "NSOL", 32, 14, 64};
constexpr std::size_t kSampleOffset = 4;
// A trace of fewer records is of no use: neither speed nor heading can be told from it.
constexpr std::size_t kFewestSamples = 3;

}  // namespace

bool IJTSFileParser::LeggiCampioniGps(const std::wstring& path, std::vector<SGpsRecord>* samples, std::wstring*) {
  return walk_trace_file(
      path, kJts, [samples](const u8*) { samples->clear(); },
      [samples](const u8* record) { samples->push_back(SGpsRecord::from_bytes(record + kSampleOffset)); });
}

bool CParserJTS::CaricaTraccia(IProgress*, CParser* target) {
  std::vector<SGpsRecord> samples;
  std::wstring error;
  if (!IJTSFileParser::LeggiCampioniGps(GetNomeFile(), &samples, &error)) return false;
  if (samples.size() < kFewestSamples) return false;
  trace_ = target->GetOCreaTracciaGps("GPS");
  if (trace_ != nullptr) {
    for (const SGpsRecord& sample : samples) trace_->AddRecordNoClock(sample);
  }
  return true;
}

bool CParserJTS::ParsaFile(IProgress* progress) try {
  return CaricaTraccia(progress, this);
} catch (const std::exception&) {
  return false;
}

}  // namespace traguardo
