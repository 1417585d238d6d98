// SPDX-License-Identifier: MIT
// Predictions against numbers worked out beforehand, and against what they are for: a run that slows down is carried on
// as it began.
#include "regulation/prediction.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <tuple>

#include "regulation/fake_session.h"

namespace traguardo {
namespace {

using test::TempFolder;

constexpr double kStepS = 0.05;
constexpr double kFeetPerMph = 1.466667;

struct MeasuredRun {
  std::vector<float> distances;
  std::vector<float> speeds;
};

// Rows one step apart, the speed by the distance and the number of the row.
MeasuredRun run_of(double first_ft, std::size_t count, const std::function<double(double, std::size_t)>& speed) {
  MeasuredRun run;
  double distance = first_ft;
  for (std::size_t i = 0; i < count; ++i) {
    const double mph = speed(distance, i);
    run.distances.push_back(static_cast<float>(distance));
    run.speeds.push_back(static_cast<float>(mph));
    distance += mph * kFeetPerMph * kStepS;
  }
  return run;
}

MeasuredRun accelerating(double first_mph, double mph_per_s, std::size_t count) {
  return run_of(50.0, count,
                [=](double, std::size_t i) { return first_mph + mph_per_s * kStepS * static_cast<double>(i); });
}

// The speed of the default table at a distance.
double reference_speed(double distance_ft) {
  const auto table = default_elapsed_times();
  for (std::size_t i = 1; i < table.size(); ++i) {
    if (static_cast<double>(table[i].distance_ft) <= distance_ft) continue;
    const double from = table[i - 1].speed_mph;
    const double part = (distance_ft - static_cast<double>(table[i - 1].distance_ft)) /
                        static_cast<double>(table[i].distance_ft - table[i - 1].distance_ft);
    return from + (static_cast<double>(table[i].speed_mph) - from) * part;
  }
  return table.back().speed_mph;
}

// When a run passes a distance, in ms from its first row.
double passes_ms(const std::vector<float>& distances, double distance_ft) {
  for (std::size_t i = 1; i < distances.size(); ++i) {
    if (static_cast<double>(distances[i]) <= distance_ft) continue;
    return 50.0 * (static_cast<double>(i - 1) + (distance_ft - static_cast<double>(distances[i - 1])) /
                                                    static_cast<double>(distances[i] - distances[i - 1]));
  }
  return -1.0;
}

class Prediction : public ::testing::Test {
 protected:
  Prediction() : prediction_(test::folder_of(temp_) + L"/") {}

  std::optional<i64> predict(const MeasuredRun& run, u32 length_ft, std::span<float> speeds = {}) {
    PredictionInput input;
    input.distances_ft = run.distances;
    input.speeds_mph = run.speeds;
    input.length_ft = length_ft;
    input.predicted_speeds_mph = speeds;
    return prediction_.predict(input);
  }
  // A table of rows that rise evenly.
  std::vector<ElapsedTimeRow> even_table(std::size_t rows) const {
    std::vector<ElapsedTimeRow> table;
    for (std::size_t i = 0; i < rows; ++i) {
      const float place = static_cast<float>(i);
      table.push_back({40.0F + 35.0F * place, 20.0F + 2.0F * place, place / static_cast<float>(rows - 1)});
    }
    return table;
  }
  TempFolder temp_;
  ElapsedTimePrediction prediction_;
};

TEST_F(Prediction, IsThatOfTheStepsInDoublePrecision) {
  // An even run; a restless one, in which the order of the smoothing passes shows; and one that beats the reference for
  // a while, which lifts the rest for good.
  const MeasuredRun even = accelerating(25.0, 2.5, 420);
  const MeasuredRun restless = run_of(
      50.0, 420, [](double, std::size_t i) { return 25.0 + 0.125 * static_cast<double>(i) + (i % 7 == 0 ? 8 : 0); });
  const MeasuredRun faster_for_a_while = run_of(52.0, 240, [](double distance, std::size_t) {
    return reference_speed(distance) + (distance > 400 && distance < 500 ? 5.0 : 0.0);
  });
  // Length, elapsed ms, and speeds at rows 60, 150 and 230, from a calculation of the same steps in double precision.
  const std::tuple<const MeasuredRun*, u32, double, std::array<double, 3>> cases[] = {
      {&even, 330, 5624.901, {32.4646, 43.6584, 53.6250}},
      {&even, 660, 10415.585, {34.2864, 43.6918, 53.6250}},
      {&even, 1320, 8146.255, {32.5000, 43.7500, 54.0092}},
      {&even, 777, 10474.554, {33.6979, 43.7015, 53.6659}},
      {&restless, 660, 10168.491, {35.7165, 44.8429, 54.7685}},
      {&faster_for_a_while, 660, 10031.405, {34.6497, 49.6663, 53.8579}},
  };
  for (const auto& [run, length, elapsed_ms, wanted] : cases) {
    SCOPED_TRACE(length);
    std::vector<float> speeds(run->speeds.size(), -1.0F);
    const std::optional<i64> elapsed = predict(*run, length, speeds);
    ASSERT_TRUE(elapsed.has_value());
    // Two times are cut to whole milliseconds.
    EXPECT_NEAR(static_cast<double>(*elapsed), elapsed_ms, 1.5);
    constexpr std::size_t kRows[] = {60, 150, 230};
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(speeds[kRows[i]], wanted[i], 0.005) << kRows[i];
  }
}

TEST_F(Prediction, CarriesARunOnAsItBegan) {
  const MeasuredRun whole =
      run_of(52.0, 300, [](double distance, std::size_t) { return 1.1 * reference_speed(distance); });
  const MeasuredRun slowed = run_of(52.0, 300, [](double distance, std::size_t) {
    return (distance < 400.0 ? 1.1 : 0.88) * reference_speed(distance);
  });
  const double expected_ms = passes_ms(whole.distances, 660.0) - passes_ms(whole.distances, 60.0);
  const double slowed_ms = passes_ms(slowed.distances, 660.0) - passes_ms(slowed.distances, 60.0);
  ASSERT_GT(slowed_ms, expected_ms + 500.0);
  for (const MeasuredRun& run : {whole, slowed}) {
    const std::optional<i64> elapsed = predict(run, 660);
    ASSERT_TRUE(elapsed.has_value());
    EXPECT_NEAR(static_cast<double>(*elapsed), expected_ms, expected_ms / 100.0);
  }
}

TEST_F(Prediction, PrefersTheTableWithoutANameAndNeedsOne) {
  const MeasuredRun run = accelerating(25.0, 2.5, 420);
  const std::optional<i64> by_default = predict(run, 660);
  ASSERT_TRUE(write_table(prediction_.folder(), L"", even_table(20)));
  EXPECT_NE(predict(run, 660), by_default);

  std::vector<float> speeds(10, -1.0F);
  ASSERT_TRUE(write_table(prediction_.folder(), L"", even_table(19)));
  EXPECT_FALSE(predict(run, 660, speeds).has_value());
  temp_.write("user/et_prediction/.etp", std::string(100000, '\xFF'));
  EXPECT_FALSE(predict(run, 660, speeds).has_value());
  std::filesystem::remove(temp_.path() / "user/et_prediction/.etp");
  std::filesystem::remove(temp_.path() / "user/et_prediction/Default.etp");
  EXPECT_FALSE(predict(run, 660, speeds).has_value());
  EXPECT_EQ(speeds, std::vector<float>(10, -1.0F));
  EXPECT_FALSE(ElapsedTimePrediction(L"").predict(PredictionInput{}).has_value());
}

TEST_F(Prediction, RunsThatDontReachTheMarksAreNotPredicted) {
  EXPECT_FALSE(predict(MeasuredRun{}, 660).has_value());
  EXPECT_FALSE(predict(MeasuredRun{{100.0F}, {30.0F}}, 660).has_value());
  // 50 to about 250 feet: the middle of the strip is out of reach.
  EXPECT_FALSE(predict(accelerating(25.0, 2.5, 80), 660).has_value());
}

TEST_F(Prediction, StoresARunAsATable) {
  // The last row stands at 655 feet, so that the table is drawn out to 666.6.
  MeasuredRun run = accelerating(25.0, 2.5, 205);
  run.distances.back() = 655.0F;
  PredictionInput input;
  input.distances_ft = run.distances;
  input.speeds_mph = run.speeds;
  ASSERT_LT(run.distances[203], 655.0F);
  ASSERT_TRUE(prediction_.store_run("Cup", "Run 7", input));
  const std::string text = temp_.read("user/et_prediction/Cup_Run 7.etp");
  EXPECT_NE(text.find("\n204\t666.600\t"), std::string::npos);
  const std::vector<ElapsedTimeRow> rows = rows_of_table(text);
  ASSERT_EQ(rows.size(), 205U);
  EXPECT_NEAR(rows[0].distance_ft, 50.0 * 666.6 / 655.0, 0.001);
  EXPECT_EQ(rows[0].speed_mph, 25.0F);
  // From the last row below 60 feet to the first one above 660.
  std::size_t start = 0;
  while (rows[start + 1].distance_ft <= 60.0F) ++start;
  std::size_t end = start;
  while (rows[end].distance_ft <= 660.0F) ++end;
  EXPECT_EQ(rows[start].fraction, 0.0F);
  EXPECT_EQ(rows[end].fraction, 1.0F);
  const std::size_t half = (start + end) / 2;
  EXPECT_NEAR(rows[half].fraction,
              (rows[half].speed_mph - rows[start].speed_mph) / (rows[end].speed_mph - rows[start].speed_mph), 0.001);
}

}  // namespace
}  // namespace traguardo
