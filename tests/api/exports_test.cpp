// SPDX-License-Identifier: MIT
#include "api/exports.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

#include "api/reader_factory.h"
#include "helpers/parsed_session.h"
#include "helpers/wire.h"
#include "legacy/wmp_parser.h"

namespace traguardo {
namespace {

using test::Bytes;
using test::cnf;
using test::frame_s;
using test::Lap;
using test::operator+;
using test::tag;
using test::tail;
using test::TempFolder;

Lap mark(u16 lap, u32 time_ms, i32 lap_time_ms) {
  Lap record;
  record.lap = lap;
  record.time_ms = time_ms;
  record.lap_time_ms = lap_time_ms;
  return record;
}

// Two laps of a second each, channel "a" at 10 Hz, channel "b" empty.
Bytes small_session() {
  Bytes bytes = tag("RCR", "racer") + tag("VEH", "car") + cnf({{1, "a"}, {2, "b"}});
  for (u32 i = 0; i <= 20; ++i) {
    bytes = bytes + frame_s(1000 + 100 * i, 1, static_cast<u16>(i));
    if (i == 10) bytes = bytes + mark(1, 2000, 1000).tagged();
    if (i == 20) bytes = bytes + mark(2, 3000, 950).tagged();
  }
  return bytes + tail();
}

class Exports : public ::testing::Test {
 protected:
  void SetUp() override { handle_ = open_file(folder_.write("a.qlt", small_session()).c_str()); }
  void TearDown() override { close_file_i(handle_); }
  const TempFolder folder_;
  int handle_ = 0;
};

TEST_F(Exports, AnswersForAnOpenFile) {
  ASSERT_GT(handle_, 0);
  EXPECT_STREQ(get_racer_name(handle_), "racer");
  EXPECT_STREQ(get_vehicle_name(handle_), "car");
  EXPECT_STREQ(get_track_name(handle_), "") << "what the file doesn't say is an empty text";
  EXPECT_NE(get_date_and_time(handle_), nullptr);
  ASSERT_EQ(get_channels_count(handle_), 2);
  EXPECT_STREQ(get_channel_name(handle_, 0), "a");
  EXPECT_STREQ(get_channel_units(handle_, 0), "km/h");
  ASSERT_EQ(get_channel_samples_count(handle_, 0), 21);
  EXPECT_EQ(get_channel_samples_count(handle_, 1), 0);
  double times[22];
  double values[22];
  EXPECT_EQ(get_channel_samples(handle_, 0, times, values, 21), 21);
  EXPECT_EQ(times[0], 0.0) << "the file starts at 0";
  EXPECT_EQ(times[20], 2'000'000 * 1e-6);
  EXPECT_EQ(values[20], 20.0);
  EXPECT_EQ(get_laps_count(handle_), 2);
  double start = -1;
  double duration = -1;
  EXPECT_EQ(get_lap_info(handle_, 1, &start, &duration), 1);
  EXPECT_EQ(start, 1.0);
  EXPECT_EQ(duration, 950'000 * 1e-6) << "the logger's own figure";
  EXPECT_EQ(get_lap_channel_samples_count(handle_, 0, 0), 10) << "a sample at the end belongs to the next lap";
  EXPECT_EQ(get_lap_channel_samples_count(handle_, 1, 0), 10);
  EXPECT_EQ(get_lap_channel_samples(handle_, 1, 0, times, values, 10), 10);
  EXPECT_EQ(times[0], 1.0);
  EXPECT_EQ(values[9], 19.0);
}

TEST_F(Exports, WrongCountsWriteNothing) {
  double times[30];
  double values[30];
  std::fill(std::begin(times), std::end(times), -7.0);
  for (const int count : {20, 22, 0, -1}) {
    EXPECT_EQ(get_channel_samples(handle_, 0, times, values, count), 0) << count;
    EXPECT_EQ(get_lap_channel_samples(handle_, 0, 0, times, values, count), 0) << count;
  }
  EXPECT_EQ(times[0], -7.0);
}

TEST_F(Exports, MisuseGivesTheCodesOfItsFunction) {
  double t[1] = {5};
  double v[1] = {5};
  struct Case {
    const char* call;
    int got, want;
  };
  // The host in C holds every function's code for an unknown handle; here some of each form, with other handles.
  for (const int bad : {-1, 0, handle_ + 1, 1 << 30}) {
    const Case cases[] = {
        {"laps", get_laps_count(bad), -1},
        {"samples", get_channel_samples(bad, 0, t, v, 1), -1},
        {"GPS lap", get_lap_GPS_channel_samples(bad, 0, 0, t, v, 1), -1},
        {"raw samples count", get_GPS_raw_channel_samples_count(bad, 0), -1},
        {"close", close_file_i(bad), -1},
    };
    for (const Case& c : cases) EXPECT_EQ(c.got, c.want) << c.call << " with handle " << bad;
    EXPECT_EQ(get_vehicle_name(bad), nullptr);
    EXPECT_EQ(get_GPS_raw_channel_units(bad, 0), nullptr);
    EXPECT_EQ(get_date_and_time(bad), nullptr);
  }
  for (const int bad : {-1, 2, 1 << 30}) {
    EXPECT_EQ(get_channel_name(handle_, bad), nullptr);
    EXPECT_EQ(get_channel_units(handle_, bad), nullptr);
    EXPECT_EQ(get_channel_samples_count(handle_, bad), -3);
    EXPECT_EQ(get_channel_samples(handle_, bad, t, v, 1), -3);
    EXPECT_EQ(get_lap_channel_samples_count(handle_, 0, bad), -2);
    EXPECT_EQ(get_lap_channel_samples(handle_, 0, bad, t, v, 1), -2);
    EXPECT_EQ(get_lap_channel_samples_count(handle_, 99, bad), -1) << "where both are bad the lap decides";
  }
  EXPECT_EQ(get_lap_info(handle_, 2, t, v), 0);
  EXPECT_EQ(t[0], 5.0);
  EXPECT_EQ(get_lap_info(handle_, -5, t, v), 1) << "a negative lap is the first";
  EXPECT_EQ(t[0], 0.0);
  EXPECT_EQ(get_lap_channel_samples(handle_, 2, 0, t, v, 1), -1);
  // A file without a trace.
  EXPECT_EQ(get_GPS_channels_count(handle_), -3);
  EXPECT_EQ(get_GPS_channel_name(handle_, 0), nullptr);
  EXPECT_EQ(get_GPS_channel_samples_count(handle_, 0), -2);
  EXPECT_EQ(get_GPS_channel_samples(handle_, 0, t, v, 1), -2);
  EXPECT_EQ(get_lap_GPS_channel_samples_count(handle_, 0, 0), 1);
  EXPECT_EQ(get_lap_GPS_channel_samples(handle_, 0, 0, t, v, 1), 1);
  EXPECT_EQ(get_lap_GPS_channel_samples(handle_, 9, 0, t, v, 1), -1);
  EXPECT_EQ(get_GPS_raw_channels_count(handle_), -3);
  EXPECT_EQ(get_GPS_raw_channel_name(handle_, 0), nullptr);
  EXPECT_EQ(get_GPS_raw_channel_samples_count(handle_, 0), -2);
  EXPECT_EQ(get_GPS_raw_channel_samples(handle_, 0, t, v, 1), -2);
  EXPECT_EQ(get_lap_GPS_raw_channel_samples_count(handle_, 0, 0), -3);
  EXPECT_EQ(get_lap_GPS_raw_channel_samples(handle_, 0, 0, t, v, 1), 0);
}

TEST(OpenFile, KnowsKindsByTheLastFourCharacters) {
  const TempFolder folder;
  folder.write("A.QLT", small_session());
  for (const char* name : {"a.qlt.bak", "a.txt", "qlt", ""}) {
    EXPECT_EQ(open_file(folder.file(name).c_str()), -2) << name;
  }
  EXPECT_EQ(open_file("qlt"), -2) << "shorter than an ending";
  EXPECT_EQ(open_file(folder.file("missing.qlt").c_str()), 0);
  const int handle = open_file(folder.file("A.QLT").c_str());
  EXPECT_GT(handle, 0);
  EXPECT_EQ(close_file_i(handle), handle);
}

TEST(OpenFile, SamePathIsTheSameFileAndAnotherSpellingAnother) {
  const TempFolder folder;
  const std::string path = folder.write("a.qlt", small_session());
  const std::string other = folder.file("./a.qlt");
  const int failed = open_file(folder.file("missing.qlt").c_str());
  EXPECT_EQ(failed, 0);
  const int first = open_file(path.c_str());
  EXPECT_EQ(open_file(path.c_str()), first);
  const int second = open_file(other.c_str());
  EXPECT_GT(second, first);
  // Both hold the right samples at a time.
  for (const int handle : {first, second}) {
    double times[21];
    double values[21];
    ASSERT_EQ(get_channel_samples(handle, 0, times, values, 21), 21);
    EXPECT_EQ(values[20], 20.0);
  }
  EXPECT_EQ(close_file_n(path.c_str()), first);
  EXPECT_EQ(close_file_n(path.c_str()), -2);
  EXPECT_EQ(close_file_i(first), -1);
  double times[21];
  double values[21];
  EXPECT_EQ(get_channel_samples(second, 0, times, values, 21), 21) << "closing one leaves the other its stores";
  EXPECT_EQ(close_file_i(second), second);
  EXPECT_EQ(folder.names(), std::vector<std::string>{"a.qlt"});
  const int third = open_file(path.c_str());
  EXPECT_GT(third, second) << "a handle is never given out twice";
  close_file_i(third);
}

// Ten samples at 100 Hz in two laps.
test::wmp::File small_older_session() {
  test::wmp::File file;
  file.duration_ms = 100;
  file.racer = "racer";
  file.venue_type = 21;
  file.logged.resize(1);
  file.logged[0].words = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  file.laps = {test::wmp::Lap{60}, test::wmp::Lap{40, 1, 2}};
  return file;
}

// On Windows a host's path is UTF-8; here it is whatever bytes the folder has.
TEST(OpenFile, TakesPathsBeyondAscii) {
  const TempFolder folder;
  const std::string inner = folder.file(
      "S\xC3\xBC"
      "d \xE2\x82\xAC");
  const std::wstring wide = platform::path_from_host_bytes(inner);
  ASSERT_TRUE(platform::create_folders(wide));
  const std::string path = inner + "/\xC3\xA9.qlt";
  const Bytes bytes = small_session();
  ASSERT_TRUE(platform::write_whole_file(platform::path_from_host_bytes(path),
                                         {reinterpret_cast<const char*>(bytes.data()), bytes.size()}));
  const int handle = open_file(path.c_str());
  ASSERT_GT(handle, 0);
  EXPECT_EQ(get_channel_samples_count(handle, 0), 21);
  EXPECT_EQ(close_file_i(handle), handle);
  EXPECT_EQ(platform::list_files(wide, L"").size(), 1U) << "stores stay behind";
}

TEST(OpenFile, ReadsTheOlderFamilyLikeAnyOther) {
  const TempFolder folder;
  const std::string path = folder.write("s.WMP", test::wmp::build(small_older_session()));
  EXPECT_EQ(open_file(path.c_str()), 0) << "there is no trace beside it";
  folder.write("s.jts", test::plain_jts(5));
  const int handle = open_file(path.c_str());
  ASSERT_GT(handle, 0);
  EXPECT_STREQ(get_racer_name(handle), "racer");
  EXPECT_STREQ(get_venue_type_name(handle), "Test ");
  ASSERT_NE(get_date_and_time(handle), nullptr);
  EXPECT_EQ(get_date_and_time(handle)->tm_mon, 10);
  ASSERT_EQ(get_channels_count(handle), 1);
  EXPECT_STREQ(get_channel_name(handle, 0), "A");
  double times[10];
  double values[10];
  ASSERT_EQ(get_channel_samples(handle, 0, times, values, 10), 10);
  EXPECT_EQ(times[9], 90000 * 1e-6);
  EXPECT_EQ(values[9], 10.0);
  ASSERT_EQ(get_laps_count(handle), 2);
  double start = 0.0;
  double duration = 0.0;
  ASSERT_EQ(get_lap_info(handle, 1, &start, &duration), 1);
  EXPECT_EQ(start, 60000 * 1e-6);
  EXPECT_EQ(duration, 40000 * 1e-6);
  EXPECT_EQ(get_GPS_channels_count(handle), 15);
  EXPECT_EQ(get_GPS_raw_channels_count(handle), 7);
  EXPECT_EQ(get_GPS_raw_channel_samples_count(handle, 0), 5);
  EXPECT_EQ(close_file_i(handle), handle);
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"s.WMP", "s.bak", "s.jts"}));
}

TEST(Library, StampsHaveTheirForm) {
  const std::string date = get_library_date();
  const std::string time = get_library_time();
  EXPECT_EQ(date.size(), 11U);
  EXPECT_EQ(date[3], ' ');
  EXPECT_EQ(date[6], ' ');
  EXPECT_EQ(time.size(), 8U);
  EXPECT_EQ(time[2], ':');
}

TEST(ReaderFactory, KindsWithoutAReaderGiveNone) {
  for (const int kind : {0, 1, 4, 5, 6, 7, 8, 10, 11, 12, 100}) {
    EXPECT_EQ(CreaParser(L"a.qlt", kind, nullptr, false), nullptr) << kind;
  }
  EXPECT_NE(CreaParser(L"a.qlt", kKindQlt, nullptr, false), nullptr);
}

TEST(ReaderFactory, LooksAtNoSettingForTheOlderFamily) {
  const std::list<std::string> options{"--report"};
  const std::unique_ptr<IRkParser> reader = CreaParser(L"a.wmp", kKindWmp, &options, false);
  const auto* older = dynamic_cast<CParserWMP*>(reader.get());
  ASSERT_NE(older, nullptr);
  EXPECT_TRUE(older->GetMantieniCostanti());
}

TEST(OpenFile, TakesANullPointerForAWrongArgument) {
  const test::TempFolder folder;
  std::filesystem::copy_file(std::filesystem::path(TRAGUARDO_SESSIONS) / "gps/random_9016.qlt",
                             folder.path() / "a.qlt");
  EXPECT_EQ(open_file(nullptr), -2);
  EXPECT_EQ(close_file_n(nullptr), -2);
  const int file = open_file(folder.file("a.qlt").c_str());
  ASSERT_GT(file, 0);
  ASSERT_GT(get_GPS_channels_count(file), 0);
  ASSERT_EQ(get_GPS_raw_channels_count(file), 7);
  ASSERT_GT(get_channel_samples_count(file, 0), 0);
  std::vector<double> room(1'000'000);
  double* const some = room.data();
  for (const auto& [times, values] :
       {std::pair<double*, double*>{nullptr, some}, {some, nullptr}, {nullptr, nullptr}}) {
    EXPECT_EQ(get_lap_info(file, 0, times, values), 0);
    EXPECT_EQ(get_channel_samples(file, 0, times, values, get_channel_samples_count(file, 0)), 0);
    EXPECT_EQ(get_lap_channel_samples(file, 0, 0, times, values, get_lap_channel_samples_count(file, 0, 0)), 0);
    EXPECT_EQ(get_GPS_channel_samples(file, 0, times, values, 10), 0);
    EXPECT_EQ(get_lap_GPS_channel_samples(file, 0, 0, times, values, 10), 0);
    EXPECT_EQ(get_GPS_raw_channel_samples(file, 0, times, values, 10), 0);
    EXPECT_EQ(get_lap_GPS_raw_channel_samples(file, 0, 0, times, values, 10), 0);
  }
  EXPECT_EQ(close_file_i(file), file);
}

}  // namespace
}  // namespace traguardo
