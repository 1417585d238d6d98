// SPDX-License-Identifier: MIT
// Distance over time from a speed, against sums in double; lap rows; which speed it is made of.
#include "legacy/derived/distance_table.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "opened_session.h"

namespace traguardo::test {
namespace {

// Two user units of speed to the metre per second, two user units of length to the metre.
SpeedTrace trace_of(const std::vector<float>& speeds, u32 frequency_hz) {
  SpeedTrace trace;
  trace.speeds = speeds;
  trace.period_ms = frequency_hz == 0 ? 32000 : 1000 / frequency_hz;
  trace.frequency_hz = frequency_hz;
  trace.metres_per_second = 0.5F;
  trace.units_per_metre = 2.0F;
  return trace;
}

std::vector<float> random_speeds(std::size_t count) {
  std::mt19937 random(66);
  std::vector<float> speeds(count);
  for (float& speed : speeds) speed = static_cast<float>(10 + random() % 90);
  return speeds;
}

TEST(DistanceTable, SumsUpTheSpeedAtEveryRate) {
  for (const u32 frequency_hz : {4U, 10U, 50U, 1000U}) {
    SCOPED_TRACE(frequency_hz);
    const u32 period_ms = 1000 / frequency_hz;
    // 40 seconds and a little: the last samples fill no entry.
    const std::vector<float> speeds = random_speeds(40 * frequency_hz + 1);
    const std::vector<float> table = make_distance_table(trace_of(speeds, frequency_hz));
    const std::size_t entries = speeds.size() * period_ms / 100;
    ASSERT_EQ(table.size(), entries + 2);
    // Slower than the table, each entry takes one sample; else all samples of a tenth of a second count. A user unit of
    // distance is that of speed for a second.
    const u32 step_ms = frequency_hz < 10 ? 100 : period_ms;
    double distance = 0.0;
    for (u32 time_ms = 0; time_ms + step_ms <= entries * 100; time_ms += step_ms) {
      distance += static_cast<double>(speeds[time_ms / period_ms]) * step_ms / 1000.0;
      const u32 end_ms = time_ms + step_ms;
      if (end_ms % 100 == 0) {
        ASSERT_NEAR(table[end_ms / 100], distance, 1e-4 * distance) << end_ms;
      }
    }
    // The entry behind the last: on in a straight line, or hardly further at all.
    const float last_step = table[entries] - table[entries - 1];
    EXPECT_NEAR(table[entries + 1] - table[entries], frequency_hz < 10 ? 0.001F : last_step, 0.01F);
  }
}

TEST(DistanceTable, AStandingVehicleCreeps) {
  // Ten seconds of nothing, then enough to make a table of it.
  for (const u32 frequency_hz : {5U, 100U}) {
    std::vector<float> speeds(10 * frequency_hz, 0.0F);
    speeds.front() = -3.0F;
    speeds.resize(20 * frequency_hz, 100.0F);
    SpeedTrace trace = trace_of(speeds, frequency_hz);
    // 0.001 m/s over ten seconds.
    EXPECT_NEAR(make_distance_table(trace)[100], 2 * 0.01, 1e-5) << frequency_hz;
    trace.from_receiver_logger = true;
    const double creep = frequency_hz < 10 ? 1e-6 : 0.001;
    EXPECT_NEAR(make_distance_table(trace)[100], 2 * creep * 10, 1e-2 * creep) << frequency_hz;
  }
}

TEST(DistanceTable, AReceiversSpeedCountsOnceASecond) {
  // 5 Hz over 20 s: the samples of whole seconds say 40, those between are old.
  std::vector<float> speeds(100, 1000.0F);
  for (std::size_t i = 0; i < speeds.size(); i += 5) speeds[i] = 40.0F;
  speeds[5] = 0.0F;
  SpeedTrace trace = trace_of(speeds, 5);
  trace.from_receiver_logger = true;
  trace.is_receiver_speed = true;
  const std::vector<float> table = make_distance_table(trace);
  ASSERT_EQ(table.size(), 202U);
  // 20 m/s; entries in metres, and only what is left of the table in the user's unit.
  const std::pair<std::size_t, double> entries[] = {{10, 20}, {20, 20}, {25, 30}, {200, 380}, {201, 760}};
  for (const auto& [at, metres] : entries) EXPECT_NEAR(table[at], metres, 2e-5 * metres) << at;
}

TEST(DistanceTable, NoTableOfTooLittle) {
  // One user unit of distance per user unit of speed and second.
  EXPECT_TRUE(make_distance_table(trace_of(std::vector<float>(20, 49.0F), 10)).empty());
  EXPECT_FALSE(make_distance_table(trace_of(std::vector<float>(20, 51.0F), 10)).empty());
  EXPECT_TRUE(make_distance_table(trace_of({1e6F}, 10)).empty());
  EXPECT_TRUE(make_distance_table(trace_of(std::vector<float>(20, 1e6F), 0)).empty());
  // Two samples that fill no entry, and still go far.
  EXPECT_EQ(make_distance_table(trace_of({1e6F, 1e6F}, 1000)).size(), 2U);

  const DistanceTable table({0.0F, 10.0F, 30.0F, 40.0F}, {});
  const std::pair<u32, float> cases[] = {{0, 0.0F}, {50, 5.0F}, {100, 10.0F}, {175, 25.0F}, {250, 35.0F}};
  for (const auto& [time_ms, distance] : cases) EXPECT_EQ(table.at(time_ms), distance) << time_ms;
  EXPECT_EQ(table.at(0xFFFFFFFF), table.at(295));
  EXPECT_EQ(DistanceTable().at(50), 0.0F);
}

// --- In a session

constexpr u16 k10Hz = 2;
constexpr u16 kSpeedClass = 3;

// Samples of one speed over 20 seconds.
wmp::Channel speed_channel(const std::string& name, u16 speed_kmh) {
  wmp::Channel channel = plain_channel(name, std::vector<u16>(200, speed_kmh), k10Hz);
  channel.measure_class = kSpeedClass;
  return channel;
}

wmp::File file_with_speeds(std::vector<wmp::Channel> logged, i16 reference) {
  wmp::File file;
  file.logged = std::move(logged);
  file.reference = reference;
  file.laps = {wmp::Lap{5000}, wmp::Lap{15000, 1, 2}};
  return file;
}

void expect_lap_rows(WmpSession& session, double metres_per_second) {
  ASSERT_EQ(session.distances.laps().size(), 2U);
  const WmpLapRow& row = session.distances.laps()[1];
  EXPECT_EQ(std::pair(row.start_ms, row.length_ms), std::pair(5000U, 15000U));
  EXPECT_NEAR(row.distance_at_start, 5.0 * metres_per_second, 0.01);
  EXPECT_NEAR(row.distance_covered, 15.0 * metres_per_second, 0.03);
}

TEST(LapRows, FollowTheReferenceSpeed) {
  SoundSession logged(file_with_speeds({speed_channel("Wheel", 72), speed_channel("Other", 36)}, 1));
  expect_lap_rows(logged.session(), 10.0);
  EXPECT_TRUE(set_reference_speed(logged.session(), 0));
  expect_lap_rows(logged.session(), 20.0);

  wmp::File file = file_with_speeds({speed_channel("Wheel", 72)}, 1);
  file.derived = {plain_channel("Half", {}, k10Hz)};
  file.derived[0].measure_class = kSpeedClass;
  file.derived[0].formula = "Wheel / 2";
  SoundSession derived(file);
  expect_lap_rows(derived.session(), 10.0);

  SoundSession standing(file_with_speeds({speed_channel("Wheel", 0)}, 0));
  EXPECT_TRUE(standing.session().distances.entries().empty());
  expect_lap_rows(standing.session(), 0.0);
}

TEST(ReferenceSpeed, IsSearchedAmongTheSpeedsThatMove) {
  // m moves, s stands still, g is the receiver's, n never may be the reference, x is no speed. The first is it before.
  const std::tuple<std::string, bool, char, i16> cases[] = {
      {"mm", true, 'Y', 0},  {"snx", true, 'N', 0},   {"sm", false, 'd', 0}, {"smm", false, 'D', 0},
      {"smm", true, 'D', 1}, {"smmgm", true, 'G', 3}, {"nm", true, 'd', 1}};
  for (const auto& [letters, select, wanted, reference] : cases) {
    std::vector<wmp::Channel> channels;
    for (const char letter : letters) {
      channels.push_back(speed_channel(letter == 'g' ? "GPS_Speed" : "A", letter == 's' ? 1 : 36));
      if (letter == 'x') channels.back().measure_class = 1;
      if (letter == 'n') channels.back().function_id = 97;
    }
    SoundSession opened(file_with_speeds(channels, 0));
    EXPECT_EQ(find_reference_speed(opened.session(), select), wanted) << letters;
    EXPECT_EQ(opened.session().tables.header.reference_speed(), reference) << letters;
  }
}

TEST(ReferenceSpeed, PositionsAreAccurateUntilSixAreFarOff) {
  const std::pair<std::vector<u16>, bool> cases[] = {
      {{5, 5, 5, 5, 5, 4}, true},
      {{5, 5, 5, 1, 1, 1, 1, 1, 5, 5, 5}, false},
      {{5, 5, 5, 1, 1, 1, 1, 1, 1, 5, 5, 5}, true},
  };
  for (const auto& [accuracies, wanted] : cases) {
    wmp::File file;
    file.logged = {plain_channel("GPS_PosAccuracy", accuracies)};
    EXPECT_EQ(positions_are_accurate(SoundSession(file).session()), wanted) << accuracies.size();
  }
}

}  // namespace
}  // namespace traguardo::test
