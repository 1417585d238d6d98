// The expansion of a .qlc: one zlib stream that holds a whole .qlt, from one file into another. Despite its name the
// class holds no compression code of its own.
#pragma once

#include <memory>

#include "support/bytes.h"

namespace traguardo {

class ILz77 {
 public:
  virtual ~ILz77() = default;
  // Both paths are the host's bytes. The target is replaced; a target that somebody has mapped stays whole for them.
  //   0  the stream ended properly; also, with nothing expanded, if the source or the target can't be opened
  //  -1  reading or writing failed
  //  -3  the stream is damaged, wants a preset dictionary, or ended before its end mark
  //  -4  no memory; any other code is that of the start of the expansion
  // After a failure the target holds what was expanded up to there.
  virtual i32 Decomprimi(const char* source, const char* target) = 0;
};

class CLz77 : public ILz77 {
 public:
  i32 Decomprimi(const char* source, const char* target) override;
};

// Null if the memory can't be had.
std::unique_ptr<ILz77> CreaLz77();

}  // namespace traguardo
