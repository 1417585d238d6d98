// SPDX-License-Identifier: MIT
// What happened to the samples of one channel while the stream was read.
#pragma once

#include <vector>

#include "support/bytes.h"

namespace traguardo {

struct SStatMisura {
  virtual ~SStatMisura() = default;
  virtual void ContaS() { ++good_s; }
  virtual void ContaM() { ++good_m; }
  virtual void ContaA() { ++good_a; }
  virtual void ContaG() { ++good_g; }
  // A sample that was refused, with the file offset of its frame.
  virtual void AggiungiErrore(u64 offset) { bad_offsets.push_back(offset); }

  u32 good_s = 0;
  u32 good_m = 0;
  u32 good_a = 0;
  u32 good_g = 0;
  std::vector<u64> bad_offsets;
};

}  // namespace traguardo
