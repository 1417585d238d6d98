// SPDX-License-Identifier: MIT
#include "legacy/file/wmp_messages.h"

namespace traguardo {

const WmpMessageRow& wmp_message(u32 code) {
  const auto table = code >= kFirstDumpMessage ? wmp_dump_messages() : wmp_messages();
  for (const WmpMessageRow& row : table) {
    if (row.code == code) return row;
  }
  return table.back();
}

}  // namespace traguardo
