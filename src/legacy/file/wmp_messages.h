// SPDX-License-Identifier: MIT
// The codes that a refused file leaves behind, and the texts that belong to them.
#pragma once

#include "legacy/file/wmp_messages_data.h"
#include "support/bytes.h"

namespace traguardo {

// The codes that reading can raise; the dump of version 500 adds its own from kFirstDumpMessage on.
inline constexpr u32 kMsgAllOk = 0;
inline constexpr u32 kMsgErrorOpening = 1;
inline constexpr u32 kMsgUnknownVersion = 2;
inline constexpr u32 kMsgChecksum = 3;
inline constexpr u32 kMsgUnknownSignature = 4;
inline constexpr u32 kMsgWrongLength = 5;
inline constexpr u32 kMsgNoLaps = 7;
inline constexpr u32 kMsgNoMeasure = 8;
inline constexpr u32 kMsgNoRun = 9;
inline constexpr u32 kMsgNoData = 10;
inline constexpr u32 kFirstDumpMessage = 1001;

// Text, id and table name of a code; the row that closes the code's table if it has no row.
const WmpMessageRow& wmp_message(u32 code);

}  // namespace traguardo
