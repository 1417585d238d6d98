// SPDX-License-Identifier: MIT
#include "legacy/file/hnv_parser.h"

#include <exception>

#include "legacy/file/trace_file.h"

namespace traguardo {
namespace {

constexpr TraceFileKind kHnv{"PROV", "PSOL", 64, 10, 144};

std::array<double, 3> load_vector(const u8* bytes) {
  return {load_f64(bytes), load_f64(bytes + 8), load_f64(bytes + 16)};
}

}  // namespace

bool IHNVFileParser::LeggiCampioniHnv(const std::wstring& path, std::vector<SHnvRecord>* samples,
                                      std::array<double, 3>* reference_m) {
  return walk_trace_file(
      path, kHnv,
      [=](const u8* header) {
        *reference_m = load_vector(header + 14);
        samples->clear();
      },
      [samples](const u8* record) {
        samples->push_back({load_u32(record + 4), load_vector(record + 16), load_vector(record + 48)});
      });
}

bool CParserHNV::ParsaFile(IProgress*) try {
  std::vector<SHnvRecord> samples;
  std::array<double, 3> reference_m{};
  IHNVFileParser::LeggiCampioniHnv(GetNomeFile(), &samples, &reference_m);
  trace_ = nullptr;
  return false;
} catch (const std::exception&) {
  return false;
}

}  // namespace traguardo
