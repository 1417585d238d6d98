// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "helpers/parsed_session.h"

namespace traguardo {
namespace {

using test::Bytes;
using test::cnf;
using test::frame_s;
using test::Lap;
using test::operator+;
using test::ParsedSession;
using test::tail;

struct Want {
  i32 session, lap;
  u64 start, end, duration;
  bool operator==(const Want&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Want& w) {
  return out << w.session << "/" << w.lap << ": " << w.start << " " << w.end << " " << w.duration;
}

// Milliseconds all through.
std::vector<Want> laps_of(CParser* reader) {
  std::vector<Want> laps;
  for (const auto& [number, session] : reader->GetSessioni()) {
    for (const auto& [lap_number, lap] : session->laps) {
      laps.push_back({number, lap_number, lap->start / 1000, lap->end / 1000, lap->duration / 1000});
    }
  }
  return laps;
}

Lap mark(u16 lap, u32 time_ms, i32 lap_time_ms, u8 kind1 = 0, u8 session = 0) {
  Lap record;
  record.session = session;
  record.lap = lap;
  record.time_ms = time_ms;
  record.lap_time_ms = lap_time_ms;
  record.kind1 = kind1;
  return record;
}
Lap split(u16 completed_laps, u8 number, u32 time_ms, u32 split_time_ms) {
  Lap record;
  record.lap = completed_laps;
  record.split = number;
  record.time_ms = time_ms;
  record.split_time_ms = split_time_ms;
  return record;
}

class Laps : public ::testing::TestWithParam<int> {};

TEST_P(Laps, MarksBecomeLaps) {
  const int version = GetParam();
  struct Case {
    const char* name;
    std::vector<Lap> marks;
    std::vector<Want> want;
    u32 repeated;
  };
  // The data runs from 100 to 50,000 ms.
  const Case cases[] = {
      {"no mark: one lap of all the data", {}, {{0, 1, 100, 50000, 49900}}, 0},
      {"in order",
       {mark(1, 10000, 9900), mark(2, 20000, 9800)},
       {{0, 1, 100, 10000, 9900}, {0, 2, 10000, 20000, 9800}},
       0},
      {"a repeated mark changes nothing",
       {mark(1, 10000, 9900), mark(2, 20000, 9800), mark(2, 30000, 1)},
       {{0, 1, 100, 10000, 9900}, {0, 2, 10000, 20000, 9800}},
       1},
      {"a new run refills lap 1",
       {mark(1, 10000, 9900), mark(2, 20000, 9800), mark(1, 25000, 4000, 1), mark(2, 30000, 5000)},
       {{0, 1, 100, 25000, 4000}, {0, 2, 25000, 30000, 5000}},
       0},
      {"a closing lap is due", {mark(1, 10000, 9900, 2)}, {{0, 1, 100, 10000, 9900}, {0, 2, 10000, 50000, 40000}}, 0},
      {"sessions: a number above the last is new whatever its lap",
       {mark(1, 10000, 9900), mark(2, 20000, 9800), mark(1, 30000, 8000, 0, 1)},
       {{0, 1, 100, 10000, 9900}, {0, 2, 10000, 20000, 9800}, {1, 1, 20000, 30000, 8000}},
       0},
      {"a mark of lap 0 is a repeat from the start", {mark(0, 10000, 9900)}, {{0, 1, 100, 50000, 49900}}, 1},
  };
  for (const Case& c : cases) {
    Bytes bytes = cnf({{1, "a"}}) + frame_s(100, 1, 1);
    for (const Lap& lap : c.marks) bytes = bytes + frame_s(lap.time_ms, 1, 2) + lap.tagged(version);
    ParsedSession session(bytes + frame_s(50000, 1, 3) + tail());
    EXPECT_EQ(laps_of(&session.reader()), c.want) << c.name << ", version " << version;
    EXPECT_EQ(session.reader().lap_statistics().repeated_laps, c.repeated) << c.name;
  }
}

// Version 1 has no time stamp: its marks stand at the highest time so far, which the frame before each mark sets.
INSTANTIATE_TEST_SUITE_P(AllForms, Laps, ::testing::Values(1, 2, 3));

TEST(LapRecords, OfTheWrongSizeAreCountedAndDropped) {
  const Lap lap = mark(1, 10000, 9900);
  Bytes bytes = cnf({{1, "a"}, {2, "laps", 22, 30, 0x1A | 1 << 7 | 2 << 15}}) + frame_s(100, 1, 1);
  bytes = bytes + test::tag("LAP", lap.record(2), 0) + test::tag("LAP", lap.record(1), 2) +
          test::tag("LAP", lap.record(2), 3) + test::frame('S', 110, 2, Bytes(30));
  LoggerReportOptions options;
  options.lap_statistics = true;
  ParsedSession session(bytes + tail(), options);
  EXPECT_EQ(session.reader().lap_statistics().bad_size_offsets.size(), 4U);
  EXPECT_EQ(laps_of(&session.reader()), (std::vector<Want>{{0, 1, 100, 110, 10}}));
}

TEST(LapRecords, ComeAlsoAsSamplesOfPacketChannels) {
  const Lap lap = mark(1, 10000, 9900);
  for (const int version : {2, 3}) {
    const u32 size = version == 2 ? 32 : 20;
    const u32 word = 0x1AU | 1U << 7 | static_cast<u32>(version) << 15;
    ParsedSession session(cnf({{1, "a"}, {2, "laps", 22, size, word}}) + frame_s(100, 1, 1) +
                          test::frame('S', 10000, 2, lap.record(version)) + frame_s(20000, 1, 1) + tail());
    EXPECT_EQ(laps_of(&session.reader()), (std::vector<Want>{{0, 1, 100, 10000, 9900}})) << version;
  }
}

TEST(LapRecords, NegativeLapTimesWrap) {
  ParsedSession session(cnf({{1, "a"}}) + frame_s(100, 1, 1) + mark(1, 10000, -5).tagged() + tail());
  EXPECT_EQ(session.reader().GetSessioni().at(0)->laps.at(1)->duration, static_cast<u64>(-5000));
}

TEST(Splits, StandInTheLapThatIsDrivenAndTheLineAddsTheLast) {
  const Lap line = [] {
    Lap record = mark(2, 40000, 30000);
    record.split_time_ms = 25000;
    return record;
  }();
  ParsedSession session(cnf({{1, "a"}}) + frame_s(100, 1, 1) + mark(1, 10000, 9900).tagged() +
                        split(1, 1, 18000, 8000).tagged() + split(1, 2, 35000, 25000).tagged() +
                        split(1, 2, 36000, 26000).tagged() + split(1, 3, 0, 7).tagged() + line.tagged() + tail());
  const auto& splits = session.reader().GetSessioni().at(0)->laps.at(2)->splits;
  ASSERT_EQ(splits.size(), 3U) << "a split without a time is dropped";
  EXPECT_EQ(splits.at(1)->start, 10'000'000U) << "the end of the lap before";
  EXPECT_EQ(splits.at(1)->end, 18'000'000U);
  EXPECT_EQ(splits.at(2)->start, 18'000'000U);
  EXPECT_EQ(splits.at(2)->end, 35'000'000U) << "its time counts from the start of the first split";
  EXPECT_EQ(splits.at(3)->start, 35'000'000U);
  EXPECT_EQ(splits.at(3)->duration, 5'000'000U) << "lap time less split time of the mark";
  EXPECT_EQ(session.reader().lap_statistics().repeated_splits, 1U);
}

TEST(Splits, AloneMakeASessionThatStillGetsItsClosingLap) {
  ParsedSession session(cnf({{1, "a"}}) + frame_s(100, 1, 1) + split(0, 1, 5000, 3000).tagged() + frame_s(9000, 1, 1) +
                        tail());
  // Lap 1 exists from the split on, and the closing lap is that same lap.
  EXPECT_EQ(laps_of(&session.reader()), (std::vector<Want>{{0, 1, 100, 9000, 8900}}));
  EXPECT_EQ(session.reader().GetSessioni().at(0)->laps.at(1)->splits.at(1)->start, 2'000'000U);
}

TEST(ClosingLap, IsMissingOnlyWhereThereIsNoTime) {
  EXPECT_TRUE(ParsedSession(cnf({{1, "a"}}) + tail()).reader().GetSessioni().empty());
}

}  // namespace
}  // namespace traguardo
