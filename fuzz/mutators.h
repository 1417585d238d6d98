// SPDX-License-Identifier: MIT
// Mutations that keep what a reader checks first, so that they get behind it: tags stay whole, with their names, sizes
// and sums; older sessions keep their length and their sums.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

#include "wire/bytes.h"

// libFuzzer's own changes, in place; gives the new size.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t room);

namespace traguardo::fuzz {

using wire::Bytes;
using Random = std::minstd_rand;

// libFuzzer's own changes, of bytes that may grow up to `room`.
Bytes changed(Bytes bytes, std::size_t room);
// A tag, or what stands between two, is changed, goes, comes twice or changes places; tags inside a tag, too.
Bytes changed_tags(const Bytes& bytes, std::size_t room, Random& random);
// Each record of a trace file gets its tag back.
Bytes with_trace_tags(Bytes bytes);

// What LLVMFuzzerCustomMutator gives: one input in sixteen goes without repair.
template <typename Change>
std::size_t mutate(std::uint8_t* data, std::size_t size, std::size_t room, unsigned seed, Change&& change) {
  Random random(seed + 1);
  if (random() % 16 == 0) return LLVMFuzzerMutate(data, size, room);
  const Bytes made = change(Bytes(data, data + size), random);
  if (made.size() > room) return LLVMFuzzerMutate(data, size, room);
  std::copy(made.begin(), made.end(), data);
  return made.size();
}

}  // namespace traguardo::fuzz
