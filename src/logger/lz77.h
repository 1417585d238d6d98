// SPDX-License-Identifier: MIT
// The expansion of a .qlc: one zlib stream that holds a whole .qlt, from one file into another. Despite its name the
// class holds no compression code of its own.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "support/bytes.h"
#include "support/platform/platform.h"

namespace traguardo {

// What an expansion came to.
enum class Expansion {
  kWhole,       // the stream ended properly, or reached the size that no reader can pass
  kDamaged,     // the stream is damaged, wants a preset dictionary, or ended before its end mark
  kUnreadable,  // the source was opened, but could not be read to its end
  kNotTaken,    // what came out could not be written
  kNoMemory,
  kNoSource,  // the source can't be opened
  kNoPlace,   // no file can be made where it should go
};

// Hands what the source holds to `take`, a piece at a time and in order, until that gives false. One of the first five.
Expansion expand(const platform::File& source, const std::function<bool(const u8* bytes, std::size_t count)>& take);

class ILz77 {
 public:
  virtual ~ILz77() = default;
  // Both paths are the host's bytes. What comes out takes the target's name where the stream ended properly, or where
  // it is more than stands there: a bad stream never costs a good file. A target that somebody reads stays whole for
  // them.
  //   0  the stream ended properly; also, with nothing expanded, if the source or the target can't be opened
  //  -1  reading or writing failed; nothing is left of it
  //  -3  the stream is damaged, wants a preset dictionary, or ended before its end mark
  //  -4  no memory
  virtual i32 Decomprimi(const char* source, const char* target) = 0;
};

class CLz77 : public ILz77 {
 public:
  i32 Decomprimi(const char* source, const char* target) override;
  // The same by paths, with all that there is to tell.
  static Expansion expand_to(const std::wstring& source, const std::wstring& target);
};

// Null if the memory can't be had.
std::unique_ptr<ILz77> CreaLz77();

}  // namespace traguardo
