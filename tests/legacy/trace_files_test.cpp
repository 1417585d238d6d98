// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <tuple>

#include "helpers/temp_folder.h"
#include "helpers/wire.h"
#include "legacy/file/hnv_parser.h"
#include "legacy/file/jts_parser.h"

namespace traguardo::test {
namespace {

TEST(JtsFile, YieldsWhatStandsInFrontOfTheDamage) {
  struct Case {
    const char* what;
    bool read;
    std::size_t records;
    void (*damage)(Bytes* bytes);
  };
  // Five records behind 64 bytes, and ten stated.
  const Case cases[] = {
      {"fewer than stated", true, 5, [](Bytes*) {}},
      {"more than stated", true, 2, [](Bytes* b) { set_u32(b, 30, 2); }},
      {"none stated", true, 0, [](Bytes* b) { set_u32(b, 30, 0); }},
      {"a torn record", true, 3, [](Bytes* b) { b->resize(64 + 3 * 64 + 63); }},
      {"a strange tag", true, 2, [](Bytes* b) { (*b)[64 + 2 * 64 + 3] = 'M'; }},
      {"marks and headers say more than is read", true, 5,
       [](Bytes* b) {
         for (const std::size_t at : {4, 15, 20, 29, 34, 47, 52, 63}) (*b)[at] = 0xEE;
       }},
      {"no record", true, 0, [](Bytes* b) { b->resize(64); }},
      {"cut in the second mark", false, 0, [](Bytes* b) { b->resize(63); }},
      {"first mark", false, 0, [](Bytes* b) { (*b)[0] = 'h'; }},
      {"header", false, 0, [](Bytes* b) { (*b)[19] = 0; }},
      {"second mark", false, 0, [](Bytes* b) { (*b)[48] = 'P'; }},
  };
  const TempFolder folder;
  for (const Case& one : cases) {
    SCOPED_TRACE(one.what);
    Bytes bytes = plain_jts(5, 10);
    one.damage(&bytes);
    folder.write("t.jts", bytes);
    std::vector<SGpsRecord> records;
    std::wstring error;
    EXPECT_EQ(IJTSFileParser::LeggiCampioniGps(folder.wide("t.jts"), &records, &error), one.read);
    ASSERT_EQ(records.size(), one.records);
    for (std::size_t i = 0; i < records.size(); ++i) EXPECT_EQ(records[i].logger_time_ms(), 1000 * i);
  }
  std::vector<SGpsRecord> records;
  std::wstring error;
  EXPECT_FALSE(IJTSFileParser::LeggiCampioniGps(folder.wide("none.jts"), &records, &error));
}

TEST(JtsReader, ATraceNeedsThreeRecords) {
  const TempFolder folder;
  for (const std::size_t records : {0U, 2U, 3U}) {
    folder.write("t.jts", plain_jts(static_cast<u32>(records)));
    CParserJTS reader(folder.wide("t.jts"));
    EXPECT_EQ(reader.ParsaFile(nullptr), records >= 3);
    EXPECT_EQ(reader.GetTracciaGps("GPS") != nullptr, records >= 3);
  }
  // In pieces, in their order, into the reader that asked for them.
  folder.write("t.jts", plain_jts(2500));
  CParserJTS target(folder.wide("another.jts"));
  CParserJTS reader(folder.wide("t.jts"));
  EXPECT_TRUE(reader.CaricaTraccia(nullptr, &target));
  EXPECT_EQ(reader.GetTracciaGps("GPS"), nullptr);
  std::vector<SGpsRecord> records;
  std::wstring error;
  ASSERT_TRUE(IJTSFileParser::LeggiCampioniGps(folder.wide("t.jts"), &records, &error));
  ASSERT_EQ(records.size(), 2500U);
  EXPECT_EQ(records.back().logger_time_ms(), 1000U * 2499U);
}

TEST(HnvFile, IsReadAndRefused) {
  // Two solutions behind the marks and the header, which holds their number and a reference point.
  Record out(96 + 144 * 2);
  out.text(0, 4, "PROV").text(16, 4, "PROV").u32(26, 2).text(80, 4, "PSOL");
  out.text(96, 4, "PSOL").text(96 + 144, 4, "PSOL").u32(96 + 144 + 4, 10);
  Bytes bytes = out.bytes();
  store_f64(&bytes[16 + 14], 4.4e6);
  store_f64(&bytes[96 + 144 + 16 + 8], 1.5);
  store_f64(&bytes[96 + 144 + 48 + 16], -2.0);
  const TempFolder folder;
  folder.write("t.hnv", bytes);
  std::vector<SHnvRecord> records;
  std::array<double, 3> reference{};
  ASSERT_TRUE(IHNVFileParser::LeggiCampioniHnv(folder.wide("t.hnv"), &records, &reference));
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(std::tuple(reference[0], records[1].time, records[1].position_m[1], records[1].velocity[2]),
            std::tuple(4.4e6, 10U, 1.5, -2.0));
  EXPECT_FALSE(CParserHNV(folder.wide("t.hnv")).ParsaFile(nullptr));
}

}  // namespace
}  // namespace traguardo::test
