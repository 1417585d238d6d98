// SPDX-License-Identifier: MIT
// Raw words, one channel behind the other, directly behind the tables.
#include "legacy/file/sample_form.h"
#include "legacy/file/wmp_file.h"
#include "legacy/file/wmp_tables.h"

namespace traguardo {
namespace {

void measure(const CFileWMP& file, WmpTables* tables) {
  const u64 records = record_bytes(*tables);
  tables->raw_capacity = file.bytes_left() > records ? (file.bytes_left() - records) / sizeof(u16) : 0;
}

bool read(CFileWMP* file, WmpTables* tables, const CSensori&, std::vector<u16>* words, u32*) {
  *words = file->read_words(tables->header.raw_area_size() / sizeof(u16));
  return true;
}

}  // namespace

constexpr SampleForm kRawArea{true, measure, limit_counts_in_a_row, read};

}  // namespace traguardo
