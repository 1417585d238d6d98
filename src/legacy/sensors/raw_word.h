// SPDX-License-Identifier: MIT
// One raw 16-bit word of a legacy channel.
#pragma once

#include "support/bytes.h"

namespace traguardo {

// Words from 0x8000 to 0xCFFF are the logger's mark of a sample without a value.
inline bool is_value(u16 word) {
  return word < 0x8000 || word > 0xCFFF;
}

inline float unsigned_word(u16 word) {
  return static_cast<float>(word);
}
inline float signed_word(u16 word) {
  return static_cast<float>(static_cast<i16>(word));
}

}  // namespace traguardo
