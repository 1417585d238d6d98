// SPDX-License-Identifier: MIT
// The message tables of the legacy reader: what a code of `CWMP::ApriFile` or `CWMPvers500::Rebuild` means.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

// The message lookup gives the three texts of a row. The last row of each table closes it and is the answer for a code
// that isn't in it.
struct WmpMessageRow {
  u32 code;
  const char* id;
  const char* text;
  const char* table;
};

std::span<const WmpMessageRow> wmp_messages();       // codes below 1001: the reader
std::span<const WmpMessageRow> wmp_dump_messages();  // codes from 1001 on: the rebuild of version 500's samples

}  // namespace traguardo
