#include <gtest/gtest.h>

#include <tuple>

#include "opened_session.h"

namespace traguardo::test {
namespace {

// Run, number, start, time and true time of each lap.
using Laps = std::vector<std::tuple<u16, i16, u32, u32, u32>>;

Laps laps_of(WmpSession& session) {
  Laps laps;
  for (const WmpLapRecord& lap : session.tables.laps) {
    laps.emplace_back(lap.run(), lap.number(), lap.start_ms(), lap.time_ms(), lap.true_time_ms());
  }
  return laps;
}

wmp::File file_with_laps(u16 version, std::vector<wmp::Lap> laps) {
  wmp::File file = small_file(version);
  file.laps = std::move(laps);
  return file;
}

using Times = std::vector<u32>;

// Opens the tables alone and gives the times of the laps.
Times times_of(const wmp::File& file) {
  SoundSession opened(file, Load::kTablesOnly);
  Times times;
  for (const WmpLapRecord& lap : opened.session().tables.laps) times.push_back(lap.time_ms());
  return times;
}

TEST(NormaliseLaps, RunsNeverFallAndNumbersRiseWithinARun) {
  struct Case {
    const char* what;
    std::vector<std::pair<u16, i16>> stored;  // run, number
    std::vector<std::pair<u16, i16>> wanted;
  };
  const Case cases[] = {
      {"as it should be", {{1, 1}, {1, 2}, {2, 1}, {2, 2}}, {{1, 1}, {1, 2}, {2, 1}, {2, 2}}},
      {"a run comes back", {{1, 1}, {2, 1}, {1, 2}, {1, 3}, {3, 1}}, {{1, 1}, {2, 1}, {3, 2}, {3, 3}, {3, 4}}},
      {"two different runs come back", {{5, 1}, {2, 1}, {1, 1}}, {{5, 1}, {6, 1}, {7, 1}}},
      {"numbers repeat", {{1, 1}, {1, 1}, {1, 1}, {2, 1}}, {{1, 1}, {1, 2}, {1, 3}, {2, 1}}},
      {"numbers fall", {{1, 7}, {1, 3}, {1, 9}, {1, 4}}, {{1, 7}, {1, 8}, {1, 9}, {1, 10}}},
      {"numbers start anywhere", {{4, 0}, {4, -3}, {4, 5}}, {{4, 0}, {4, 1}, {4, 5}}},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.what);
    std::vector<wmp::Lap> stored;
    for (const auto& [run, number] : one.stored) stored.push_back(wmp::Lap{10, run, number});
    SoundSession opened(file_with_laps(600, stored), Load::kTablesOnly);
    std::vector<std::pair<u16, i16>> found;
    for (const WmpLapRecord& lap : opened.session().tables.laps) found.emplace_back(lap.run(), lap.number());
    EXPECT_EQ(found, one.wanted);
  }
}

TEST(NormaliseLaps, TimesChainAndUnsetTrueTimesFillUp) {
  const std::vector<wmp::Lap> stored = {wmp::Lap{20, 1, 1, 0}, wmp::Lap{30, 1, 2, 0xCB3434CB}, wmp::Lap{25, 1, 3, 26},
                                        wmp::Lap{0, 1, 4, 5, 0, 1, 77}};
  SoundSession opened(file_with_laps(600, stored), Load::kTablesOnly);
  EXPECT_EQ(laps_of(opened.session()),
            (Laps{{1, 1, 0, 20, 20}, {1, 2, 20, 30, 30}, {1, 3, 50, 25, 26}, {1, 4, 75, 0, 5}}));
  EXPECT_EQ(opened.session().tables.laps[3].mark(), 0U);
}

TEST(NormaliseLaps, LapsOfLaterFamiliesEndWithTheSession) {
  // The session lasts 100 ms: the longest channel has 10 samples of 10 ms. Both logged channels together have 150 Hz.
  const std::vector<wmp::Lap> stored = {wmp::Lap{60, 1, 1, 0, 9}, wmp::Lap{60, 1, 2, 0, 9}, wmp::Lap{60, 1, 3, 0, 9}};
  wmp::File file = file_with_laps(600, stored);
  file.family = 3;
  EXPECT_EQ(times_of(file), (Times{60, 40, 0}));
  SoundSession cut(file, Load::kTablesOnly);
  Times samples;
  for (const WmpLapRecord& lap : cut.session().tables.laps) samples.push_back(lap.sample_count());
  EXPECT_EQ(samples, (Times{9, 6, 0}));
  file.family = 2;
  EXPECT_EQ(times_of(file), (Times{60, 60, 60}));
}

TEST(NormaliseLaps, TheSamplesOfAVersion500LapTellItsTime) {
  // 150 Hz in all: 30 samples are 200 ms, 16 are 106.67 ms.
  const std::vector<wmp::Lap> stored = {wmp::Lap{99, 1, 1, 0, 30}, wmp::Lap{7, 1, 2, 0, 16}};
  wmp::File file = file_with_laps(500, stored);
  file.dump = wmp::Bytes(1000);
  // 99 differs from 200 by more than 100 ms, 7 from 106.67 by less. From family 3 on the session's 100 ms cut both.
  const std::pair<u8, Times> cases[] = {{0, {99, 7}}, {3, {99, 1}}, {4, {100, 0}}};
  for (const auto& [family, wanted] : cases) {
    file.family = family;
    EXPECT_EQ(times_of(file), wanted) << int{family};
  }
}

TEST(NormaliseLaps, EarlySoftwareHasOneRun) {
  // Version, software, family, firmware, whether there is one run.
  const std::tuple<u16, u32, u8, u16, bool> cases[] = {
      {550, 0x20000F, 0, 0, true},    {550, 0x200010, 0, 0, false},    {550, 0x200010, 3, 999, true},
      {550, 0x200010, 5, 310, true},  {550, 0x200010, 5, 311, false},  {550, 0x200010, 9, 310, true},
      {550, 0x200010, 10, 310, true}, {550, 0x200010, 11, 310, false}, {600, 0, 3, 0, false},
      {451, 0x200010, 0, 0, true},
  };
  for (const auto& [version, software, family, firmware, one_run] : cases) {
    SCOPED_TRACE(testing::Message() << version << ' ' << software << ' ' << int{family} << ' ' << firmware);
    wmp::File file = file_with_laps(version, {wmp::Lap{10, 2, 1}, wmp::Lap{10, 3, 1}});
    file.software = software;
    file.family = family;
    file.firmware = {static_cast<u8>(firmware >> 8), static_cast<u8>(firmware & 0xFF), 0};
    SoundSession opened(file, Load::kTablesOnly);
    EXPECT_EQ(opened.session().tables.laps[0].run(), one_run ? 1 : 2);
    EXPECT_EQ(opened.session().tables.laps[1].run(), one_run ? 1 : 3);
  }
}

TEST(RunTable, FollowsTheLapsAndKeepsTheRecordsOfTheirRuns) {
  wmp::File file =
      file_with_laps(600, {wmp::Lap{10, 1, 1}, wmp::Lap{10, 1, 2}, wmp::Lap{10, 3, 1}, wmp::Lap{20, 4, 1}});
  file.runs = {wmp::Run{7, 0, 0, 700, ""}, wmp::Run{3, 0, 0, 300, ""}, wmp::Run{1, 0, 0, 100, ""}};
  SoundSession opened(file, Load::kTablesOnly);
  std::vector<std::pair<u16, float>> wheels;
  for (const auto& run : opened.session().tables.runs) wheels.emplace_back(run.number, run.wheel_circumference_mm());
  EXPECT_EQ(wheels, (std::vector<std::pair<u16, float>>{{1, 100.0F}, {3, 300.0F}, {4, 0.0F}}));
  EXPECT_TRUE(opened.session().tables.changed);
  Times ends;
  for (const WmpRun& run : opened.session().tables.runs) {
    ends.push_back(run.start_ms);
    ends.push_back(run.start_ms + run.length_ms);
  }
  EXPECT_EQ(ends, (Times{0, 20, 20, 30, 30, 50}));

  // Made of the laps where the file has none; left alone where the last lap has run 0.
  SoundSession old(file_with_laps(451, {wmp::Lap{10, 4, 1}, wmp::Lap{10, 9, 2}}), Load::kTablesOnly);
  ASSERT_EQ(old.session().tables.runs.size(), 1U);
  EXPECT_EQ(old.session().tables.runs[0].number, 1);
  EXPECT_EQ(old.session().tables.runs[0].record, nullptr);
  file.laps = {wmp::Lap{10, 0, 1}};
  SoundSession zero(file, Load::kTablesOnly);
  ASSERT_EQ(zero.session().tables.runs.size(), 3U);
  EXPECT_EQ(zero.session().tables.runs[0].length_ms, 0U);
}

TEST(NormaliseTables, NamesClassesAndRates) {
  wmp::File file = small_file(600);
  file.logged.assign(4, plain_channel("x", {1}));
  file.logged[0].name = " \t Water temp \r\n";
  file.logged[1].sensor = 93;
  file.logged[1].rate = 15;
  file.logged[2].sensor = 0;
  file.logged[2].measure_class = 8;
  file.logged[3].name = "    ";
  SoundSession opened(file, Load::kTablesOnly);
  WmpSession& session = opened.session();
  ASSERT_EQ(session.tables.channels.size(), 4U);
  EXPECT_EQ(session.tables.channels[0].record.name(), "Water temp");
  EXPECT_EQ(session.tables.channels[3].record.name(), "ch_3");
  EXPECT_EQ(session.tables.channels[1].record.measure_class(), 3);
  EXPECT_EQ(session.tables.channels[2].record.measure_class(), 4);
  EXPECT_EQ(session.tables.channels[1].statistics.period_ms, 32000U);
  EXPECT_EQ(session.tables.channels[1].statistics.frequency_hz, 0U);
  EXPECT_EQ(session.tables.channels[0].statistics.display_maximum, 100.0F);
}

TEST(NormaliseTables, TheSecondChannelOfFamily4IsTheLoggersTemperature) {
  using Ids = std::pair<u16, u16>;
  for (const auto& [sensor, wanted] : {Ids{17, 91}, Ids{91, 91}, Ids{95, 95}}) {
    wmp::File file = small_file(600);
    file.family = 4;
    file.logged[1].sensor = sensor;
    file.logged[1].measure_class = 7;
    SoundSession opened(file, Load::kTablesOnly);
    EXPECT_EQ(opened.session().tables.channels[1].record.sensor_id(), wanted);
    EXPECT_EQ(opened.session().tables.channels[1].record.measure_class(), sensor == 17 ? 1 : 7);
  }
}

TEST(NormaliseCounts, DerivedChannelsAreAsLongAsTheLongestLoggedOne) {
  // Logged: 10 samples at 100 Hz, 5 at 50 Hz, and 7 that have no frequency.
  const std::pair<u16, u32> cases[] = {{5, 10}, {4, 5}, {6, 20}, {8, 100}, {0, 0}, {10, 0}, {2, 1}, {99, 0}};
  for (const auto& [rate, wanted] : cases) {
    wmp::File file = small_file(600);
    file.logged.push_back(plain_channel("No rate", {1, 2, 3, 4, 5, 6, 7}, 10));
    file.derived = {plain_channel("Derived", {}, rate)};
    SoundSession opened(file, Load::kTablesOnly);
    ASSERT_EQ(opened.session().tables.channels.size(), 4U);
    EXPECT_TRUE(opened.session().tables.is_derived(3));
    EXPECT_EQ(opened.session().tables.channels[3].record.sample_count(), wanted) << rate;
    // The slow channel lasts longest: 7 samples of 32 seconds.
    EXPECT_EQ(opened.session().tables.header.duration_ms(), 224000U);
  }
}

TEST(NormaliseCounts, SizesRiseToWhatTheTablesNeed) {
  wmp::File file = small_file(600);
  file.derived = {plain_channel("Derived", {}, 8)};
  wmp::Bytes bytes = wmp::build(file);
  wmp::set_dword(&bytes, 32 + 121, 2);
  wmp::set_dword(&bytes, 32 + 92, 4);
  wmp::reseal_block_a(&bytes);
  OpenedSession opened(bytes, Load::kTablesOnly);
  ASSERT_TRUE(opened.opened()) << opened.error();
  EXPECT_EQ(opened.session().tables.header.raw_area_size(), 30U);
  // 15 logged samples and 100 derived ones; 2 * (1000 + 150) / 150 * 30 = 460 is the same.
  EXPECT_EQ(opened.session().tables.header.value_area_size(), 460U);
}

TEST(ChannelTable, RowsComeAndGoWithTheirSamples) {
  wmp::File file = small_file(451);
  file.derived = {plain_channel("One", {}, 5)};
  SoundSession opened(file);
  WmpSession& session = opened.session();
  ASSERT_EQ(session.tables.channels.size(), 3U);
  const std::vector<float> second = opened.values(1);

  WmpChannelRecord record;
  record.set_name("Two");
  record.set_rate_index(4);
  ASSERT_TRUE(session.store.append(record, WmpChannelExtension()));
  ASSERT_EQ(session.tables.channels.size(), 4U);
  EXPECT_EQ(session.store.values(3).size(), 5U);
  EXPECT_EQ(session.tables.header.derived_count(), 2);
  session.store.values(3)[4] = 42.0F;

  session.tables.channels[2].record.set_rate_index(6);
  session.store.resize(2);
  EXPECT_EQ(session.store.values(2).size(), 20U);
  EXPECT_EQ(opened.values(1), second);
  EXPECT_EQ(session.store.values(3)[4], 42.0F);

  session.store.remove(2);
  ASSERT_EQ(session.tables.channels.size(), 3U);
  EXPECT_EQ(session.tables.channels[2].record.name(), "Two");
  EXPECT_EQ(session.store.values(2)[4], 42.0F);
  EXPECT_EQ(opened.values(1), second);
}

}  // namespace
}  // namespace traguardo::test
