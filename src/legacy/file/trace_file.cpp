// SPDX-License-Identifier: MIT
#include "legacy/file/trace_file.h"

#include <algorithm>
#include <vector>

#include "support/platform/platform.h"

namespace traguardo {
namespace {

bool has_tag(const u8* bytes, std::string_view tag) {
  return std::memcmp(bytes, tag.data(), tag.size()) == 0;
}

}  // namespace

bool walk_trace_file(const std::wstring& path, const TraceFileKind& kind,
                     const std::function<void(const u8* header)>& begin,
                     const std::function<void(const u8* record)>& take) {
  const platform::File file =
      platform::File::open(path, platform::Access::kRead, platform::Share::kReadWrite, platform::Creation::kMustExist);
  u64 length = 0;
  if (!file || !file.size(&length)) return false;
  const std::size_t front_size = 2 * kSectionMarkSize + kind.header_size;
  std::vector<u8> front(front_size);
  if (file.read_at(0, front.data(), front_size) != front_size) return false;
  const u8* header = front.data() + kSectionMarkSize;
  if (!has_tag(front.data(), kind.header_tag) || !has_tag(header, kind.header_tag) ||
      !has_tag(header + kind.header_size, kind.solution_tag)) {
    return false;
  }
  begin(header);

  constexpr u64 kRecordsAtATime = 1024;
  std::vector<u8> block(static_cast<std::size_t>(kRecordsAtATime) * kind.solution_size);
  u64 offset = front_size;
  const u64 held = (std::max<u64>(length, front_size) - front_size) / kind.solution_size;
  for (u64 left = std::min<u64>(held, load_u32(header + kind.count_offset)); left > 0;) {
    const std::size_t records = static_cast<std::size_t>(std::min(left, kRecordsAtATime));
    const std::size_t wanted = records * kind.solution_size;
    if (file.read_at(offset, block.data(), wanted) != wanted) return false;
    for (std::size_t i = 0; i < records; ++i) {
      const u8* record = block.data() + i * kind.solution_size;
      if (!has_tag(record, kind.solution_tag)) return true;
      take(record);
    }
    offset += wanted;
    left -= records;
  }
  return true;
}

}  // namespace traguardo
