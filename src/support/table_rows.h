// SPDX-License-Identifier: MIT
// Tables of values over a grid as text, of any length: hours at a high rate make gigabytes.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "support/bytes.h"

namespace traguardo {

// Collects rows and hands them over in pieces. take(text) gives false where nothing more is wanted, as on a full disk.
template <typename Take>
class RowPieces {
 public:
  explicit RowPieces(Take take) : take_(std::move(take)) { text_.reserve(kPieceSize + kPieceSize / 2); }

  // Where the next row goes.
  std::string& text() { return text_; }
  // What `take` said to the last piece.
  bool end_row() { return text_.size() < kPieceSize || finish(); }
  bool finish() {
    const bool goes_on = take_(std::string_view(text_));
    text_.clear();
    return goes_on;
  }

 private:
  static constexpr std::size_t kPieceSize = std::size_t{1} << 16;

  Take take_;
  std::string text_;
};

// The value between two samples in a straight line: `elapsed` of the `span` from one to the other.
template <typename Real>
Real on_line(Real from, Real to, Real elapsed, Real span) {
  return from + (to - from) * elapsed / span;
}

}  // namespace traguardo
