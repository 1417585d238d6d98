// SPDX-License-Identifier: MIT
// A .qlt read with all that the reader can be asked to leave behind: every section of the report, debug tags, and the
// clock that is taken back. A report is there, and stays within what a file of its size can ask for.

#include "api/reader_factory.h"
#include "logger/logger_parser.h"
#include "mutators.h"
#include "whole_file.h"

using namespace traguardo;

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t room, unsigned seed) {
  return fuzz::mutate(data, size, room, seed, [room](const fuzz::Bytes& bytes, fuzz::Random& random) {
    return fuzz::changed_tags(bytes, room, random);
  });
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const test::TempFolder& folder = fuzz::folder();
  folder.write("a.qlt", fuzz::Bytes(data, data + size));
  // One bit of the size says whether the clock is watched.
  std::list<std::string> options = {"stat-misure=1",        "stat-lap=1",           "stat-gps=1",
                                    "gps-samples=1",        "zep-dbg-info1+EVT;.e", "zep-dbg-info1+LAP;.l",
                                    "zep-dbg-info1+CNF;.c", "zep-dbg-info1+c;.k"};
  if (size % 2 == 0) options.emplace_back("recover-clock=1");
  const std::unique_ptr<IRkParser> reader = CreaParser(folder.wide("a.qlt"), kKindQlt, &options, false);
  fuzz::check(reader != nullptr);
  const bool is_read = reader->ParsaFile(nullptr);
  const std::string report = folder.read("a.qlt.tw3.log");
  fuzz::check(!is_read || !report.empty());
  fuzz::check(report.size() < (std::size_t{4} << 20) + 4096 * size);
  for (const std::string& name : folder.names()) std::filesystem::remove(folder.path() / name);
  return 0;
}
