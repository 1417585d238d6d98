// SPDX-License-Identifier: MIT
#include "gps/gps_grid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "gps/gps_samples.h"
#include "helpers/gps_records.h"

namespace traguardo {
namespace {

using test::gps_record;

struct Trace {
  std::string name;
  std::vector<SGpsRecord> records;
};

struct GridArguments {
  u64 step, start, end;
};

bool same_bits(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) || std::bit_cast<u64>(a) == std::bit_cast<u64>(b);
}

// holds every point of a grid against the arrays, in pieces as a host may ask for them.
void expect_filled_alike(const GpsGrid& grid, const std::vector<SGpsChannelOut>& channels,
                         const std::vector<u64>& times, u64 piece) {
  std::vector<double> piece_times(piece);
  std::vector<double> piece_values(piece);
  for (u32 channel = 0; channel < kGpsChannelCount; ++channel) {
    for (u64 first = 0; first < times.size(); first += piece) {
      const GpsTimeUnit unit = channel % 2 == 0 ? GpsTimeUnit::kMilliseconds : GpsTimeUnit::kSeconds;
      const u64 written = grid.fill(channel, first, piece, unit, piece_times.data(), piece_values.data());
      ASSERT_EQ(written, std::min<u64>(piece, times.size() - first));
      for (u64 i = 0; i < written; ++i) {
        const double time_us = static_cast<double>(times[first + i]);
        ASSERT_EQ(piece_times[i], channel % 2 == 0 ? time_us / 1000.0 : time_us * 1e-6);
        ASSERT_TRUE(same_bits(piece_values[i], double{channels[channel].values[first + i]}))
            << channels[channel].name << " at " << first + i << ": " << piece_values[i] << " for "
            << channels[channel].values[first + i];
      }
    }
  }
}

void expect_twins(const Trace& description, const GridArguments& arguments) {
  SCOPED_TRACE(testing::Message() << description.name << ", step " << arguments.step << " from " << arguments.start
                                  << " to " << arguments.end);
  auto trace = std::make_unique<CGPSSamplesLibXml2>();
  for (const SGpsRecord& record : description.records) trace->AddRecordNoClock(record);
  std::vector<SGpsChannelOut> channels;
  std::vector<u64> times;
  trace->GetChannels(arguments.step, arguments.start, arguments.end, channels, times);
  const GpsGrid grid = trace->grid(arguments.step, arguments.start, arguments.end);
  trace.reset();  // the grid lives on

  ASSERT_EQ(grid.size(), times.size());
  for (u64 i = 0; i < times.size(); ++i) ASSERT_EQ(grid.time_at(i), times[i]) << i;
  for (const u64 piece : {u64{1}, u64{7}, u64{1} + times.size()}) expect_filled_alike(grid, channels, times, piece);
  for (u64 i = 0; i < times.size(); i += 1 + times.size() / 5) {
    for (u32 channel = 0; channel < kGpsChannelCount; ++channel) {
      ASSERT_TRUE(same_bits(double{grid.value_at(channel, i)}, double{channels[channel].values[i]})) << i;
    }
  }
}

const GridArguments kArguments[] = {
    {10000, 0, 1},          // what a host gets
    {7001, 3000, 1},        // off the records' raster
    {50000, 0, 9000000},    // goes on behind the records
    {333333, 123456, 100},  // coarser than the records
    {100000, 2500000, 1},   // near the end of the records or behind it
};

std::vector<Trace> strange_traces() {
  std::vector<SGpsRecord> extreme;
  for (const i32 value : {std::numeric_limits<i32>::min(), -1, 0, 1, std::numeric_limits<i32>::max()}) {
    const u32 time = static_cast<u32>(extreme.size()) * 40;
    extreme.push_back(gps_record({.time_ms = time, .x_cm = value, .y_cm = value, .z_cm = value}));
    extreme.push_back(gps_record({.time_ms = time + 13, .vx_cm_s = value, .vy_cm_s = value, .vz_cm_s = value}));
  }
  std::vector<SGpsRecord> alike(40, gps_record({.time_ms = 500}));
  std::vector<SGpsRecord> same_time;
  for (int i = 0; i < 40; ++i) same_time.push_back(gps_record({.time_ms = 500, .vx_cm_s = 100 * i}));
  return {
      {"no record", {}},
      {"only bad records", {gps_record({.time_ms = 40, .fix = 0}), gps_record({.time_ms = 80, .fix = 250})}},
      {"one good record", {gps_record({.time_ms = 500})}},
      {"one good record at zero", {gps_record({.time_ms = 0})}},
      {"all records alike", alike},
      {"all records at one time", same_time},
      {"north pole",
       {gps_record({.time_ms = 40, .x_cm = 0, .y_cm = 0, .z_cm = 635675231}),
        gps_record({.time_ms = 80, .x_cm = 1, .y_cm = 0, .z_cm = 635675231, .vx_cm_s = 2500})}},
      {"equator",
       {gps_record({.time_ms = 40, .x_cm = 637813700, .y_cm = 0, .z_cm = 0}),
        gps_record({.time_ms = 80, .x_cm = 637813700, .y_cm = 100, .z_cm = 0, .vy_cm_s = 2500})}},
      {"x = 0",
       {gps_record({.time_ms = 40, .x_cm = 0, .y_cm = 637813700, .z_cm = 0}),
        gps_record({.time_ms = 80, .x_cm = 0, .y_cm = -637813700, .z_cm = 0, .vx_cm_s = 2500})}},
      {"positions of zero",
       {gps_record({.time_ms = 40, .x_cm = 0, .y_cm = 0, .z_cm = 0}),
        gps_record({.time_ms = 80, .x_cm = 0, .y_cm = 0, .z_cm = 0, .vx_cm_s = 2500})}},
      {"ends of the number range", extreme},
  };
}

TEST(GpsGrid, IsDefinedForRecordsThatNoDriveMakes) {
  for (const Trace& trace : strange_traces()) {
    for (const GridArguments& arguments : kArguments) expect_twins(trace, arguments);
  }
}

TEST(GpsGrid, CostsRecordsAndNotTheTimeBetweenThem) {
  CGPSSamplesLibXml2 trace;
  for (const SGpsRecord& record : test::GpsCircle{}.records(40, 100)) trace.AddRecordNoClock(record);
  trace.AddRecordNoClock(gps_record({.time_ms = std::numeric_limits<u32>::max(), .satellites = 255}));
  // And on the right time again: behind the wild one these records are not reached.
  for (u32 i = 100; i < 120; ++i) trace.AddRecordNoClock(test::GpsCircle{}.record_at(i * 40));

  const GpsGrid grid = trace.grid(10000, 0, 1);
  // 4,294,967,295 ms in steps of 10 ms, and the point at 0.
  ASSERT_EQ(grid.size(), 429496730u);
  EXPECT_EQ(grid.time_at(429496729), 4294967290000u);
  // A quarter of the way from record 99, at 3,960 ms, to the wild one.
  const u64 quarter = 396 + (429496729 - 396) / 4;
  EXPECT_EQ(grid.value_at(kGpsNsat, quarter), 9.0F);
  const float before = grid.value_at(kGpsLatitude, 396);
  const float behind = grid.value_at(kGpsLatitude, 429496729);
  EXPECT_NEAR(grid.value_at(kGpsLatitude, quarter), before + (behind - before) * 0.25F, 1e-4F);
  std::vector<double> times(3);
  std::vector<double> values(3);
  EXPECT_EQ(grid.fill(kGpsLatitude, 429496728, 3, GpsTimeUnit::kSeconds, times.data(), values.data()), 2u);
  EXPECT_DOUBLE_EQ(times[1], 4294967.29);
  EXPECT_EQ(values[2], 0.0);
}

TEST(GpsGrid, GivesNothingBeyondItsEnds) {
  CGPSSamplesLibXml2 trace;
  trace.AddRecordNoClock(gps_record({.time_ms = 20}));
  const GpsGrid grid = trace.grid(10000, 0, 1);
  double time = -1.0;
  double value = -1.0;
  EXPECT_EQ(grid.fill(kGpsChannelCount, 0, 1, GpsTimeUnit::kSeconds, &time, &value), 0u);
  EXPECT_EQ(grid.fill(kGpsSpeed, 3, 1, GpsTimeUnit::kSeconds, &time, &value), 0u);
  EXPECT_EQ(grid.fill(kGpsSpeed, 0, 0, GpsTimeUnit::kSeconds, &time, &value), 0u);
  EXPECT_EQ(GpsGrid().fill(kGpsSpeed, 0, 1, GpsTimeUnit::kSeconds, &time, &value), 0u);
  EXPECT_EQ(time, -1.0);
  EXPECT_EQ(value, -1.0);
}

}  // namespace
}  // namespace traguardo
