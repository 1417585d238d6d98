// SPDX-License-Identifier: MIT
#include "gps/gps_samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "helpers/gps_records.h"

namespace traguardo {
namespace {

using test::gps_record;
using test::GpsFields;

// --- What gets into a trace ----------------------------------------------------------------------------------------

struct Arrival {
  GpsFields fields;
  u64 time_us = 0;  // the reader's clock
  bool stored = true;
  u32 size = 56;
};

struct StoreCase {
  const char* name;
  std::vector<Arrival> arrivals;
  std::vector<u32> times_ms;  // of the records in the store
  u32 good = 0;
  std::map<u8, u32> bad_fixes{};
  std::size_t clock_errors = 0;
  u32 resets = 0;
  std::size_t wrong_sizes = 0;
};

// So many records of 1 ms distance from 1000 ms on, for a reader whose clock stands at 1 s.
std::vector<Arrival> ascending(u32 count) {
  std::vector<Arrival> arrivals;
  for (u32 i = 0; i < count; ++i) arrivals.push_back({{.time_ms = 1000 + i}, 1000000});
  return arrivals;
}

std::vector<u32> from_1000(u32 count) {
  std::vector<u32> times;
  for (u32 i = 0; i < count; ++i) times.push_back(1000 + i);
  return times;
}

template <typename T>
std::vector<T> with(std::vector<T> all, T last) {
  all.push_back(last);
  return all;
}

std::vector<StoreCase> store_cases() {
  const Arrival back{{.time_ms = 999}, 1000000};
  return {
      {.name = "a copy of the record before is not stored",
       .arrivals = {{{.time_ms = 10}}, {{.time_ms = 10}, 0, false}, {{.time_ms = 20}}, {{.time_ms = 20}, 0, false}},
       .times_ms = {10, 20},
       .good = 2},
      {.name = "a copy counts only directly behind its like",
       .arrivals = {{{.time_ms = 10}}, {{.time_ms = 10, .satellites = 4}}, {{.time_ms = 10}}},
       .times_ms = {10, 10, 10},
       .good = 3},
      {.name = "a copy of a bad record is not stored",
       .arrivals = {{{.time_ms = 10, .fix = 2}}, {{.time_ms = 10, .fix = 2}, 0, false}},
       .times_ms = {10},
       .bad_fixes = {{2, 1}}},
      {.name = "a second ahead of the clock is stored, a millisecond more is not",
       .arrivals = {{{.time_ms = 1000}}, {{.time_ms = 1001}, 999, false}, {{.time_ms = 1001}, 1000, false}},
       .times_ms = {1000},
       .good = 1,
       .clock_errors = 1},  // the third is a copy of the second
      {.name = "fractions of a millisecond of the clock don't count",
       .arrivals = {{{.time_ms = 1001}, 1999}, {{.time_ms = 1002}, 1999, false}},
       .times_ms = {1001},
       .good = 1,
       .clock_errors = 1},
      {.name = "a record refused for its clock makes the next one run back",
       .arrivals = {{{.time_ms = 10}}, {{.time_ms = 5000}, 0, false}, {{.time_ms = 20}}, {{.time_ms = 30}}},
       .times_ms = {30},
       .good = 3,
       .clock_errors = 1,
       .resets = 1},
      {.name = "fix types 3 to 249 are good, all are stored",
       .arrivals = {{{.time_ms = 1, .fix = 2}},
                    {{.time_ms = 2, .fix = 3}},
                    {{.time_ms = 3, .fix = 249}},
                    {{.time_ms = 4, .fix = 250}},
                    {{.time_ms = 5, .fix = 255}},
                    {{.time_ms = 6, .fix = 250}}},
       .times_ms = {1, 2, 3, 4, 5, 6},
       .good = 2,
       .bad_fixes = {{2, 1}, {250, 2}, {255, 1}}},
      {.name = "a wrong size changes nothing else",
       .arrivals = {{{.time_ms = 10}}, {{.time_ms = 20}, 0, false, 55}, {{.time_ms = 10}, 0, false}},
       .times_ms = {10},
       .good = 1,
       .wrong_sizes = 1},
      {.name = "a clock that runs back as 29th record clears the trace",
       .arrivals = with(ascending(28), back),
       .times_ms = {},
       .good = 29,
       .resets = 1},
      {.name = "as 30th record it no longer does",
       .arrivals = with(ascending(29), back),
       .times_ms = with(from_1000(29), 999U),
       .good = 30},
      {.name = "a bad record that runs back clears nothing",
       .arrivals = {{{.time_ms = 20}}, {{.time_ms = 10, .fix = 0}}, {{.time_ms = 15}}},
       .times_ms = {20, 10, 15},
       .good = 2,
       .bad_fixes = {{0, 1}}},
  };
}

TEST(CGPSSamples, StoresRecordsByItsRules) {
  for (const StoreCase& c : store_cases()) {
    SCOPED_TRACE(c.name);
    CGPSSamplesLibXml2 trace;
    for (std::size_t i = 0; i < c.arrivals.size(); ++i) {
      const Arrival& arrival = c.arrivals[i];
      const SGpsRecord record = gps_record(arrival.fields);
      EXPECT_EQ(trace.AddRecord(arrival.time_us, record.bytes.data(), arrival.size, 0), arrival.stored)
          << "arrival " << i;
    }
    std::vector<u32> times;
    for (const SGpsRecord& record : trace.records()) times.push_back(record.logger_time_ms());
    EXPECT_EQ(times, c.times_ms);
    EXPECT_EQ(trace.HasSamples(), !c.times_ms.empty());
    EXPECT_EQ(trace.statistics().good_records, c.good);
    EXPECT_EQ(trace.statistics().bad_fixes, c.bad_fixes);
    EXPECT_EQ(trace.statistics().clock_errors.size(), c.clock_errors);
    EXPECT_EQ(trace.statistics().resets, c.resets);
    EXPECT_EQ(trace.statistics().wrong_sizes.size(), c.wrong_sizes);
  }
}

TEST(CGPSSamples, NotesWhereBadRecordsStood) {
  const SGpsRecord late = gps_record({.time_ms = 90000});
  CGPSSamplesLibXml2 trace;
  trace.AddRecord(0, late.bytes.data(), 55, 123);
  trace.AddRecord(20000000, late.bytes.data(), 56, 300);
  const SGpsRecord later = gps_record({.time_ms = 90001});
  trace.AddRecord(20000500, later.bytes.data(), 56, 0x123456789A);
  trace.AddRecord(0, later.bytes.data(), 3, 0x123456789A);

  EXPECT_EQ(trace.statistics().wrong_sizes, (std::vector<u32>{123, 0x3456789A}));
  ASSERT_EQ(trace.statistics().clock_errors.size(), 2u);
  EXPECT_EQ(trace.statistics().clock_errors[0].logger_time_ms, 90000u);
  EXPECT_EQ(trace.statistics().clock_errors[0].highest_time_ms, 20000.0);
  EXPECT_EQ(trace.statistics().clock_errors[0].file_offset, 300u);
  EXPECT_EQ(trace.statistics().clock_errors[1].highest_time_ms, 20000.5);
  EXPECT_EQ(trace.statistics().clock_errors[1].file_offset, 0x123456789Au);
}

TEST(CGPSSamples, TakesRecordsOfTraceFilesWithoutTestingTheirClock) {
  CGPSSamplesLibXml2 trace;
  EXPECT_TRUE(trace.AddRecordNoClock(gps_record({.time_ms = 3600000})));
  EXPECT_FALSE(trace.AddRecordNoClock(gps_record({.time_ms = 3600000})));
  EXPECT_TRUE(trace.AddRecordNoClock(gps_record({.time_ms = 3600040})));
  EXPECT_EQ(trace.records().size(), 2u);
  // Runs back among the first 30: all that stood there goes, and so does this one.
  EXPECT_TRUE(trace.AddRecordNoClock(gps_record({.time_ms = 40})));
  EXPECT_FALSE(trace.HasSamples());
}

// --- Times ---------------------------------------------------------------------------------------------------------

CGPSSamplesLibXml2 trace_of(const std::vector<SGpsRecord>& records) {
  CGPSSamplesLibXml2 trace;
  for (const SGpsRecord& record : records) trace.AddRecordNoClock(record);
  return trace;
}

TEST(CGPSSamples, TellsItsLimitsAlsoWhenEmpty) {
  i16 week = 7;
  u32 time_of_week = 7;
  const CGPSSamplesLibXml2 empty;
  EXPECT_EQ(empty.GetFirstTime(), std::numeric_limits<u64>::max());
  EXPECT_EQ(empty.GetLastTime(), 0u);
  empty.GetLastGpsTime(week, time_of_week);
  EXPECT_EQ(week, 0);
  EXPECT_EQ(time_of_week, 0u);

  const CGPSSamplesLibXml2 trace = trace_of(
      {gps_record({.time_ms = 5, .fix = 0}), gps_record({.time_ms = 4294967295, .time_of_week_ms = 99, .week = -3})});
  EXPECT_EQ(trace.GetFirstTime(), 5000u);
  EXPECT_EQ(trace.GetLastTime(), 4294967295000u);
  trace.GetLastGpsTime(week, time_of_week);
  EXPECT_EQ(week, -3);
  EXPECT_EQ(time_of_week, 99u);
}

TEST(CGPSSamples, ShiftsTimesByWholeMillisecondsCutTowardZero) {
  struct Case {
    u64 from, to;
    u32 expected;  // of a record at 10 ms
  };
  for (const Case& c : {Case{0, 2999, 12}, Case{2999, 0, 8}, Case{5000, 5999, 10}, Case{20000, 0, 4294967286}}) {
    CGPSSamplesLibXml2 trace = trace_of({gps_record({.time_ms = 10}), gps_record({.time_ms = 10, .fix = 0})});
    trace.ShiftTime(c.from, c.to);
    for (const SGpsRecord& record : trace.records()) {
      EXPECT_EQ(record.logger_time_ms(), c.expected) << c.from << " to " << c.to;
    }
  }
}

TEST(CGPSSamples, ContinuesAGpsClockOverTheEndOfAWeek) {
  CGPSSamplesLibXml2 trace =
      trace_of({gps_record({.time_ms = 1000}), gps_record({.time_ms = 1500}), gps_record({.time_ms = 1501})});
  trace.RiallineaGps(1000, 2100, 604799500);
  const std::vector<SGpsRecord>& records = trace.records();
  // A whole week is not yet above a week.
  const std::pair<i16, u32> expected[] = {{2100, 604799500}, {2100, 604800000}, {2101, 1}};
  ASSERT_EQ(records.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(records[i].week(), expected[i].first) << i;
    EXPECT_EQ(records[i].time_of_week_ms(), expected[i].second) << i;
  }
}

TEST(CGPSSamples, TellsTheDateOfItsFirstFix) {
  struct Case {
    const char* name;
    GpsFields fields;
    std::array<int, 8> fields_of_time;  // year, month, day, hour, minute, second, day of week and of year
  };
  const Case cases[] = {
      {"epoch", {.week = 0}, {80, 0, 6, 0, 0, 0, 0, 5}},
      {"a Thursday", {.time_of_week_ms = 345600123, .week = 2000}, {118, 4, 10, 0, 0, 0, 4, 129}},
      {"a nanosecond early",
       {.time_of_week_ms = 345600000, .fractional_ns = -1, .week = 2000},
       {118, 4, 9, 23, 59, 59, 3, 128}},
      {"leap year", {.time_of_week_ms = 259199999, .week = 2094}, {120, 1, 25, 23, 59, 59, 2, 55}},
      {"rounded up",
       {.time_of_week_ms = 259199999, .fractional_ns = 1000000, .week = 2094},
       {120, 1, 26, 0, 0, 0, 3, 56}},
      {"first Sunday of 1970", {.week = -522}, {70, 0, 4, 0, 0, 0, 0, 3}},
      {"before 1970: no time", {.week = -523}, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::tm when{};
    GpsFields bad = c.fields;
    bad.fix = 2;
    bad.week = 1;
    ASSERT_TRUE(trace_of({gps_record(bad), gps_record(c.fields)}).GetFirstFixTime(when));
    EXPECT_EQ((std::array{when.tm_year, when.tm_mon, when.tm_mday, when.tm_hour, when.tm_min, when.tm_sec, when.tm_wday,
                          when.tm_yday}),
              c.fields_of_time);
  }
  std::tm when{};
  EXPECT_FALSE(trace_of({gps_record({.fix = 2})}).GetFirstFixTime(when));
}

// --- Good records --------------------------------------------------------------------------------------------------

TEST(CGPSSamples, MeansTheAccuracyOfGoodRecordsOnly) {
  EXPECT_EQ(trace_of({gps_record({.fix = 0, .position_accuracy_cm = 500})}).GetQuality(), 0.0);
  EXPECT_EQ(trace_of({gps_record({.time_ms = 1, .position_accuracy_cm = 4294967295}),
                      gps_record({.time_ms = 2, .fix = 1, .position_accuracy_cm = 9}),
                      gps_record({.time_ms = 3, .position_accuracy_cm = 4294967290})})
                .GetQuality(),
            4294967292.5);
}

TEST(CGPSSamples, TakesItsCentreFromTheBoxAroundGoodRecords) {
  CGPSSamplesLibXml2 trace = trace_of({
      gps_record({.time_ms = 1, .x_cm = 637813700, .y_cm = -1000, .z_cm = 200}),
      gps_record({.time_ms = 2, .x_cm = 637813900, .y_cm = 3000, .z_cm = 100}),
      gps_record({.time_ms = 3, .x_cm = 637813800, .y_cm = 2900, .z_cm = -400}),
      gps_record({.time_ms = 4, .fix = 0, .x_cm = 1, .y_cm = 2, .z_cm = 3}),
  });
  const GpsCentre& centre = trace.GetCentre();
  EXPECT_NEAR(centre.x_m, 6378138.0, 1e-9);
  EXPECT_NEAR(centre.y_m, 10.0, 1e-12);
  EXPECT_NEAR(centre.z_m, -1.0, 1e-12);
  // A metre along the meridian at the equator: its radius of curvature there is a (1 - e^2) = 6335439.327 m.
  EXPECT_NEAR(centre.latitude_deg, -57.29577951308232 / 6335439.327, 1e-9);
  EXPECT_NEAR(centre.longitude_deg, 10.0 / 6378138.0 * 57.29577951308232, 1e-12);
  EXPECT_NEAR(centre.altitude_m, 1.0, 1e-4);

  CGPSSamplesLibXml2 damaged =
      trace_of({gps_record({.time_ms = 1, .x_cm = 2147483647}), gps_record({.time_ms = 2, .x_cm = 2147483645})});
  EXPECT_NEAR(damaged.GetCentre().x_m, 21474836.46, 1e-6);

  CGPSSamplesLibXml2 without = trace_of({gps_record({.fix = 0})});
  EXPECT_EQ(without.GetCentre().x_m, 0.0);
  EXPECT_EQ(without.GetCentre().altitude_m, 0.0);
}

TEST(CGPSSamples, AppendsGoodRecordsToABlockOfTheCallersHeap) {
  const std::vector<SGpsRecord> records = {gps_record({.time_ms = 1}), gps_record({.time_ms = 2, .fix = 0}),
                                           gps_record({.time_ms = 3})};
  const CGPSSamplesLibXml2 trace = trace_of(records);
  std::vector<const SGpsRecord*> pointers;
  trace.GetGoodSamplePointers(pointers);
  trace.GetGoodSamplePointers(pointers);
  ASSERT_EQ(pointers.size(), 4u);
  EXPECT_EQ(pointers[3], &trace.records()[2]);

  SGpsRecord* buffer = nullptr;
  u32 count = 0;
  trace.GetGoodSamples(nullptr, buffer, count);
  trace.GetGoodSamples(nullptr, buffer, count);
  ASSERT_EQ(count, 4u);
  for (u32 i = 0; i < count; ++i) EXPECT_EQ(buffer[i], records[i % 2 == 0 ? 0 : 2]) << i;

  // No block can hold that many: all stays.
  SGpsRecord* const before = buffer;
  count = 4294967295;
  trace.GetGoodSamples(nullptr, buffer, count);
  EXPECT_EQ(buffer, before);
  EXPECT_EQ(count, 4294967295u);
  platform::heap_free(nullptr, buffer);
}

}  // namespace
}  // namespace traguardo
