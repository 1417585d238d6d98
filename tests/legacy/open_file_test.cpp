// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <tuple>
#include <utility>

#include "legacy/file/wmp_messages.h"
#include "opened_session.h"

namespace traguardo::test {
namespace {

TEST(OpenFile, EveryVersionYieldsTheSameSamples) {
  const std::vector<float> first = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  const std::vector<float> second = {11, 12, 13, 14, 15};
  constexpr u16 kVersions[] = {100, 200, 320, 400, 450, 451, 550, 600, 700};
  for (const u16 version : kVersions) {
    SCOPED_TRACE(version);
    SoundSession opened(small_file(version));
    const WmpTables& tables = opened.session().tables;
    ASSERT_EQ(tables.channels.size(), 2U);
    EXPECT_EQ(tables.channels[0].record.name(), "First");
    EXPECT_EQ(opened.values(0), first);
    EXPECT_EQ(opened.values(1), second);
    EXPECT_EQ(tables.channels[1].statistics.period_ms, 20U);
    ASSERT_EQ(tables.laps.size(), 2U);
    EXPECT_EQ(std::pair(tables.laps[1].start_ms(), tables.laps[1].number()), std::pair(60U, i16{2}));
    EXPECT_EQ(tables.runs.size(), 1U);
  }
  // The first loggers counted neither runs nor, some of them, laps.
  wmp::File file = small_file(100);
  file.laps = {wmp::Lap{60, 9, 0, 7}, wmp::Lap{40, 9, 0, 7}};
  SoundSession uncounted(file);
  const WmpLapRecord& lap = uncounted.session().tables.laps.at(1);
  EXPECT_EQ(std::tuple(lap.run(), lap.number(), lap.true_time_ms()), std::tuple(u16{1}, i16{2}, 40U));
  // Their files have a raw size of zero, and those with sums may be longer than they say.
  Bytes old = wmp::build(small_file(100));
  set_u32(&old, 121, 0);
  EXPECT_TRUE(OpenedSession(old).opened());
  Bytes longer = wmp::build(small_file(600));
  longer.push_back(0);
  EXPECT_TRUE(OpenedSession(longer).opened());
}

struct Refusal {
  const char* what;
  u16 version;
  u32 error;
  // Damages a file built from small_file(version); the sum of block A is made right again.
  void (*damage)(Bytes* bytes);
};

const Refusal kRefusals[] = {
    {"a version that nobody wrote", 600, kMsgUnknownVersion, [](Bytes* b) { set_u16(b, 2, 601); }},
    {"a signature of another file", 451, kMsgUnknownSignature, [](Bytes* b) { set_u16(b, 0, 22348); }},
    {"one byte too many before 600", 451, kMsgWrongLength, [](Bytes* b) { b->push_back(0); }},
    {"no lap", 451, kMsgNoLaps, [](Bytes* b) { set_u16(b, 98, 0); }},
    {"no run, and no channel either", 600, kMsgNoRun,
     [](Bytes* b) {
       set_u16(b, 32 + 96, 0);
       set_u16(b, 32 + 150 + 18, 0);
     }},
    {"no physical values", 100, kMsgNoData, [](Bytes* b) { set_u32(b, 92, 0); }},
    {"no raw samples", 451, kMsgNoData, [](Bytes* b) { set_u32(b, 121, 0); }},
    {"a version 600 file cut within its blocks", 600, kMsgChecksum, [](Bytes* b) { b->resize(2000); }},
    {"a version 600 file cut within its laps", 600, kMsgChecksum, [](Bytes* b) { b->resize(2272 + 2 * 1056 + 100); }},
    {"more channels than the file holds", 451, kMsgWrongLength, [](Bytes* b) { set_u16(b, 96, 32767); }},
};

TEST(OpenFile, RefusesWithTheCodeOfTheFirstCheckThatFails) {
  for (const Refusal& refusal : kRefusals) {
    SCOPED_TRACE(refusal.what);
    Bytes bytes = wmp::build(small_file(refusal.version));
    refusal.damage(&bytes);
    if (refusal.version >= 600) wmp::reseal_first_group(&bytes);
    OpenedSession opened(bytes);
    EXPECT_FALSE(opened.opened());
    EXPECT_EQ(opened.error(), refusal.error);
    EXPECT_EQ(opened.session().tables.channels.size() + opened.session().tables.laps.size(), 0U);
  }
  OpenedSession missing(wmp::build(small_file(600)));
  EXPECT_FALSE(missing.open("another.wmp", Load::kEverything));
  EXPECT_EQ(missing.error(), kMsgErrorOpening);
}

TEST(OpenFile, AFlippedByteInAnyGroupIsSeen) {
  wmp::File file = small_file(600);
  file.extras = 1;
  const Bytes sound = wmp::build(file);
  const auto opens_with_change_at = [&sound](std::size_t at) {
    Bytes damaged = sound;
    damaged.at(at) = static_cast<u8>(damaged.at(at) + 1);
    OpenedSession opened(damaged);
    EXPECT_EQ(opened.error(), opened.opened() ? 0U : kMsgChecksum);
    return opened.opened();
  };
  // Sizes of the groups behind their heads: header, names, identity, two channels, two laps, run, extra.
  std::size_t head = 0;
  for (const std::size_t size : {1024U, 1024U, 128U, 1024U, 1024U, 256U, 256U, 4096U, 64U}) {
    SCOPED_TRACE(head);
    for (const std::size_t at : {head + 4, head + 32 + size / 2, head + 32 + size - 1}) {
      EXPECT_FALSE(opens_with_change_at(at)) << at;
    }
    // The rest of a head says nothing.
    EXPECT_TRUE(opens_with_change_at(head + 20));
    head += 32 + size;
  }
  EXPECT_TRUE(opens_with_change_at(sound.size() - 1)) << "the samples have no sum";
}

TEST(OpenFile, CopiesTheFileOnce) {
  const Bytes bytes = wmp::build(small_file(600));
  OpenedSession opened(bytes);
  const std::string original(bytes.begin(), bytes.end());
  EXPECT_EQ(opened.folder().read("session.bak"), original);
  opened.folder().write("session.bak", std::string("older"));
  EXPECT_TRUE(opened.open("session.wmp", Load::kEverything));
  EXPECT_EQ(opened.folder().read("session.bak"), "older");
}

TEST(OpenFile, SpellsFirmwareAndSoftware) {
  // Bits 20 to 27, 12 to 19, 4 to 11, and a letter of the low four.
  const std::pair<u32, const char*> cases[] = {
      {0x02000100, "20.00.10"}, {0x01234561, "12.34.56G"}, {0x0123456F, "12.34.56F"}, {0xF0000000, "0.00.00"}};
  for (const auto& [software, text] : cases) {
    WmpMainHeader header;
    header.set_software_version(software);
    header.set_firmware_first(0x41);
    header.set_firmware_second(0x0A);
    header.set_firmware_third(0x99);
    EXPECT_EQ(software_text(header) + ' ' + firmware_text(header), std::string(text) + " 41.0a.99");
  }
}

TEST(OpenFile, DropsMathChannelsOfAnOlderKind) {
  wmp::File file = small_file(451);
  file.derived = {plain_channel("Old math", {}), plain_channel("More", {})};
  file.reference = 3;
  file.logged[1].measure_class = 3;
  file.derived[0].math_generation = 0;
  SoundSession dropped(file);
  ASSERT_EQ(dropped.session().tables.channels.size(), 2U);
  EXPECT_EQ(dropped.values(0), (std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
  EXPECT_EQ(dropped.values(1), (std::vector<float>{11, 12, 13, 14, 15}));
  EXPECT_EQ(dropped.session().tables.header.reference_speed(), 1);
  ASSERT_EQ(dropped.session().tables.laps.size(), 2U);
  EXPECT_EQ(dropped.session().tables.laps[0].time_ms(), 60U);

  file.derived[0].math_generation = 1;
  SoundSession kept(file);
  EXPECT_EQ(kept.session().tables.channels.size(), 4U);
}

TEST(OpenFile, Version600TellsTheLogItsTestAndItsLaps) {
  for (const u16 version : kBlockVersions) {
    SCOPED_TRACE(version);
    wmp::File file = small_file(version);
    file.test_name = "Friday";
    file.laps = {wmp::Lap{60, 1, 4, 61}, wmp::Lap{40, 1, 5, 38}};
    const LogFile log;
    ASSERT_TRUE(OpenedSession(wmp::build(file), Load::kTablesOnly).opened());
    const std::string lap =
        "Lap 5 / 1 -> tsulgiro 40 dwTempoGiroVero 38 diff (accum) 2 (-1) lunghezza 40 lunghezzaVera 99";
    EXPECT_EQ(log.text().find("] INFO = \nFriday\n\n") != std::string::npos, version == 600) << log.text();
    EXPECT_EQ(log.text().find(lap) != std::string::npos, version == 600) << log.text();
  }
}

}  // namespace
}  // namespace traguardo::test
