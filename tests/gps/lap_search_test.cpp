// SPDX-License-Identifier: MIT
#include "gps/lap_search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "gps/raw_channels.h"
#include "helpers/gps_records.h"

namespace traguardo {
namespace {

using test::gps_record;

class PlainTimes {
 public:
  explicit PlainTimes(std::vector<u64> times) : times_(std::move(times)) {}
  u64 size() const { return times_.size(); }
  u64 time_at(u64 i) const { return times_.at(i); }

 private:
  std::vector<u64> times_;
};

class AscendingTimes : public PlainTimes {
 public:
  using PlainTimes::PlainTimes;
  bool ascends() const { return true; }
};

struct SearchCase {
  const char* name;
  std::vector<u64> times;
  u64 t, step;
  u64 first, last;
};

TEST(LapSearch, FindsTheEndsOfALap) {
  const std::vector<u64> even = {100, 110, 120, 130, 140};
  const SearchCase cases[] = {
      {"on a sample the hint decides", even, 120, 10, 2, 2},
      {"between samples", even, 125, 10, 3, 2},
      {"before the first", even, 50, 10, 0, 0},
      {"on the first", even, 100, 10, 0, 0},
      {"behind the last", even, 999, 10, 4, 4},
      {"a hint too low misses the sample and finds the one before", even, 120, 10000, 2, 1},
      {"a hint too low, on the second sample", even, 110, 10000, 1, 0},
      {"a hint too high steps down", even, 125, 1, 3, 2},
      {"a hint too high, down to the first", {100, 500, 900}, 300, 1, 1, 0},
      {"of equal times the first", {10, 20, 20, 20, 30}, 20, 1000, 1, 0},
      {"of equal times the hint's", {10, 20, 20, 20, 30}, 20, 5, 2, 2},
      {"back and forth: the first step that fits", {10, 50, 30, 40}, 35, 1000, 1, 0},
      {"back and forth: no step fits", {10, 20, 5}, 30, 1000, 2, 2},
      {"back and forth: down to the first", {50, 10, 40}, 45, 1, 0, 0},
      {"one sample, below", {100}, 99, 10, 0, 0},
      {"one sample, above", {100}, 101, 10, 0, 0},
  };
  for (const SearchCase& c : cases) {
    EXPECT_EQ(TrovaPrimo(PlainTimes(c.times), c.t, c.step), c.first) << c.name;
    EXPECT_EQ(TrovaUltimo(PlainTimes(c.times), c.t, c.step), c.last) << c.name;
  }
}

// The fast way and the plain one, over all ascending sequences that some seeds give.
TEST(LapSearch, GivesTheSameByHalvesAsByStepsWhereTimesAscend) {
  std::mt19937 numbers(7);
  for (int round = 0; round < 300; ++round) {
    std::vector<u64> times(1 + numbers() % 12);
    const u32 range = round % 2 == 0 ? 20 : 200;
    for (u64& time : times) time = numbers() % range;
    std::sort(times.begin(), times.end());
    const PlainTimes plain(times);
    const AscendingTimes ascending(times);
    for (u64 t = 0; t < range + 5; ++t) {
      for (const u64 step : {u64{1}, u64{7}, u64{10000}}) {
        ASSERT_EQ(TrovaPrimo(ascending, t, step), TrovaPrimo(plain, t, step)) << t << " step " << step;
        ASSERT_EQ(TrovaUltimo(ascending, t, step), TrovaUltimo(plain, t, step)) << t << " step " << step;
      }
    }
  }
}

TEST(LapSearch, CutsALapOutOfEvenTimes) {
  std::vector<u64> times;
  for (u64 t = 0; t <= 90; t += 10) times.push_back(t);
  struct Case {
    const char* name;
    u64 from, to;
    u64 first, count;
  };
  const Case cases[] = {
      {"both ends on samples", 20, 50, 2, 3},
      {"both between samples: the last one before the end stays out", 15, 45, 2, 2},
      {"an end behind the last sample leaves that out", 50, 1000, 5, 4},
      {"before all", 0, 0, 0, 0},
      {"after all", 91, 200, 0, 0},
      {"too short for a sample", 11, 19, 0, 0},
      {"ends the wrong way round", 60, 20, 0, 0},
  };
  for (const Case& c : cases) {
    const LapSlice slice = lap_slice(PlainTimes(times), c.from, c.to, 10);
    EXPECT_EQ(slice.count, c.count) << c.name;
    if (c.count > 0) {
      EXPECT_EQ(slice.first, c.first) << c.name;
    }
  }
  EXPECT_EQ(lap_slice(PlainTimes(std::vector<u64>{}), 0, 10, 10).count, 0u);
}

// --- Raw channels --------------------------------------------------------------------------------------------------

std::vector<const SGpsRecord*> pointers_to(const std::vector<SGpsRecord>& records) {
  std::vector<const SGpsRecord*> pointers;
  for (const SGpsRecord& record : records) pointers.push_back(&record);
  return pointers;
}

TEST(RawGpsSamples, CutLapsInMillisecondsFromAHintInTheGridsStep) {
  // A record every 40 ms for 40 s. A hint in steps of 10,000 reaches index 3 at most.
  const std::vector<SGpsRecord> records = test::GpsCircle{}.records(40, 1001);
  const RawGpsSamples samples(pointers_to(records));
  EXPECT_TRUE(samples.ascends());
  struct Case {
    u64 from_us, to_us;
    u64 first, count;
  };
  const Case cases[] = {
      {4000000, 8000000, 100, 99},   // the end stands on record 200, which the hint misses
      {4000999, 8000999, 100, 99},   // cut to whole milliseconds
      {3999999, 8001000, 100, 100},  // 3999 and 8001 ms
      {0, 40000, 0, 0},              // the last record before the end is the first
      {0, 41000, 0, 1},
      {39960000, 90000000, 999, 1},  // behind the last record, which stays out
      {40001000, 90000000, 0, 0},
  };
  std::vector<SGpsRecord> disordered = records;
  std::swap(disordered[998], disordered[997]);
  const RawGpsSamples stepped(pointers_to(disordered));
  EXPECT_FALSE(stepped.ascends());
  for (const Case& c : cases) {
    for (const RawGpsSamples* either : {&samples, &stepped}) {
      const LapSlice slice = either->lap(c.from_us, c.to_us, 10000);
      EXPECT_EQ(slice.count, c.count) << c.from_us << " to " << c.to_us;
      if (c.count > 0) {
        EXPECT_EQ(slice.first, c.first) << c.from_us << " to " << c.to_us;
      }
    }
  }
  EXPECT_EQ(RawGpsSamples().lap(0, 1000000, 10000).count, 0u);
}

}  // namespace
}  // namespace traguardo
