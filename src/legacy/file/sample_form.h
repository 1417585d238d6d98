// SPDX-License-Identifier: MIT
// How the samples lie in a file: one form, and one source, for each way. The walk over a file's tables asks the form of
// its version for the raw words of the logged channels.
#pragma once

#include <vector>

#include "support/bytes.h"

namespace traguardo {

class CFileWMP;
class CSensori;
struct WmpTables;

struct SampleForm {
  // False: the file holds physical values, and its header knows no size of a raw area.
  bool holds_raw_words;
  // What the file can hold, whatever its records claim: sets raw_capacity, and dump_bytes where there is a dump.
  // REQUIRES: the head has been read, and the file stands behind it.
  void (*measure)(const CFileWMP& file, WmpTables* tables);
  // Cuts the sample counts of the logged channels to what there is.
  void (*limit_counts)(WmpTables* tables);
  // The words of the logged channels, one channel behind the other, as many as there are. False with a code in `error`
  // if they can't be made out. REQUIRES: the file stands behind the tables, which have been repaired.
  bool (*read)(CFileWMP* file, WmpTables* tables, const CSensori& sensors, std::vector<u16>* words, u32* error);
};

extern const SampleForm kFloatArea;  // physical values, one channel behind the other; sensors take them back to words
extern const SampleForm kRawArea;    // words, one channel behind the other
extern const SampleForm kAlignedAreas;  // the words of two channels, each in an area of its own; a dump behind them
extern const SampleForm kMemoryDump;    // nothing but a dump of the logger's memory

// For the forms that take the channels' samples in a row.
void limit_counts_in_a_row(WmpTables* tables);

}  // namespace traguardo
