// SPDX-License-Identifier: MIT
// Nothing but a dump of the logger's memory, from an offset in the configuration block to the end of the file.
#include <algorithm>

#include "legacy/file/dump_rebuild.h"
#include "legacy/file/sample_form.h"
#include "legacy/file/wmp_file.h"
#include "legacy/file/wmp_tables.h"

namespace traguardo {
namespace {

// A word of the dump is one sample at most.
void measure(const CFileWMP& file, WmpTables* tables) {
  const u64 offset = tables->configuration.dump_offset();
  tables->dump_bytes = file.file_length() > offset ? file.file_length() - offset : 0;
  tables->raw_capacity = tables->dump_bytes / sizeof(u16);
}

bool read(CFileWMP* file, WmpTables* tables, const CSensori&, std::vector<u16>* words, u32* error) {
  const u64 offset = tables->configuration.dump_offset();
  const auto read_bytes = [file, offset](u64 at, u8* out, std::size_t count) {
    file->seek(offset + at);
    return file->read_up_to(out, count);
  };
  CWMPvers500 dump(read_bytes, tables->dump_bytes, tables->header.raw_area_size() / sizeof(u16));
  if (!dump.Rebuild(tables->header.family(), error)) return false;
  *words = dump.take_words();
  return true;
}

}  // namespace

constexpr SampleForm kMemoryDump{true, measure, limit_counts_in_a_row, read};

}  // namespace traguardo
