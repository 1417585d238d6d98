// SPDX-License-Identifier: MIT
// A whole .qlt from the fuzzer's bytes: it must open or not, hand out what it has, and leave nothing behind.

#include "mutators.h"
#include "whole_file.h"

using namespace traguardo;

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t room, unsigned seed) {
  return fuzz::mutate(data, size, room, seed, [room](const fuzz::Bytes& bytes, fuzz::Random& random) {
    return fuzz::changed_tags(bytes, room, random);
  });
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::read_everything(fuzz::folder().write("a.qlt", fuzz::Bytes(data, data + size)));
  fuzz::check(fuzz::folder().names().size() == 1);
  return 0;
}
