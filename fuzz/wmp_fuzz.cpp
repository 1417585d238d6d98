// SPDX-License-Identifier: MIT
// A whole .wmp from the fuzzer's bytes, beside a sound trace file: it must open, and hand out what it has.

#include "mutators.h"
#include "whole_file.h"
#include "wire/jts.h"
#include "wire/wmp.h"

using namespace traguardo;

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t room, unsigned seed) {
  return fuzz::mutate(data, size, room, seed, [room](const fuzz::Bytes& bytes, fuzz::Random&) {
    fuzz::Bytes made = fuzz::changed(bytes, room);
    wire::wmp::reseal(&made);
    return made;
  });
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const test::TempFolder& folder = fuzz::folder();
  static const std::string trace = folder.write("a.jts", wire::plain_jts(5));
  const std::vector<fuzz::Answer> answers =
      fuzz::read_everything(folder.write("a.wmp", fuzz::Bytes(data, data + size)));
  fuzz::check(answers.front().result == 1);
  std::filesystem::remove(folder.path() / "a.bak");
  fuzz::check(folder.names().size() == 2);
  return 0;
}
