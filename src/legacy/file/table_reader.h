// SPDX-License-Identifier: MIT
// The one walk over the tables of a legacy file, of every version: which records there are, how long they are and what
// is done with them are columns of the version's row.
#pragma once

#include <string>
#include <vector>

#include "legacy/file/wmp_file.h"
#include "legacy/file/wmp_tables.h"

namespace traguardo {

class CSensori;

class TableReader {
 public:
  // All borrowed, for the life of the object. The file's position is the reader's.
  TableReader(CFileWMP* file, WmpTables* tables, const CSensori& sensors)
      : file_(file), tables_(tables), sensors_(sensors) {}

  // The header and the blocks of the file's version, without any table. A code of wmp_messages(), kMsgAllOk for none,
  // says why the file can't be read any further. REQUIRES: the file has just been opened.
  u32 read_head();

  // Head and tables of a file of that version, repaired; then, unless tables_only, the raw words of the logged
  // channels. A code as above, or one of wmp_dump_messages(), says what is wrong with the file. REQUIRES: as above, and
  // empty tables.
  u32 read(const WmpVersionRow& file_row, bool tables_only, std::vector<u16>* words);

 private:
  // Of the tables as they stand.
  const WmpVersionRow& row() const { return *tables_->version; }
  bool read_blocks();
  bool read_plain_blocks();
  u32 head_error() const;
  void take_real_length();
  // What stands behind the head, each table repaired once it is read. False if the file ends within, or if a checksum
  // differs.
  bool read_tables(const WmpVersionRow& file_row);
  bool read_channels();
  bool read_old_channels();
  bool drop_old_formulas(u64* dropped_bytes);
  bool read_laps();
  bool read_runs();
  bool read_extras();
  void modernise_old_laps();
  void log_laps() const;

  // One record, or two, with a head in front where the version has them. False if the file cuts the group short; a
  // checksum that differs makes sums_agree_ false.
  template <typename... Records>
  bool read_records(u16 head_size, Records*... records);

  CFileWMP* file_;
  WmpTables* tables_;
  const CSensori& sensors_;
  bool sums_agree_ = true;
};

}  // namespace traguardo
