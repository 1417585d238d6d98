// SPDX-License-Identifier: MIT
// The reader of the .wmp family behind the interface that every reader has: what a CWMP reads and computes becomes
// channels, laps, texts and a trace, and no legacy object is left.
#pragma once

#include <string>
#include <vector>

#include "model/parser.h"

namespace traguardo {

struct WmpSession;

class CParserWMP : public CParser {
 public:
  explicit CParserWMP(std::wstring path);
  ~CParserWMP() override;

  // False if there is no .jts beside the file, if that can't be read, or if a channel's store can't be written. A .wmp
  // that can't be read is no failure: the reader then holds the trace alone.
  bool ParsaFile(IProgress* progress) override;

  // Whether opening leaves a copy of the session beside it, ending in .bak, as it does unless it is told otherwise.
  void set_copies(bool copies) { copies_ = copies; }

  // The trace file of a session, beside it under the same name. Its ending is written as the session's is, letter by
  // letter in small or capital letters; where there is no such file, one in small or in capital letters will do.
  static std::wstring trace_path_of(const std::wstring& session_path);

  // Derived channels of a session beyond a day that ask for more samples than are believed, and end early.
  struct ShortenedChannel {
    std::string name;
    u32 samples = 0;
    u32 missing = 0;
  };
  const std::vector<ShortenedChannel>& shortened_channels() const { return shortened_channels_; }

 private:
  bool parse(IProgress* progress);
  bool load_trace(IProgress* progress);
  bool copy_channels(const WmpSession& session);
  void copy_laps(const WmpSession& session);
  void copy_texts(const WmpSession& session);
  void enter_ident(const WmpSession& session);

  std::vector<ShortenedChannel> shortened_channels_;
  bool copies_ = true;
};

}  // namespace traguardo
