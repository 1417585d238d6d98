#include <gtest/gtest.h>

#include <array>
#include <tuple>
#include <utility>

#include "legacy/file/wmp_messages.h"
#include "opened_session.h"

namespace traguardo::test {
namespace {

using wmp::Bytes;

TEST(OpenFile, EveryVersionYieldsTheSameSamples) {
  const std::vector<float> first = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  const std::vector<float> second = {11, 12, 13, 14, 15};
  constexpr u16 kVersions[] = {100, 200, 320, 400, 450, 451, 550, 600, 700};
  for (const u16 version : kVersions) {
    SCOPED_TRACE(version);
    SoundSession opened(small_file(version));
    ASSERT_EQ(opened.session().tables.channels.size(), 2U);
    EXPECT_EQ(opened.session().tables.channels[0].record.name(), "First");
    EXPECT_EQ(opened.values(0), first);
    EXPECT_EQ(opened.values(1), second);
    EXPECT_EQ(opened.session().tables.channels[0].statistics.period_ms, 10U);
    EXPECT_EQ(opened.session().tables.channels[1].statistics.period_ms, 20U);
    ASSERT_EQ(opened.session().tables.laps.size(), 2U);
    EXPECT_EQ(opened.session().tables.laps[1].start_ms(), 60U);
    EXPECT_EQ(opened.session().tables.laps[1].number(), 2);
  }
}

struct Refusal {
  const char* what;
  u16 version;
  u32 error;
  // Damages a file built from small_file(version); the sum of block A is made right again.
  void (*damage)(Bytes* bytes);
};

const Refusal kRefusals[] = {
    {"a version that nobody wrote", 600, kMsgUnknownVersion, [](Bytes* b) { wmp::set_word(b, 2, 601); }},
    {"an empty file", 400, kMsgUnknownVersion, [](Bytes* b) { b->clear(); }},
    {"a signature of another file", 451, kMsgUnknownSignature, [](Bytes* b) { wmp::set_word(b, 0, 22348); }},
    {"the same in block form", 600, kMsgUnknownSignature, [](Bytes* b) { wmp::set_word(b, 32, 22348); }},
    {"one byte too many before 600", 451, kMsgWrongLength, [](Bytes* b) { b->push_back(0); }},
    {"one byte too few before 600", 550, kMsgWrongLength, [](Bytes* b) { b->pop_back(); }},
    {"no lap", 451, kMsgNoLaps, [](Bytes* b) { wmp::set_word(b, 98, 0); }},
    {"a negative number of laps", 600, kMsgNoLaps, [](Bytes* b) { wmp::set_word(b, 32 + 98, 0xFFFF); }},
    {"no channel before 600", 550, kMsgNoMeasure, [](Bytes* b) { wmp::set_word(b, 96, 0); }},
    {"no run, and no channel either", 600, kMsgNoRun,
     [](Bytes* b) {
       wmp::set_word(b, 32 + 96, 0);
       wmp::set_word(b, 32 + 150 + 18, 0);
     }},
    {"no physical values", 100, kMsgNoData, [](Bytes* b) { wmp::set_dword(b, 92, 0); }},
    {"no raw samples", 451, kMsgNoData, [](Bytes* b) { wmp::set_dword(b, 121, 0); }},
    {"a version 600 file cut within its blocks", 600, kMsgChecksum, [](Bytes* b) { b->resize(2000); }},
    {"a version 600 file cut within its laps", 600, kMsgChecksum, [](Bytes* b) { b->resize(2272 + 2 * 1056 + 100); }},
    {"more channels than the file holds", 451, kMsgWrongLength, [](Bytes* b) { wmp::set_word(b, 96, 32767); }},
};

TEST(OpenFile, RefusesWithTheCodeOfTheFirstCheckThatFails) {
  for (const Refusal& refusal : kRefusals) {
    SCOPED_TRACE(refusal.what);
    Bytes bytes = wmp::build(small_file(refusal.version));
    refusal.damage(&bytes);
    if (refusal.version >= 600) wmp::reseal_block_a(&bytes);
    OpenedSession opened(bytes);
    EXPECT_FALSE(opened.opened());
    EXPECT_EQ(opened.error(), refusal.error);
    EXPECT_EQ(opened.session().tables.channels.size(), 0U);
    EXPECT_TRUE(opened.session().tables.laps.empty());
    EXPECT_EQ(opened.session().tables.names.racer(), "");
  }
  OpenedSession missing(wmp::build(small_file(600)));
  EXPECT_FALSE(missing.open("another.wmp", Load::kEverything));
  EXPECT_EQ(missing.error(), kMsgErrorOpening);
}

TEST(OpenFile, AsksOnlyForWhatItsVersionHas) {
  // small_file(100) has a raw size of its words; what such a file really has there is zero.
  Bytes old = wmp::build(small_file(100));
  wmp::set_dword(&old, 121, 0);
  EXPECT_TRUE(OpenedSession(old).opened());
  for (const u16 version : kBlockVersions) {
    Bytes bytes = wmp::build(small_file(version));
    bytes.push_back(0);
    EXPECT_TRUE(OpenedSession(bytes).opened()) << "the real length counts";
  }
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
  const std::pair<u32, const char*> cases[] = {{0x02000100, "20.00.10"},  {0x01234561, "12.34.56G"},
                                               {0x01234569, "12.34.56O"}, {0x0123456A, "12.34.56A"},
                                               {0x0123456F, "12.34.56F"}, {0xF0000000, "0.00.00"}};
  for (const auto& [software, text] : cases) {
    wmp::File file = small_file(600);
    file.software = software;
    file.firmware = {0x41, 0x0A, 0x99};
    SoundSession opened(file);
    EXPECT_EQ(software_text(opened.session().tables.header), text);
    EXPECT_EQ(firmware_text(opened.session().tables.header), "41.0a.99");
  }
}

TEST(OpenFile, StoredUnitsBecomeWhatIsShown) {
  const std::pair<std::string, std::string> cases[] = {{"C", "\260C"}, {"F", "\260F"}, {"\xBB", "lambda"},
                                                       {"C ", "C "},   {"CF", "CF"},   {"", ""}};
  for (const auto& [stored, shown] : cases) {
    wmp::File file = small_file(451);
    file.logged[0].unit = stored;
    SoundSession opened(file);
    EXPECT_EQ(opened.session().tables.channels[0].record.unit_text(), shown);
  }
}

TEST(OpenFile, ChecksTheReferenceSpeed) {
  constexpr u16 kSpeed = 3;
  // Firmware, reference as stored, measure classes and functions of the three channels, reference as shown.
  using Case = std::tuple<const char*, u8, i16, std::array<u16, 3>, std::array<u32, 3>, i16>;
  const Case cases[] = {
      {"a speed stays", 0x40, 1, {1, kSpeed, 1}, {0, 0, 0}, 1},
      {"no speed", 0x40, 0, {1, kSpeed, 1}, {0, 0, 0}, -1},
      {"outside the table", 0x40, 3, {1, kSpeed, 1}, {0, 0, 0}, -1},
      {"negative", 0x40, -7, {1, kSpeed, 1}, {0, 0, 0}, -1},
      {"41: a GPS speed stays", 0x41, 2, {kSpeed, kSpeed, kSpeed}, {95, 0, 95}, 2},
      {"41: the first GPS speed replaces another speed", 0x41, 0, {kSpeed, kSpeed, kSpeed}, {0, 95, 95}, 1},
      {"41: without one the last speed", 0x41, 0, {kSpeed, kSpeed, 1}, {0, 0, 95}, 1},
      {"41: no speed at all", 0x41, 0, {1, 1, 1}, {95, 95, 95}, -1},
  };
  for (const auto& [what, firmware, stored, classes, functions, wanted] : cases) {
    wmp::File file = small_file(600);
    file.logged.push_back(plain_channel("Third", {1, 2}));
    for (std::size_t i = 0; i < 3; ++i) {
      file.logged[i].measure_class = classes[i];
      file.logged[i].function_id = functions[i];
    }
    file.reference = stored;
    file.firmware = {firmware, 0, 0};
    EXPECT_EQ(SoundSession(file).session().tables.header.reference_speed(), wanted) << what;
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

TEST(OpenFile, OldLapsAreNumberedWhereTheyHaveNoNumbers) {
  wmp::File file = small_file(100);
  file.laps = {wmp::Lap{60, 9, 0, 7}, wmp::Lap{40, 9, 0, 7}};
  SoundSession opened(file);
  ASSERT_EQ(opened.session().tables.laps.size(), 2U);
  EXPECT_EQ(opened.session().tables.laps[0].number(), 1);
  EXPECT_EQ(opened.session().tables.laps[1].number(), 2);
  EXPECT_EQ(opened.session().tables.laps[1].run(), 1);
  EXPECT_EQ(opened.session().tables.laps[1].true_time_ms(), 40U);
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

TEST(Messages, UnknownCodesGetTheRowThatClosesTheirTable) {
  const std::pair<u32, const char*> cases[] = {{0, "MSG_ALL_OK"},           {20, wmp_message(1).id},
                                               {26, "MSG_IMPORT_FREQ_NC"},  {1000, "MSG_IMPORT_FREQ_NC"},
                                               {1001, "MSGAPP_FILENOCHAN"}, {1005, "MSG_ENDTABLE"}};
  for (const auto& [code, id] : cases) EXPECT_STREQ(wmp_message(code).id, id) << code;
}

}  // namespace
}  // namespace traguardo::test
