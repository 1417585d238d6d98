// SPDX-License-Identifier: MIT
// The raw words of two channels, each in an area of its own of 64 KiB; behind both stands a dump of the logger's
// memory, which isn't needed.
#include <algorithm>

#include "legacy/file/sample_form.h"
#include "legacy/file/wmp_file.h"
#include "legacy/file/wmp_tables.h"

namespace traguardo {
namespace {

constexpr std::size_t kAreas = 2;

u64 area_start(const WmpTables& tables, std::size_t area) {
  return aligned_areas_start(tables) + area * kAlignedAreaSize;
}

void measure(const CFileWMP& file, WmpTables* tables) {
  const u64 dump = area_start(*tables, kAreas);
  tables->dump_bytes = file.file_length() > dump ? file.file_length() - dump : 0;
}

// A channel may go on beyond its area, up to the end of the file.
void limit_counts(WmpTables* tables) {
  for (std::size_t i = 0; i < tables->logged_count; ++i) {
    WmpChannelRecord& record = tables->channels[i].record;
    const u64 start = area_start(*tables, i);
    const u64 held = i < kAreas && tables->stored_length > start ? (tables->stored_length - start) / sizeof(u16) : 0;
    record.set_sample_count(static_cast<u32>(std::min<u64>(record.sample_count(), held)));
  }
}

bool read(CFileWMP* file, WmpTables* tables, const CSensori&, std::vector<u16>* words, u32*) {
  for (std::size_t i = 0; i < std::min(tables->logged_count, kAreas); ++i) {
    file->seek(area_start(*tables, i));
    const std::vector<u16> area = file->read_words(tables->channels[i].record.sample_count());
    words->insert(words->end(), area.begin(), area.end());
  }
  return true;
}

}  // namespace

constexpr SampleForm kAlignedAreas{true, measure, limit_counts, read};

}  // namespace traguardo
