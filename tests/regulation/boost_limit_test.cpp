// The boost limit: its parts by hand, the whole of it against a plain model on random signals, and its report.
#include "regulation/boost_limit.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <tuple>
#include <utility>

#include "helpers/table_sums.h"
#include "regulation/boost_filter.h"
#include "regulation/calculator.h"
#include "regulation/fake_session.h"

namespace traguardo {
namespace {

using test::FakeSession;
using test::TempFolder;

// Hash of the taps and their sum, both worked out from their source.
TEST(BoostFilter, Taps) {
  EXPECT_EQ(table_sums(boost_filter_taps(), [](TableDigest& d, float tap) { d.real(tap); }),
            (TableSums{50, 0, 0x1b8ccfa19a5aacf2}));
  double sum = 0.0;
  for (const float tap : boost_filter_taps()) sum += tap;
  EXPECT_NEAR(sum, 0.999999994957, 1e-8);
}

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

TEST(BoostScalers, ThreeKinds) {
  const struct {
    int kind;
    float pressure_bar;
    float scaled;
    const char* name;
  } kCases[] = {{0, 1.0F, 1990.0F, "subtract"}, {1, 0.505F, 1000.0F, "percent"}, {2, 0.5F, 1000.0F, "percent 2"}};
  for (const auto& row : kCases) {
    const auto scaler = make_scaler(row.kind, row.pressure_bar);
    EXPECT_EQ(scaler->Scale(2000.0F), row.scaled) << row.kind;
    EXPECT_STREQ(scaler->Name(), row.name);
  }
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

// In the order of the session's output channels, which begin at kFirstOutput.
struct Outputs {
  std::vector<float> flag, limit, value, integral, low, high;

  auto all() const { return std::array{flag, limit, value, integral, low, high}; }
};
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

struct Model {
  bool fir = false;
  int scaling = 0;
  bool second_sensor = false;
  BoostTriggers triggers;
};

float between(const std::vector<float>& samples, int period_ms, int time_ms) {
  if (samples.size() < 2) return 0.0F;
  const int last = static_cast<int>(samples.size()) - 1;
  const float from = samples[static_cast<std::size_t>(std::min(time_ms / period_ms, last))];
  const float to = samples[static_cast<std::size_t>(std::min(time_ms / period_ms + 1, last))];
  return from + (to - from) * static_cast<float>(time_ms % period_ms) / static_cast<float>(period_ms);
}

float limit_of(float rpm, const Model& model) {
  constexpr float kPressureBar = 0.95F;
  const float pressure_mbar = kPressureBar * 1000.0F;
  const float x[] = {3000.0F, 5000.0F, 8000.0F};
  const float y[] = {1.8F * 1000.0F, 2.2F * 1000.0F, 2.6F * 1000.0F};
  float limit = 0.0F;
  if (rpm < x[0]) {
    limit = y[0];
  } else if (rpm < x[1]) {
    limit = y[0] + (y[1] - y[0]) * (rpm - x[0]) / (x[1] - x[0]);
  } else if (rpm < x[2]) {
    limit = y[1] + (y[2] - y[1]) * (rpm - x[1]) / (x[2] - x[1]);
  }
  if (model.scaling == 1) return pressure_mbar / 1010.0F * limit;
  if (model.scaling == 2) return limit * kPressureBar;
  return limit - (1010.0F - pressure_mbar);
}

std::vector<float> model_boost(FakeSession& session, const SessionRun& run, const Model& model) {
  const std::size_t n = run.duration_ms / 20;
  std::vector<float> s(n);
  for (std::size_t i = 0; i < n; ++i) {
    const int t = static_cast<int>(run.start_ms + i * 20);
    const float a = between(session.samples(1), 20, t);
    s[i] = (model.second_sensor ? (a + between(session.samples(2), 50, t)) / 2.0F : a) * 1000.0F;
  }
  std::vector<float> out1(n);
  out1[0] = s[0];
  for (std::size_t i = 1; i < n; ++i) out1[i] = s[i - 1] + 0.1F * (s[i] - s[i - 1]);
  std::vector<float> out2 = out1;
  for (std::size_t i = model.fir ? 50U : 0U; i < n; ++i) {
    float sum = 0.0F;
    if (model.fir) {
      for (std::size_t k = 0; k < 50; ++k) sum += boost_filter_taps()[k] * out1[i - 50 + k];
      out2[i] = sum;
    } else {
      const std::size_t count = std::min<std::size_t>(i + 1, 50);
      for (std::size_t k = i + 1 - count; k <= i; ++k) sum += out1[k];
      out2[i] = sum / static_cast<float>(count);
    }
  }
  const std::size_t delay = model.fir ? 23U : 24U;
  std::vector<float> moved(n, out2.back());
  for (std::size_t i = 0; i + delay < n; ++i) moved[i] = out2[i + delay];
  return moved;
}

// Both runs, sample by sample, in the words of the rules.
Outputs model_of(FakeSession& session, const Model& model) {
  const std::vector<float> zeros(6000, 0.0F);
  Outputs out{zeros, zeros, zeros, zeros, zeros, zeros};
  for (const SessionRun& run : session.run_list) {
    const std::vector<float> boost = model_boost(session, run, model);
    float integral = 0.0F;
    float decayed = 0.0F;
    float low = 0.0F;
    float high = 0.0F;
    float flag_before = 0.0F;
    int engine_off_ms = 0;
    for (std::size_t j = 0; j < run.duration_ms / 10; ++j) {
      const int since_start = static_cast<int>(j) * 10;
      const int t = static_cast<int>(run.start_ms) + since_start;
      const float b = between(boost, 20, since_start);
      const float rpm = between(session.samples(0), 10, t);
      const float throttle = between(session.samples(3), 10, t);
      const float limit = limit_of(rpm, model);
      float excess = b - limit;
      const bool below = excess < 0.0F;
      if (below) excess = 0.0F;
      engine_off_ms = rpm < 500.0F ? engine_off_ms + 10 : 0;
      float new_integral = 10.0F * excess / 1000.0F + integral;
      if (rpm < 2000.0F || throttle < 25.0F) new_integral = 0.0F;
      float d = new_integral - integral + decayed;
      if (below && new_integral > 0.0F) d = decayed - model.triggers.decay / 100.0F;
      if (d < 0.0F) d = 0.0F;
      if (d >= model.triggers.trigger_low && model.triggers.trigger_low > decayed) low += 1.0F;
      if (engine_off_ms >= 30000) low = 0.0F;
      float flag = low >= model.triggers.counter_low ? 1.0F : 0.0F;
      if (d > model.triggers.trigger_high && model.triggers.trigger_high > decayed) {
        high += 1.0F;
        flag = 1.0F;
      }
      if (flag_before != 0.0F) flag = 1.0F;
      const std::size_t at = run.start_ms / 10 + j;
      out.limit[at] = limit;
      out.value[at] = b;
      out.integral[at] = new_integral;
      out.low[at] = low;
      out.high[at] = high;
      out.flag[at] = flag;
      integral = new_integral;
      decayed = d;
      flag_before = flag;
    }
  }
  return out;
}

TEST_F(BoostLimitSession, AgreesWithAPlainModelOnRandomSignals) {
  const std::string common =
      "BarometricPressure=0.95\nRPM=RPM\nThrottle=none\nThrottle=TPS\nPboost=Boost A\nMaxPboost=limits.txt\n"
      "Pboost_mul_to_mbar=1000\n";
  const struct {
    std::string more;
    Model model;
  } kCases[] = {
      {"filtering=zep_fir_50\nPboost2nd=Boost B\n", {true, 0, true, {}}},
      {"pct_scaling=1\n", {false, 1, false, {}}},
      {"PCT_SCALING=2\nPboost2nd=Boost B\ncounter_low=2\ntrigger_low=60\ntrigger_high=400\ndecay_applied=20\n",
       {false, 2, true, {2.0F, 60.0F, 400.0F, 20.0F}}},
      // Values that fail their tests leave the defaults.
      {"counter_low=0.5\ntrigger_low=5\ntrigger_high=nan\ndecay_applied=-1\npboost_mul_to_mbar=0\n",
       {false, 0, false, {}}},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.more);
    for (std::size_t i = 0; i < 6; ++i) session_.samples(kFirstOutput + i).assign(6000, 0.0F);
    temp_.write("FIA.txt", common + row.more);
    ASSERT_TRUE(compute());
    const Outputs expected = model_of(session_, row.model);
    for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(session_.samples(kFirstOutput + i), expected.all()[i]) << i;
    // The signals are such that everything happens, and every run begins without a flag.
    EXPECT_GT(expected.low[2999], 1.0F);
    EXPECT_GT(expected.high[2999], 1.0F);
    EXPECT_EQ(expected.flag[2999], 1.0F);
    EXPECT_EQ(session_.samples(4)[3001], 0.0F);
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

TEST_F(BoostLimitSession, TheFirstChannelOfTheTableWinsAndItsReportIsNotNeeded) {
  const std::string lines =
      "rpm=RPM\npboost=Boost B\npboost=Boost A\nthrottle=TPS\nbarometricpressure=0.95\n"
      "pboost_mul_to_mbar=1000\nmaxpboost=limits.txt\n";
  temp_.write("FIA.txt", "{\nracer=Anna Rossi\n" + lines + "}\n");
  std::filesystem::create_directory(temp_.path() / "FIA_comp_output.txt");
  ASSERT_TRUE(compute());
  const Outputs expected = model_of(session_, Model{});
  EXPECT_EQ(session_.samples(kFirstOutput), expected.flag);
  EXPECT_EQ(session_.samples(kFirstOutput + 2), expected.value);
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

TEST_F(BoostLimitSession, TakesConfigurationFilesOfAnyBytes) {
  std::mt19937 random(7);
  const char* const pieces[] = {"{",
                                "}\r",
                                "racer=Anna Rossi",
                                "rpm=RPM",
                                "pboost=Boost A",
                                "throttle=TPS",
                                "maxpboost=",
                                "limits.txt",
                                "trigger_low=1e999",
                                "barometricpressure=1",
                                "counter_low=-",
                                "frq=1",
                                "ch=RPM",
                                "id=70012",
                                ""};
  for (int round = 0; round < 300; ++round) {
    std::string text;
    for (int piece = 0; piece < 30; ++piece) {
      text += pieces[random() % std::size(pieces)];
      text += random() % 4 == 0 ? static_cast<char>(random() & 0xFF) : '\n';
    }
    temp_.write("FIA.txt", text);
    compute();
  }
  temp_.write("FIA.txt", "pboost=" + std::string(10000000, 'x'));
  EXPECT_FALSE(compute());
}

}  // namespace
}  // namespace traguardo
