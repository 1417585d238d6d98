// SPDX-License-Identifier: MIT
// The boost limit: its parts by hand, the whole of it on even signals, and its report.
#include "regulation/boost_limit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <utility>

#include "regulation/boost_filter.h"
#include "regulation/calculator.h"
#include "regulation/fake_session.h"

namespace traguardo {
namespace {

using test::FakeSession;
using test::TempFolder;

TEST(BoostFilter, FirstStageTakesATenthOfAStep) {
  EXPECT_EQ(eased_boost(std::vector<float>{100, 200, 200, 100}), (std::vector<float>{100, 110, 200, 190}));
  EXPECT_TRUE(eased_boost({}).empty());
}

TEST(BoostFilter, SecondStageByLength) {
  std::vector<float> ramp(60);
  for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = static_cast<float>(i);

  // Below 25 samples nothing moves: the mean of 0..i is i / 2.
  const std::vector<float> short_mean = averaged_boost(std::span(ramp).first(24));
  for (std::size_t i = 0; i < short_mean.size(); ++i) EXPECT_EQ(short_mean[i], static_cast<float>(i) / 2.0F);

  // From 25 on the array moves by 24; from sample 49 on the window is full, so that the mean lags by 24.5.
  EXPECT_EQ(averaged_boost(std::span(ramp).first(25)), std::vector<float>(25, 12.0F));
  const std::vector<float> mean = averaged_boost(ramp);
  for (std::size_t i = 25; i < 36; ++i) EXPECT_EQ(mean[i], static_cast<float>(i + 24) - 24.5F) << i;
  for (std::size_t i = 36; i < 60; ++i) EXPECT_EQ(mean[i], 59.0F - 24.5F) << i;

  // The 50-tap filter leaves 49 samples as they are.
  const std::vector<float> first_49(ramp.begin(), ramp.begin() + 49);
  EXPECT_EQ(fir_filtered_boost(first_49), first_49);
  // With 50 it copies and moves.
  const std::vector<float> fifty = fir_filtered_boost(std::span(ramp).first(50));
  EXPECT_EQ(fifty.front(), 23.0F);
  EXPECT_EQ(fifty[26], 49.0F);
  EXPECT_EQ(fifty.back(), 49.0F);
  // An impulse comes out as the taps, newest first: its last tap meets it one sample later.
  std::vector<float> impulse(200, 0.0F);
  impulse[100] = 1.0F;
  const std::vector<float> answer = fir_filtered_boost(impulse);
  for (std::size_t k = 0; k < 50; ++k) EXPECT_EQ(answer[101 - 23 + k], boost_filter_taps()[49 - k]) << k;
  EXPECT_EQ(answer[100 - 23], 0.0F);
  EXPECT_EQ(answer[151 - 23], 0.0F);
}

TEST(BoostLimit, LimitOverEngineSpeed) {
  const std::vector<float> speeds = {2000, 4000, 3000, 8000};
  const std::vector<float> limits = {1000, 2000, 1600, 2600};
  const CPBoostLimit curve(speeds, limits);
  // At 4000 a point that falls back is passed over until the curve rises above the engine speed.
  const std::pair<float, float> kCases[] = {{-1, 1000},   {1999, 1000}, {2000, 1000}, {3000, 1500}, {3999, 1999.5F},
                                            {4000, 1800}, {5500, 2100}, {8000, 0},    {9000, 0},    {std::nanf(""), 0}};
  for (const auto& [rpm, limit] : kCases) EXPECT_EQ(curve.limit_at(rpm), limit) << rpm;
}

TEST(BoostFlagRun, CountersByHand) {
  // 100 Hz; an excess of 1000 mbar adds 10 per sample, and below the limit the decayed integral loses 0.05.
  struct Step {
    float boost;
    float rpm;
    float throttle;
    float integral;
    u32 low;
    u32 high;
    bool flag;
  };
  const std::vector<Step> kSteps = {
      {3000, 5000, 80, 10, 0, 0, false}, {3000, 5000, 80, 20, 0, 0, false},
      {3000, 5000, 80, 30, 1, 0, false},  // reaching the trigger is a crossing
      {3000, 5000, 80, 40, 1, 0, false},  // staying above it is none
      {1000, 5000, 80, 40, 1, 0, false},  // decayed: 39.95
      {3000, 5000, 24, 0, 1, 0, false},   // no throttle: 0 - 40 + 39.95, held at 0
      {3000, 1999, 80, 0, 1, 0, false},  {3000, 2000, 25, 10, 1, 0, false},
      {5000, 5000, 80, 40, 2, 0, false}, {12000, 5000, 80, 140, 2, 1, true},  // across the high trigger
      {1000, 5000, 24, 0, 2, 1, true},                                        // raised, it stays
  };
  BoostFlagRun run(BoostTriggers{}, 10, 100);
  for (std::size_t i = 0; i < kSteps.size(); ++i) {
    const Step& step = kSteps[i];
    const BoostFlagRun::Sample sample = run.step(step.boost, 2000.0F, step.rpm, step.throttle);
    EXPECT_EQ(sample.integral, step.integral) << i;
    EXPECT_EQ(std::tuple(sample.low_counter, sample.high_counter, sample.flag),
              std::tuple(step.low, step.high, step.flag))
        << i;
  }
}

TEST(BoostFlagRun, FiveCrossingsRaiseTheFlagAndAStoppedEngineForgetsThem) {
  BoostFlagRun run(BoostTriggers{}, 1000, 1);
  // Without throttle the integral is 0; then an excess of 50 mbar over a second lifts it to 50.
  const auto cross = [&] {
    run.step(0.0F, 2000.0F, 5000.0F, 0.0F);
    return run.step(2050.0F, 2000.0F, 5000.0F, 80.0F);
  };
  const auto stand_still = [&](float rpm, int seconds) {
    BoostFlagRun::Sample sample;
    for (int second = 0; second < seconds; ++second) sample = run.step(0.0F, 2000.0F, rpm, 0.0F);
    return sample;
  };
  for (u32 i = 1; i <= 4; ++i) {
    const BoostFlagRun::Sample sample = cross();
    EXPECT_EQ(sample.low_counter, i);
    EXPECT_FALSE(sample.flag);
  }
  EXPECT_EQ(stand_still(499.0F, 29).low_counter, 4U);
  EXPECT_EQ(stand_still(500.0F, 1).low_counter, 4U);
  EXPECT_EQ(stand_still(499.0F, 29).low_counter, 4U);
  EXPECT_EQ(stand_still(499.0F, 1).low_counter, 0U);
  for (int i = 0; i < 4; ++i) EXPECT_FALSE(cross().flag);
  EXPECT_TRUE(cross().flag);
  // The high counter is kept.
  run = BoostFlagRun(BoostTriggers{}, 1000, 1);
  EXPECT_EQ(run.step(2200.0F, 2000.0F, 5000.0F, 80.0F).high_counter, 1U);
  const BoostFlagRun::Sample stopped = stand_still(0.0F, 31);
  EXPECT_EQ(std::tuple(stopped.low_counter, stopped.high_counter, stopped.flag), std::tuple(0U, 1U, true));
}

// --- The whole calculator

// Flag, limit, value, integral, low and high counter.
constexpr std::size_t kFirstOutput = 4;

// A session of a minute with two runs, the second one off the grid of the outputs.
class BoostLimitSession : public ::testing::Test {
 protected:
  BoostLimitSession() {
    session_.folder = test::folder_of(temp_);
    std::mt19937 random(1);
    session_.add("RPM", 10, test::wandering(&random, 6000, 1500.0F, 8500.0F, 50));
    session_.add("Boost A", 20, test::wandering(&random, 3000, 1.6F, 2.6F, 25));
    session_.add("Boost B", 50, test::wandering(&random, 1200, 1.6F, 2.6F, 10));
    session_.add("TPS", 10, test::wandering(&random, 6000, 10.0F, 100.0F, 70));
    for (const char* name : {"FlagFIA", "LimitFIA", "ValFIA", "IntegFIA", "Ctr30FIA", "Ctr100FIA"}) {
      session_.add(name, 10, std::vector<float>(6000, 0.0F));
    }
    session_.run_list = {{1, 0, 30000}, {2, 30013, 29000}};
    temp_.write("limits.txt", std::string("rpm=bar\n3000=1.8\n0=5\n5000=2.2\n6000\n8000=2.6\n7000=-1\n"));
  }

  bool compute() {
    RegulationCalculator calculator(&session_, CalculationOptions{}, kCalibrationOff, L"");
    return calculator.compute_boost_limit({4, 5, 6, 7, 8, 9});
  }
  bool outputs_are_zero() {
    for (std::size_t i = kFirstOutput; i < kFirstOutput + 6; ++i) {
      if (session_.samples(i) != std::vector<float>(6000, 0.0F)) return false;
    }
    return true;
  }
  // One run and its report.
  std::string report(const std::string& configuration, bool good) {
    session_.run_list = {{1, 0, 30000}};
    temp_.write("FIA.txt", configuration);
    temp_.write("FIA_comp_output.txt", std::string("an earlier report\n"));
    EXPECT_EQ(compute(), good);
    const bool stays_zero = configuration.find("output=1") != std::string::npos || !good;
    EXPECT_TRUE(!stays_zero || outputs_are_zero());
    return test::report_of(temp_, "FIA_comp_output.txt");
  }
  std::wstring limits_path() const { return platform::path_in_folder(session_.folder, L"limits.txt"); }

  TempFolder temp_;
  FakeSession session_;
};

TEST_F(BoostLimitSession, FillsEachOutputByItsConfiguration) {
  session_.samples(0).assign(6000, 5000.0F);
  session_.samples(1).assign(3000, 2.4F);
  session_.samples(2).assign(1200, 2.6F);
  session_.samples(3).assign(6000, 80.0F);
  const std::string common =
      "BarometricPressure=0.95\nRPM=RPM\nThrottle=none\nThrottle=TPS\nPboost=Boost A\nMaxPboost=limits.txt\n"
      "Pboost_mul_to_mbar=1000\n";
  // What else is configured; limit and value; sample of the first run at which each counter counts for the first time.
  // The limit is 2200 mbar at 5000 rpm; an excess of 100 mbar adds 1 a sample.
  struct Case {
    std::string more;
    float limit;
    float value;
    std::size_t low_at;
    std::size_t high_at;
  };
  const Case cases[] = {
      {"", 2140.0F, 2400.0F, 11, 38},  // 2200 - (1010 - 950)
      {"filtering=zep_fir_50\nPboost2nd=Boost B\n", 2140.0F, 2500.0F, 8, 27},
      {"pct_scaling=1\ntrigger_low=10\n", 2200.0F * 950.0F / 1010.0F, 2400.0F, 3, 30},
      {"PCT_SCALING=2\ntrigger_low=60\ntrigger_high=400\n", 2090.0F, 2400.0F, 19, 129},
      // Values that fail their tests leave the defaults.
      {"counter_low=0.5\ntrigger_low=5\ntrigger_high=nan\ndecay_applied=-1\npboost_mul_to_mbar=0\n", 2140.0F, 2400.0F,
       11, 38},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.more);
    for (std::size_t i = 0; i < 6; ++i) session_.samples(kFirstOutput + i).assign(6000, 0.0F);
    temp_.write("FIA.txt", common + row.more);
    ASSERT_TRUE(compute());
    const auto at = [&](std::size_t output, std::size_t sample) {
      return session_.samples(kFirstOutput + output)[sample];
    };
    for (const std::size_t run : {0U, 3001U}) {
      EXPECT_NEAR(at(1, run + 500), row.limit, 0.01);
      EXPECT_NEAR(at(2, run + 500), row.value, 0.01);
      EXPECT_NEAR(at(3, run + 9), (row.value - row.limit) / 10.0F, 0.1) << "every run begins with nothing";
      EXPECT_EQ(std::pair(at(4, run + row.low_at - 1), at(4, run + row.low_at)), std::pair(0.0F, 1.0F));
      EXPECT_EQ(std::pair(at(5, run + row.high_at - 1), at(5, run + row.high_at)), std::pair(0.0F, 1.0F));
      EXPECT_EQ(std::pair(at(0, run + row.high_at - 1), at(0, run + row.high_at)), std::pair(0.0F, 1.0F));
    }
    EXPECT_EQ(at(1, 3000), 0.0F) << "between the runs";
    EXPECT_EQ(test::report_of(temp_, "FIA_comp_output.txt"), test::expected_file("boost_computed.txt"));
  }
}

TEST_F(BoostLimitSession, WritesEveryReport) {
  const std::string channels = "rpm=RPM\npboost=Boost A\nthrottle=TPS\n";
  EXPECT_EQ(report("{\nracer=Bea\n" + channels + "}\n", true), test::expected_file("boost_no_vehicle.txt"));
  EXPECT_TRUE(outputs_are_zero());
  EXPECT_EQ(report("rpm=rpm\npboost=\nbarometricpressure=\n", false), test::expected_file("boost_missing_inputs.txt"));
  EXPECT_EQ(report(channels + "barometricpressure=1\n", true), test::expected_file("boost_disabled.txt"));
  for (const char* pressure : {"-0.1", "nan"}) {
    EXPECT_EQ(report(channels + "maxpboost=limits.txt\nbarometricpressure=" + pressure, false),
              test::expected_file("boost_bad_pressure.txt"));
  }
  const std::string with_limits = channels + "barometricpressure=1\nmaxpboost=limits.txt\n";
  temp_.write("limits.txt", std::string("3000=2\n4000=\n=3\n5000=-1\nnan=1\n"));
  EXPECT_EQ(report(with_limits, false), test::expected_file("boost_bad_limit_file.txt", limits_path()));
  temp_.write("limits.txt", std::string());
  EXPECT_EQ(report(with_limits, false), test::expected_file("boost_no_limit_file.txt", limits_path()));
  std::filesystem::remove(temp_.path() / "limits.txt");
  EXPECT_EQ(report(with_limits, false), test::expected_file("boost_no_limit_file.txt", limits_path()));
  // Asked for step values, the calculator stays silent.
  temp_.write("limits.txt", std::string("3000=2\n4000=2\n"));
  EXPECT_EQ(report(with_limits + "output=1\n", true), "");
}

TEST_F(BoostLimitSession, WithoutItsFileNothingHappens) {
  temp_.write("FIA_comp_output.txt", std::string("kept\n"));
  EXPECT_FALSE(compute());
  EXPECT_EQ(temp_.read("FIA_comp_output.txt"), "kept\n");
  EXPECT_TRUE(outputs_are_zero());
}

TEST_F(BoostLimitSession, BoundsWhatRunsAndRatesClaim) {
  temp_.write("FIA.txt", std::string("rpm=RPM\npboost=Boost A\nthrottle=TPS\nbarometricpressure=1\n"
                                     "pboost_mul_to_mbar=1e999\ntrigger_low=1e999\nmaxpboost=limits.txt\n"));
  session_.run_list = {{1, 0, 4294967295U}, {2, 4294967295U, 4294967295U}, {3, 59990, 4294967295U}};
  EXPECT_TRUE(compute());
  // Channels without rate or samples, and missing outputs.
  session_.channels[1].period_ms = 0;
  session_.samples(3).clear();
  EXPECT_TRUE(compute());
  session_.channels[4].period_ms = 0;
  EXPECT_TRUE(compute());
  RegulationCalculator calculator(&session_, CalculationOptions{}, kCalibrationOff, L"");
  EXPECT_TRUE(calculator.compute_boost_limit(BoostOutputs{}));
}

}  // namespace
}  // namespace traguardo
