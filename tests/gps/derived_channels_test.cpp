// SPDX-License-Identifier: MIT
#include "gps/derived_channels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "gps/gps_samples.h"
#include "helpers/gps_records.h"

namespace traguardo {
namespace {

using test::gps_record;
using test::GpsFields;

constexpr u64 kStep = 10000;

struct Channels {
  std::vector<SGpsChannelOut> list;
  std::vector<u64> times;

  const std::vector<float>& operator[](GpsChannel channel) const { return list[channel].values; }
};

CGPSSamplesLibXml2 trace_of(const std::vector<SGpsRecord>& records) {
  CGPSSamplesLibXml2 trace;
  for (const SGpsRecord& record : records) trace.AddRecordNoClock(record);
  return trace;
}

Channels channels_of(const std::vector<SGpsRecord>& records, u64 step = kStep, u64 start = 0, u64 end = 1) {
  CGPSSamplesLibXml2 trace = trace_of(records);
  Channels channels;
  trace.GetChannels(step, start, end, channels.list, channels.times);
  return channels;
}

// Where equator and prime meridian meet: x is up, y east, z north.
SGpsRecord at_the_origin(u32 time_ms, i32 east_cm_s, i32 north_cm_s, i32 up_cm_s = 0) {
  return gps_record({.time_ms = time_ms,
                     .x_cm = 637813700,
                     .y_cm = 0,
                     .z_cm = 0,
                     .vx_cm_s = up_cm_s,
                     .vy_cm_s = east_cm_s,
                     .vz_cm_s = north_cm_s});
}

TEST(GpsChannelTable, FindsChannelsByTheirNames) {
  for (u32 i = 0; i < kGpsChannelCount; ++i) EXPECT_EQ(gps_channel_index(gps_channel_name(i)), i);
  EXPECT_EQ(gps_channel_index("gps speed"), kGpsChannelCount);
  EXPECT_STREQ(gps_channel_name(kGpsChannelCount), "");
}

TEST(GpsRadius, StaysWithinItsLimits) {
  struct Case {
    float speed, gyro, expected;
  };
  for (const Case& c : {Case{10, -5, 114.59156F}, Case{10, 5, 114.59156F}, Case{10, 0, 100000}, Case{0.01F, 100, 1},
                        Case{0, 100, 0}, Case{50, 0.0001F, 100000}}) {
    EXPECT_FLOAT_EQ(gps_radius(c.speed, c.gyro), c.expected) << c.speed << ", " << c.gyro;
  }
}

// --- Rows ----------------------------------------------------------------------------------------------------------

TEST(GpsChannels, FollowFromOneTurn) {
  // From east to north in one second at 10 m/s, a left turn.
  const Channels channels = channels_of({at_the_origin(0, 1000, 0), at_the_origin(1000, 0, 1000)});
  const double g = 9.806;
  EXPECT_FLOAT_EQ(channels[kGpsSpeed][0], 10.0F);
  EXPECT_FLOAT_EQ(channels[kGpsHeading][0], 90.0F);
  EXPECT_NEAR(channels[kGpsHeading].back(), 0.0F, 1e-4F);
  EXPECT_FLOAT_EQ(channels[kGpsGyro][0], -90.0F);
  EXPECT_FLOAT_EQ(channels[kGpsLatAcc][0], static_cast<float>(-10.0 / g));
  EXPECT_FLOAT_EQ(channels[kGpsLonAcc][0], static_cast<float>(10.0 / g));
  EXPECT_FLOAT_EQ(channels[kGpsRadius][0], static_cast<float>(10.0 / std::acos(0.0)));
  // Half way to the last row, where gyro and accelerations are zero.
  EXPECT_FLOAT_EQ(channels[kGpsGyro][50], -45.0F);
  EXPECT_FLOAT_EQ(channels[kGpsLatAcc][50], static_cast<float>(-5.0 / g));
  EXPECT_EQ(channels[kGpsGyro].size(), 101u);
  EXPECT_EQ(channels.list[kGpsGyro].smallest, channels[kGpsGyro][0]);
  EXPECT_FLOAT_EQ(channels.list[kGpsHeading].largest, 90.0F);
}

TEST(GpsChannels, ShowOneRecordAsItIs) {
  struct Case {
    const char* name;
    SGpsRecord record;
    GpsChannel channel;
    double expected;
    double tolerance;
  };
  const SGpsRecord plain = gps_record({.time_ms = 40});
  const Case cases[] = {
      {"north-west is negative", at_the_origin(40, -500, 500), kGpsHeading, -45, 1e-4},
      {"south", at_the_origin(40, 0, -500), kGpsHeading, 180, 1e-4},
      {"uphill", at_the_origin(40, 0, 2000, 200), kGpsSlope, 5.710593, 1e-5},
      {"downhill", at_the_origin(40, 1200, 1600, -200), kGpsSlope, -5.710593, 1e-5},
      {"no slope at standstill", at_the_origin(40, 0, 0, 0), kGpsSlope, 0, 0},
      {"speed has all three components", at_the_origin(40, 200, 300, 600), kGpsSpeed, 7, 1e-6},
      {"satellites", gps_record({.time_ms = 40, .satellites = 255}), kGpsNsat, 255, 0},
      {"position accuracy in m", plain, kGpsPosAccuracy, 1.5, 1e-6},
      {"speed accuracy in m/s", plain, kGpsSpdAccuracy, 0.2, 1e-6},
      {"latitude", plain, kGpsLatitude, 45, 1e-5},
      {"longitude", plain, kGpsLongitude, 10, 2e-6},
      {"altitude above the ellipsoid", plain, kGpsAltitude, 250, 0.02},
      {"east of itself", plain, kGpsEast, 0, 0.01},
      // -e^2 (N) sin 45 cos 45 with N = 6388838.290 m, as the axes only turn.
      {"north of the equator's plane", plain, kGpsNorth, -21384.656, 0.05},
      {"no radius without a turn", plain, kGpsRadius, 100000, 0},
  };
  for (const Case& c : cases) {
    const Channels channels = channels_of({c.record});
    // One record at 40 ms: a value per step up to there, all alike.
    ASSERT_EQ(channels.times, (std::vector<u64>{0, 10000, 20000, 30000, 40000})) << c.name;
    for (const float value : channels[c.channel]) EXPECT_NEAR(value, c.expected, c.tolerance) << c.name;
  }
}

TEST(GpsChannels, HaveNoHeadingAtStandstillAndNoDynamicsWhenSlow) {
  const Channels standing = channels_of({at_the_origin(0, 0, 0), at_the_origin(100, 0, 0)});
  ASSERT_EQ(standing.times.size(), 11u);
  for (const float heading : standing[kGpsHeading]) EXPECT_TRUE(std::isnan(heading));
  EXPECT_EQ(standing.list[kGpsHeading].smallest, 0.0F);
  EXPECT_EQ(standing.list[kGpsHeading].largest, 0.0F);
  for (const GpsChannel channel : {kGpsLatAcc, kGpsLonAcc, kGpsGyro}) {
    EXPECT_EQ(standing[channel][5], 0.0F) << channel;
  }
  // 2 m/s is not above 2 m/s; a product of 1 is not above 1.
  const Channels slow = channels_of({at_the_origin(0, 200, 0), at_the_origin(100, 0, 200)});
  EXPECT_EQ(slow[kGpsLatAcc][0], 0.0F);
  EXPECT_LT(slow[kGpsGyro][0], -800.0F);
  const Channels slower = channels_of({at_the_origin(0, 100, 0), at_the_origin(100, 0, 100)});
  EXPECT_EQ(slower[kGpsGyro][0], 0.0F);
  EXPECT_EQ(slower[kGpsRadius][0], 100000.0F);
}

TEST(GpsChannels, UseTheReferenceGivenBeforeTheyAreBuilt) {
  CGPSSamplesLibXml2 trace = trace_of({gps_record({.time_ms = 40})});
  const Ecef position = test::gps_position(45.0, 12.0, 0.0);
  // East of the axes two degrees further on: (N + h) cos phi sin(-2 degrees).
  trace.SetReference({position.x, position.y, position.z, 45.0, 12.0, 0.0});
  Channels channels;
  trace.GetChannels(kStep, 0, 1, channels.list, channels.times);
  const double east = (6388838.290 + 250.0) * std::sqrt(0.5) * std::sin(test::gps_radians(-2.0));
  EXPECT_NEAR(channels[kGpsEast][0], east, 0.05);
  EXPECT_NEAR(trace.GetMean().x, 4449132.61, 1e-6);
  EXPECT_NEAR(trace.geodetic_mean().latitude_deg, 45.0, 1e-6);

  trace.SetReference({position.x, position.y, position.z, 45.0, 10.0, 0.0});
  trace.GetChannels(kStep, 0, 1, channels.list, channels.times);
  EXPECT_NEAR(channels[kGpsEast][0], east, 0.05);
}

// --- The grid ------------------------------------------------------------------------------------------------------

struct GridCase {
  const char* name;
  std::vector<u32> record_times_ms;
  u64 step, start, end;
  std::vector<u64> times;
  std::vector<float> speeds;  // record i drives at 10 i m/s
};

TEST(GpsChannels, StandOnTheGridOfTheirRecords) {
  const GridCase cases[] = {
      {"up to the last record", {0, 20, 40}, kStep, 0, 1, {0, 10000, 20000, 30000, 40000}, {0, 5, 10, 15, 20}},
      {"the first record holds before its time",
       {20, 40},
       kStep,
       0,
       1,
       {0, 10000, 20000, 30000, 40000},
       {0, 0, 0, 5, 10}},
      {"a start between records", {0, 20, 40}, kStep, 35000, 1, {35000}, {17.5F}},
      {"a start behind the last record", {0, 20, 40}, kStep, 40001, 1000000, {}, {}},
      {"the last values go on to the end",
       {0, 20},
       kStep,
       0,
       55000,
       {0, 10000, 20000, 55000, 55000},
       {0, 5, 10, 10, 10}},
      {"an end within the records cuts nothing", {0, 20, 40}, 20000, 0, 20000, {0, 20000, 40000}, {0, 10, 20}},
      {"a hole is bridged", {0, 1000}, 250000, 0, 1, {0, 250000, 500000, 750000, 1000000}, {0, 2.5F, 5, 7.5F, 10}},
      // 2.050 s is a little less than that in microseconds, so that the point on it has no record.
      {"a row time is cut", {0, 2050}, 1025000, 0, 1, {0, 1025000}, {0, 5.0000024F}},
      {"a step of more than the trace", {0, 20}, ~u64{0}, 0, 1, {0}, {0}},
  };
  for (const GridCase& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<SGpsRecord> records;
    for (std::size_t i = 0; i < c.record_times_ms.size(); ++i) {
      records.push_back(at_the_origin(c.record_times_ms[i], 1000 * static_cast<i32>(i), 0));
    }
    const Channels channels = channels_of(records, c.step, c.start, c.end);
    EXPECT_EQ(channels.times, c.times);
    for (const SGpsChannelOut& channel : channels.list)
      ASSERT_EQ(channel.values.size(), c.times.size()) << channel.name;
    for (std::size_t i = 0; i < c.speeds.size(); ++i) EXPECT_FLOAT_EQ(channels[kGpsSpeed][i], c.speeds[i]) << i;
  }
}

TEST(GpsChannels, CountSatellitesWithoutInterpolation) {
  std::vector<SGpsRecord> records = {gps_record({.time_ms = 0, .satellites = 4}),
                                     gps_record({.time_ms = 30, .satellites = 10})};
  // The last point, on the second record, still shows the row before it.
  EXPECT_EQ(channels_of(records)[kGpsNsat], (std::vector<float>{4, 4, 4, 4}));
}

TEST(GpsChannels, LeaveAListOfAnotherLengthAloneAndOverwriteTheirOwn) {
  CGPSSamplesLibXml2 trace = trace_of({gps_record({.time_ms = 20})});
  Channels channels;
  channels.list.resize(14);
  channels.times = {7};
  trace.GetChannels(kStep, 0, 1, channels.list, channels.times);
  EXPECT_EQ(channels.list.size(), 14u);
  EXPECT_EQ(channels.list[0].name, "");
  EXPECT_EQ(channels.times, std::vector<u64>{7});

  channels.list.clear();
  trace.GetChannels(kStep, 0, 1, channels.list, channels.times);
  trace.GetChannels(kStep, 0, 1, channels.list, channels.times);
  EXPECT_EQ(channels.times.size(), 3u);
  EXPECT_EQ(channels[kGpsSpeed].size(), 3u);
  EXPECT_EQ(channels.list[kGpsNsat].unit, "#");
  EXPECT_EQ(channels.list[kGpsNsat].flags, 512u);

  // Names and no values where there is no good record.
  CGPSSamplesLibXml2 bad = trace_of({gps_record({.time_ms = 20, .fix = 0})});
  bad.GetChannels(kStep, 0, 1000000, channels.list, channels.times);
  EXPECT_EQ(channels.list[kGpsNorth].name, "GPS North");
  EXPECT_TRUE(channels.times.empty());
  EXPECT_TRUE(channels[kGpsNorth].empty());
}

}  // namespace
}  // namespace traguardo
