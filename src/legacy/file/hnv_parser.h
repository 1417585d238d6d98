// SPDX-License-Identifier: MIT
// The second kind of trace file, .hnv. No file kind leads to it and its records reach no trace: the reader checks such
// a file and says no.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "model/parser.h"

namespace traguardo {

// A solution of an .hnv file, in the frame of the file's reference point.
struct SHnvRecord {
  u32 time = 0;
  std::array<double, 3> position_m{};
  std::array<double, 3> velocity{};
};

class IHNVFileParser {
 public:
  virtual ~IHNVFileParser() = default;
  // As IJTSFileParser::LeggiCampioniGps. reference_m: earth-centred position of the reference point.
  static bool LeggiCampioniHnv(const std::wstring& path, std::vector<SHnvRecord>* samples,
                               std::array<double, 3>* reference_m);
};

class CParserHNV : public CParser {
 public:
  using CParser::CParser;

  // Reads the file to its end or its first damage, drops what it read, and gives false in every case.
  bool ParsaFile(IProgress* progress) override;

 private:
  CGPSSamples* trace_ = nullptr;  // never filled
};

}  // namespace traguardo
