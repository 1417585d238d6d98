// SPDX-License-Identifier: MIT
// What the two kinds of trace file have in common: sections that open with a mark, and records that repeat the tag of
// their section. Names the sections of a kind and walks them.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>

#include "support/bytes.h"

namespace traguardo {

// One kind of trace file. The header record holds the number of solution records; each section begins with a mark of
// kSectionMarkSize bytes, the tag in front.
struct TraceFileKind {
  std::string_view header_tag;    // 4 characters
  std::string_view solution_tag;  // 4 characters
  std::size_t header_size;
  std::size_t count_offset;  // of a u32, in the header record
  std::size_t solution_size;
};
inline constexpr std::size_t kSectionMarkSize = 16;

// Hands each solution record, its tag included, to `take`, up to the number that the header states and up to the first
// that does not carry the tag or is cut short by the end of the file. False if the file can't be opened or read, or if
// one of the three tags in front of the records is another one.
bool walk_trace_file(const std::wstring& path, const TraceFileKind& kind,
                     const std::function<void(const u8* header)>& begin,
                     const std::function<void(const u8* record)>& take);

}  // namespace traguardo
