// SPDX-License-Identifier: MIT
// The calibrated run distance of a run with an even speed, for which every factor is known.
#include "regulation/calibrated_run.h"

#include <gtest/gtest.h>

#include "regulation/calculator.h"
#include "regulation/fake_session.h"

namespace traguardo {
namespace {

using test::TempFolder;

constexpr u32 kPeriodMs = 50;
constexpr double kFeetPerMs = 40.0 * 1.466667 / 1000.0;

class CalibratedRuns : public ::testing::Test {
 protected:
  CalibratedRuns() : prediction_(test::folder_of(temp_) + L"/"), speeds_(700, 40.0F) {}

  CalibratedRun calibrate(i32 mode, const std::array<u32, 5>& times_ms) {
    RunMarks marks;
    marks.launch_ms = 1000;
    marks.times_ms = times_ms;
    return calibrate_run(speeds_, kPeriodMs, mode, marks, &prediction_);
  }

  TempFolder temp_;
  ElapsedTimePrediction prediction_;
  std::vector<float> speeds_;
};

TEST_F(CalibratedRuns, MeetEveryMarkOfEveryMode) {
  const std::array<u32, 5> kLong = {2100, 6700, 12400, 18100, 23600};
  const std::vector<float> kLongTargets = {60, 330, 660, 1000, 1320};
  const struct {
    i32 mode;
    std::array<u32, 5> times_ms;
    std::vector<float> targets;
    double predicted_ms;
  } kCases[] = {
      {0, kLong, kLongTargets, 12400},
      // The timing begins at 600 feet and is counted from the mark at 660, though: 12400 + (23600 - 11363.6).
      {1, kLong, kLongTargets, 24636.4},
      {2, kLong, kLongTargets, 6700},
      {3, {2100, 9600, 0, 0, 0}, {60, 500}, 9600},
      {4, {3550, 0, 0, 0, 0}, {150}, -1},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.mode);
    const CalibratedRun run = calibrate(row.mode, row.times_ms);
    ASSERT_EQ(run.distances_ft.size(), speeds_.size());
    EXPECT_EQ(run.distances_ft[1000 / kPeriodMs], 0.0F);
    double before = 0.0;
    u32 from_ms = 1000;
    double factor = 1.0;
    for (std::size_t i = 0; i < row.targets.size(); ++i) {
      SCOPED_TRACE(row.targets[i]);
      const float reached = run.distances_ft[row.times_ms[i] / kPeriodMs];
      EXPECT_GE(reached, row.targets[i]);
      EXPECT_LE(reached - row.targets[i], 0.01F);
      factor = (static_cast<double>(row.targets[i]) + 0.005 - before) / (kFeetPerMs * (row.times_ms[i] - from_ms));
      before = static_cast<double>(row.targets[i]) + 0.005;
      from_ms = row.times_ms[i];
    }
    EXPECT_NEAR(run.factor, factor, 0.0002);
    // Behind the last mark, with the last factor; mode 4 in metres.
    const std::size_t mark = from_ms / kPeriodMs;
    const double scale = row.mode == 4 ? 0.2777778 / 1.466667 : 1.0;
    EXPECT_NEAR(run.distances_ft[mark + 100] - run.distances_ft[mark], factor * kFeetPerMs * 5000.0 * scale, 0.1);

    EXPECT_EQ(run.predicted_ms.has_value(), row.predicted_ms > 0);
    if (run.predicted_ms) {
      EXPECT_NEAR(static_cast<double>(*run.predicted_ms), row.predicted_ms, 2.0);
      EXPECT_TRUE(row.mode != 1 || !run.predicted_short_of_mark) << "a second behind the mark";
    }
  }
}

TEST_F(CalibratedRuns, SkipSegmentsWithoutMarks) {
  // Without the mark at 330 neither the segment that ends there nor the one that begins there is run.
  const CalibratedRun run = calibrate(0, {2100, 0, 12400, 18100, 0});
  EXPECT_FALSE(run.predicted_ms.has_value());
  EXPECT_NEAR(run.factor, (1000.005 - run.distances_ft[12400 / kPeriodMs]) / (kFeetPerMs * 5700.0), 0.0005);
  // Marks that don't move on are none, and marks behind the last sample can't be met.
  EXPECT_EQ(calibrate(0, {1000, 1000, 1000, 1000, 1000}).factor, 1.0F);
  EXPECT_EQ(calibrate(0, {4294967295U, 0, 0, 0, 0}).distances_ft.size(), speeds_.size());
  // Without any mark the distance is that of the speed.
  EXPECT_NEAR(calibrate(0, {}).distances_ft.back(), kFeetPerMs * 50.0 * 679.0, 0.2);
}

TEST(RegulationCalculator, HasOneCalculatorPerRunAndWritesTheDefaultTable) {
  const TempFolder temp;
  test::FakeSession session;
  session.folder = test::folder_of(temp);
  session.run_list = {{1, 0, 100}, {2, 100, 100}};
  CalculationOptions options;
  options.mode = 2;
  const std::wstring root = session.folder + L"/";
  RegulationCalculator calculator(&session, options, kCalibrationOff, root);
  EXPECT_EQ(calculator.run_count(), 2U);
  EXPECT_TRUE(std::filesystem::exists(temp.path() / "user/et_prediction/Default.etp"));
  EXPECT_EQ(calculator.run(1).calibrate(std::vector<float>(100, 40.0F), 50, RunMarks{}).distances_ft.size(), 100U);
  // The mode of the opening goes before that of the options.
  EXPECT_EQ(RegulationCalculator(&session, options, 4, root).run(0).mode(), 4);
}

}  // namespace
}  // namespace traguardo
