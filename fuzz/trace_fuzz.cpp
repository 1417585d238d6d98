// SPDX-License-Identifier: MIT
// A trace file of an older logger beside a sound session, .jts or .hnv by its first letter.

#include "legacy/file/hnv_parser.h"
#include "mutators.h"
#include "whole_file.h"
#include "wire/wmp.h"

using namespace traguardo;

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t room, unsigned seed) {
  return fuzz::mutate(data, size, room, seed, [room](const fuzz::Bytes& bytes, fuzz::Random&) {
    return fuzz::with_trace_tags(fuzz::changed(bytes, room));
  });
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const test::TempFolder& folder = fuzz::folder();
  const fuzz::Bytes bytes(data, data + size);
  if (size > 0 && data[0] == 'P') {
    folder.write("a.hnv", bytes);
    std::vector<SHnvRecord> solutions;
    std::array<double, 3> reference_m{};
    IHNVFileParser::LeggiCampioniHnv(folder.wide("a.hnv"), &solutions, &reference_m);
    fuzz::check(solutions.size() <= size / 144);
    fuzz::check(!CParserHNV(folder.wide("a.hnv")).ParsaFile(nullptr));
    return 0;
  }
  static const std::string session = [&folder] {
    wire::wmp::Channel channel;
    channel.words = {1, 2, 3, 4};
    wire::wmp::File file;
    file.logged = {channel};
    return folder.write("a.wmp", wire::wmp::build(file));
  }();
  folder.write("a.jts", bytes);
  fuzz::read_everything(session);
  return 0;
}
