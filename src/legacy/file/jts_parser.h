// SPDX-License-Identifier: MIT
// The GPS solutions of older loggers: a .jts file beside the session.
#pragma once

#include <string>
#include <vector>

#include "gps/gps_record.h"
#include "model/parser.h"

namespace traguardo {

// Reads the file; its operation needs no object.
class IJTSFileParser {
 public:
  virtual ~IJTSFileParser() = default;
  // The records in file order, as many as stand in front of the first damage. False if the file can't be opened or
  // read, or doesn't begin as such a file does; `samples` is then of no use. error: nothing is written to it.
  static bool LeggiCampioniGps(const std::wstring& path, std::vector<SGpsRecord>* samples, std::wstring* error);
};

class CParserJTS : public CParser {
 public:
  using CParser::CParser;

  // Loads the file of this reader into the trace "GPS" of `target`, which keeps it. False, and nothing changed in the
  // target, if the file can't be read or holds less than three records. progress: ignored.
  bool CaricaTraccia(IProgress* progress, CParser* target);
  // The same, into this reader.
  bool ParsaFile(IProgress* progress) override;

 private:
  CGPSSamples* trace_ = nullptr;  // borrowed from the target
};

}  // namespace traguardo
