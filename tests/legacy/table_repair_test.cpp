// SPDX-License-Identifier: MIT
// What becomes of tables that don't fit, on tables made by hand: 100 ms of a channel of 100 Hz and of one of 50 Hz.
#include "legacy/file/table_repair.h"

#include <gtest/gtest.h>

#include <array>
#include <tuple>
#include <utility>
#include <vector>

#include "legacy/channel_store.h"

namespace traguardo::test {
namespace {

WmpChannel channel_of(u16 rate_index, u32 samples, u16 measure_class = 1) {
  WmpChannel channel;
  channel.record.set_name("x");
  channel.record.set_sensor_id(998);
  channel.record.set_rate_index(rate_index);
  channel.record.set_sample_count(samples);
  channel.record.set_measure_class(measure_class);
  return channel;
}

struct Lap {
  u16 run = 1;
  i16 number = 1;
  u32 time_ms = 10;
  u32 true_time_ms = 0;
  u32 samples = 0;
};

WmpTables tables_of(u16 version, const std::vector<Lap>& laps = {}) {
  WmpTables tables;
  tables.version = find_wmp_version(version);
  tables.channels = {channel_of(5, 10), channel_of(4, 5)};
  tables.logged_count = 2;
  tables.header.set_channel_count(2);
  tables.header.set_logged_count(2);
  tables.header.set_duration_ms(100);
  tables.raw_capacity = 1000000;
  tables.stored_length = 1000000;
  for (const Lap& lap : laps) {
    WmpLapRecord& record = tables.laps.emplace_back();
    record.set_run(lap.run);
    record.set_number(lap.number);
    record.set_time_ms(lap.time_ms);
    record.set_true_time_ms(lap.true_time_ms);
    record.set_sample_count(lap.samples);
  }
  return tables;
}

using Numbers = std::vector<u32>;

Numbers times_of(WmpTables tables) {
  repair_laps(&tables);
  Numbers times;
  for (const WmpLapRecord& lap : tables.laps) times.push_back(lap.time_ms());
  return times;
}

TEST(RepairLaps, RunsNeverFallAndNumbersRiseWithinARun) {
  using Pairs = std::vector<std::pair<u16, i16>>;  // run, number
  const std::tuple<const char*, Pairs, Pairs> cases[] = {
      {"as it should be", {{1, 1}, {1, 2}, {2, 1}}, {{1, 1}, {1, 2}, {2, 1}}},
      {"a run comes back", {{1, 1}, {2, 1}, {1, 2}, {1, 3}, {3, 1}}, {{1, 1}, {2, 1}, {3, 2}, {3, 3}, {3, 4}}},
      {"two different runs come back", {{5, 1}, {2, 1}, {1, 1}}, {{5, 1}, {6, 1}, {7, 1}}},
      {"numbers repeat, and fall", {{1, 7}, {1, 7}, {1, 3}, {1, 12}}, {{1, 7}, {1, 8}, {1, 9}, {1, 12}}},
      {"numbers start anywhere", {{4, 0}, {4, -3}, {4, 5}}, {{4, 0}, {4, 1}, {4, 5}}},
  };
  for (const auto& [what, stored, wanted] : cases) {
    std::vector<Lap> laps;
    for (const auto& [run, number] : stored) laps.push_back({run, number});
    WmpTables tables = tables_of(600, laps);
    repair_laps(&tables);
    Pairs found;
    for (const WmpLapRecord& lap : tables.laps) found.emplace_back(lap.run(), lap.number());
    EXPECT_EQ(found, wanted) << what;
  }
}

TEST(RepairLaps, TimesChainAndFillUpAndFitTheSession) {
  WmpTables tables = tables_of(600, {{1, 1, 20}, {1, 2, 30, 0xCB3434CB}, {1, 3, 25, 26}, {1, 4, 0, 5}});
  for (WmpLapRecord& lap : tables.laps) lap.set_mark(77);
  repair_laps(&tables);
  Numbers found;
  for (const WmpLapRecord& lap : tables.laps) {
    found.insert(found.end(), {lap.start_ms(), lap.time_ms(), lap.true_time_ms(), lap.mark()});
  }
  EXPECT_EQ(found, (Numbers{0, 20, 20, 77, 20, 30, 30, 77, 50, 25, 26, 77, 75, 0, 5, 0}));

  // Laps of later families end with the session, 100 ms; both channels together have 150 samples a second.
  WmpTables late = tables_of(600, {{1, 1, 60, 0, 9}, {1, 2, 60, 0, 9}, {1, 3, 60, 0, 9}});
  EXPECT_EQ(times_of(tables_of(600, {{1, 1, 60}, {1, 2, 60}})), (Numbers{60, 60}));
  late.header.set_family(3);
  repair_laps(&late);
  EXPECT_EQ((Numbers{late.laps[1].time_ms(), late.laps[1].sample_count(), late.laps[2].time_ms()}),
            (Numbers{40, 6, 0}));

  // In version 500 samples tell the time: 30 are 200 ms, more than 100 off; 16 are 106.67 ms, less than that.
  const std::pair<u8, Numbers> families[] = {{0, {99, 7}}, {3, {99, 1}}, {4, {100, 0}}};
  for (const auto& [family, wanted] : families) {
    WmpTables dump = tables_of(500, {{1, 1, 99, 0, 30}, {1, 2, 7, 0, 16}});
    dump.header.set_family(family);
    EXPECT_EQ(times_of(std::move(dump)), wanted) << int{family};
  }
}

TEST(RepairLaps, EarlySoftwareHasOneRun) {
  // Version, software, family, firmware, whether there is one run.
  const std::tuple<u16, u32, u8, u8, bool> cases[] = {{550, 0x20000F, 0, 0, true},     {550, 0x200010, 0, 0, false},
                                                      {550, 0x200010, 3, 0xFF, true},  {550, 0x200010, 5, 0x36, true},
                                                      {550, 0x200010, 5, 0x37, false}, {550, 0x200010, 9, 0x36, true},
                                                      {550, 0x200010, 10, 0x36, true}, {550, 0x200010, 11, 0x36, false},
                                                      {600, 0, 3, 0, false},           {451, 0x200010, 0, 0, true}};
  for (const auto& [version, software, family, firmware, one_run] : cases) {
    WmpTables tables = tables_of(version, {{2}, {3}});
    tables.header.set_software_version(software);
    tables.header.set_family(family);
    tables.header.set_firmware_first(1);  // 0x136 and 0x137 are 310 and 311
    tables.header.set_firmware_second(firmware);
    repair_laps(&tables);
    EXPECT_EQ(tables.laps[1].run(), one_run ? 1 : 3) << version << ' ' << software << ' ' << int{family};
  }
}

TEST(RepairRuns, FollowTheLapsAndKeepTheRecordsOfTheirRuns) {
  WmpTables tables = tables_of(600, {{1, 1}, {1, 2}, {3, 1}, {4, 1, 20}});
  for (const u16 number : {u16{7}, u16{3}, u16{1}}) {
    WmpRun& run = tables.runs.emplace_back();
    run.number = number;
    run.record = std::make_unique<WmpRunRecord>();
    run.record->set_wheel_circumference_mm(number);
  }
  repair_laps(&tables);
  EXPECT_TRUE(repair_runs(&tables));
  std::vector<std::tuple<u16, float, u32, u32>> found;
  for (const WmpRun& run : tables.runs) {
    found.emplace_back(run.number, run.wheel_circumference_mm(), run.start_ms, run.length_ms);
  }
  EXPECT_EQ(found, (decltype(found){{1, 1, 0, 20}, {3, 3, 20, 10}, {4, 0, 30, 20}}));
  EXPECT_FALSE(repair_runs(&tables)) << "the second time there is nothing to do";
  // Left alone where the last lap has run 0.
  tables.laps.back().set_run(0);
  EXPECT_FALSE(repair_runs(&tables));
  EXPECT_EQ(tables.runs.size(), 3U);
}

TEST(RepairChannels, NamesClassesAndRates) {
  WmpTables tables = tables_of(600);
  tables.channels.assign(4, channel_of(5, 1));
  tables.channels[0].record.set_name(" \t Water temp \r\n");
  tables.channels[1].record.set_sensor_id(93);
  tables.channels[1].record.set_rate_index(15);
  tables.channels[2].record.set_sensor_id(0);
  tables.channels[3].record.set_name("    ");
  tables.channels[3].record.set_display_maximum(7);
  repair_channels(&tables);
  EXPECT_EQ(tables.channels[0].record.name(), "Water temp");
  EXPECT_EQ(tables.channels[3].record.name(), "ch_3");
  EXPECT_EQ(tables.channels[3].statistics.display_maximum, 7.0F);
  EXPECT_TRUE(tables.channels[1].is_speed());
  EXPECT_EQ(tables.channels[1].statistics.period_ms, 32000U);
  EXPECT_EQ(tables.channels[2].record.measure_class(), 4);
  // The second channel of family 4 is the logger's temperature.
  for (const auto& [sensor, wanted, wanted_class] : {std::tuple{17, 91, 1}, {91, 91, 7}, {95, 95, 7}}) {
    tables.header.set_family(4);
    tables.channels[1].record.set_sensor_id(static_cast<u16>(sensor));
    tables.channels[1].record.set_measure_class(7);
    repair_channels(&tables);
    EXPECT_EQ(tables.channels[1].record.sensor_id(), wanted);
    EXPECT_EQ(tables.channels[1].record.measure_class(), wanted_class);
  }
}

TEST(RepairCounts, DerivedChannelsAreAsLongAsTheLongestLoggedOne) {
  // 7 samples that have no frequency make no derived channel longer, but the session: 7 times 32 seconds.
  const std::pair<u16, u32> cases[] = {{5, 10}, {4, 5}, {6, 20}, {8, 100}, {0, 0}, {10, 0}, {2, 1}, {99, 0}};
  for (const auto& [rate, wanted] : cases) {
    WmpTables tables = tables_of(600);
    tables.channels = {channel_of(5, 10), channel_of(4, 5), channel_of(10, 7), channel_of(rate, 12345)};
    tables.logged_count = 3;
    repair_counts(&tables);
    EXPECT_EQ(tables.channels[3].record.sample_count(), wanted) << rate;
    EXPECT_EQ(tables.header.duration_ms(), 224000U);
  }
  WmpTables tables = tables_of(600);
  tables.channels.push_back(channel_of(8, 0));
  repair_counts(&tables);
  EXPECT_EQ(tables.header.raw_area_size(), 30U);
  // 15 logged samples and 100 derived ones; 2 * (1000 + 150) / 150 * 30 is the same.
  EXPECT_EQ(tables.header.value_area_size(), 460U);
  // No more logged samples than the file holds; before version 500 the raw area is what is left of the file.
  tables.raw_capacity = 12;
  tables.version = find_wmp_version(451);
  tables.stored_length = 510 + 2 * 668 + 24;
  repair_counts(&tables);
  EXPECT_EQ(tables.channels[1].record.sample_count(), 2U);
  EXPECT_EQ(tables.header.raw_area_size(), 24U);
}

TEST(FileLength, ByVersion) {
  const std::pair<u16, u32> cases[] = {{451, 510 + 2 * 668 + 3 * 134 + 30},
                                       {500, 5000 + 65536 + 65536},  // 300 records of 256 bytes, 256 to an area
                                       {550, 5000 + 196608 + 65536},
                                       {600, 2272 + 2 * 1056 + 3 * 288 + 4128 + 2 * 96 + 30}};
  for (const auto& [version, wanted] : cases) {
    WmpTables tables = tables_of(version);
    tables.header.set_lap_count(3);
    tables.header.set_raw_area_size(30);
    tables.configuration.set_run_count(1);
    tables.configuration.set_extra_count(2);
    tables.dump_bytes = 5000;
    if (version == 500 || version == 550) tables.header.set_lap_count(300 - 8 - 4 * 2);
    update_file_length(&tables);
    EXPECT_EQ(tables.header.file_length(), wanted) << version;
  }
}

TEST(ShownTables, UnitsAndReferenceSpeed) {
  WmpTables tables = tables_of(600);
  const std::pair<std::string, std::string> units[] = {
      {"C", "\260C"}, {"F", "\260F"}, {"\xBB", "lambda"}, {"C ", "C "}, {"CF", "CF"}};
  for (const auto& [stored, shown] : units) {
    tables.channels[0].record.set_unit_text(stored);
    repair_unit_texts(&tables);
    EXPECT_EQ(tables.channels[0].record.unit_text(), shown);
  }
  // Firmware, reference as stored, measure classes and functions of the three channels, reference as shown.
  using Case = std::tuple<const char*, u8, i16, std::array<u16, 3>, std::array<u32, 3>, i16>;
  const Case cases[] = {
      {"a speed stays", 0x40, 1, {1, 3, 1}, {0, 0, 0}, 1},
      {"no speed", 0x40, 0, {1, 3, 1}, {0, 0, 0}, -1},
      {"outside the table", 0x40, 3, {1, 3, 1}, {0, 0, 0}, -1},
      {"negative", 0x40, -7, {3, 3, 1}, {0, 0, 0}, -1},
      {"receiver: its speed stays", 0x41, 2, {3, 3, 3}, {95, 0, 95}, 2},
      {"receiver: its first speed replaces another", 0x41, 0, {3, 3, 3}, {0, 95, 95}, 1},
      {"receiver: without one the last speed", 0x41, 0, {3, 3, 1}, {0, 0, 95}, 1},
      {"receiver: no speed at all", 0x41, 0, {1, 1, 1}, {95, 95, 95}, -1},
  };
  tables.configuration.set_has_function_ids(true);
  for (const auto& [what, firmware, stored, classes, functions, wanted] : cases) {
    tables.channels.clear();
    for (std::size_t i = 0; i < 3; ++i) {
      tables.channels.push_back(channel_of(5, 1, classes[i]));
      tables.channels[i].extension.set_function_id(functions[i]);
    }
    tables.header.set_firmware_first(firmware);
    tables.header.set_reference_speed(stored);
    repair_reference_speed(&tables);
    EXPECT_EQ(tables.header.reference_speed(), wanted) << what;
  }
}

TEST(ChannelStore, RowsComeAndGoWithTheirSamples) {
  WmpTables tables = tables_of(451);
  tables.channels.push_back(channel_of(5, 10));
  tables.header.set_raw_area_size(30);
  tables.header.set_value_area_size(100);
  ChannelStore store(&tables);
  WmpChannelRecord record;
  record.set_name("Two");
  record.set_rate_index(4);
  EXPECT_FALSE(store.append(record, WmpChannelExtension())) << "no samples yet";
  store.lay_out({1, 2, 3});
  EXPECT_EQ(store.raw_words(0)[2], 3);
  EXPECT_EQ(store.raw_words(1).size(), 5U);
  EXPECT_TRUE(store.raw_words(2).empty());
  store.values(1)[4] = 7.0F;
  ASSERT_TRUE(store.append(record, WmpChannelExtension()));
  EXPECT_EQ(tables.header.derived_count(), 2);
  EXPECT_EQ(tables.header.value_area_size(), 120U);
  ASSERT_EQ(store.values(3).size(), 5U);
  store.values(3)[4] = 42.0F;

  tables.channels[2].record.set_rate_index(6);
  store.resize(2);
  EXPECT_EQ(store.values(2).size(), 20U);
  EXPECT_EQ(std::pair(store.values(1)[4], store.values(3)[4]), std::pair(7.0F, 42.0F));

  const std::pair<i16, i16> references[] = {{3, 2}, {2, -1}, {1, 1}};  // before and behind
  for (const auto& [before, behind] : references) {
    WmpTables copied = tables_of(451);
    copied.channels = tables.channels;
    copied.header.set_reference_speed(before);
    ChannelStore other(&copied);
    other.lay_out({});
    other.values(3)[4] = 42.0F;
    other.remove(2);
    EXPECT_EQ(copied.channels[2].record.name(), "Two");
    EXPECT_EQ(other.values(2)[4], 42.0F);
    EXPECT_EQ(copied.header.reference_speed(), behind);
  }
}

}  // namespace
}  // namespace traguardo::test
