// SPDX-License-Identifier: MIT
#include "math/math_channel_manager.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include "helpers/math_session.h"
#include "units/user_units_manager.h"

namespace traguardo {
namespace {

using test::MemoryMathSession;

class MathChannels : public testing::Test {
 protected:
  CUserUnitsOfMeasureMgr units_;
  CGestMathChan manager_{units_, L"C:/app"};
  MemoryMathSession session_;

  std::vector<float> compute(const std::string& formula, u32 period_ms, std::size_t count) {
    const std::size_t target = session_.add("result", period_ms, std::vector<float>(count, -77.0F), formula);
    EXPECT_TRUE(manager_.ComputeChannel(session_, target)) << formula;
    return session_.channels[target].samples;
  }
};

TEST_F(MathChannels, InputsComeOnTheGridOfTheTarget) {
  session_.add("slow", 40, {0, 4, 2});
  session_.add("fast", 5, {0, 1, 2, 3, 4, 5, 6});
  session_.add("same", 10, {5, 6, 7});
  EXPECT_EQ(compute("slow", 10, 12), (std::vector<float>{0, 1, 2, 3, 4, 3.5F, 3, 2.5F, 2, 0, 0, 0}));
  EXPECT_EQ(compute("fast", 10, 6), (std::vector<float>{0, 2, 4, 6, 0, 0}));
  EXPECT_EQ(compute("same", 10, 4), (std::vector<float>{5, 6, 7, 0}));
  EXPECT_EQ(compute("same", 10, 2), (std::vector<float>{5, 6}));
}

// Long inputs come in pieces, which must not show: neither at their seams nor where the target reads itself, ahead of
// which its own new samples run by five.
TEST_F(MathChannels, LongInputsHaveNoSeams) {
  constexpr std::size_t kCount = 10'000;
  std::vector<float> slow;  // on the target's grid, sample i reads i
  for (std::size_t i = 0; i <= kCount / 4; ++i) slow.push_back(static_cast<float>(4 * i));
  session_.add("slow", 40, slow);
  std::vector<float> doubled;
  for (std::size_t i = 0; i < kCount; ++i) doubled.push_back(static_cast<float>(2 * i));
  const std::size_t target = session_.add("self", 10, doubled, "slow+self");
  session_.laps = {{50.0, 1e6}};
  ASSERT_TRUE(manager_.ComputeChannel(session_, target));
  std::vector<float> expected = {0, 2, 4, 6, 8};
  for (std::size_t i = 0; i < kCount - 5; ++i) expected.push_back(static_cast<float>(3 * i));
  EXPECT_EQ(session_.channels[target].samples, expected);
}

TEST_F(MathChannels, FormulasThatFailLeaveTheSamplesAlone) {
  session_.add("Speed", 100, {1});
  const std::size_t target = session_.add("result", 100, {5, 5}, "Speed * KMH2MS");
  EXPECT_FALSE(manager_.ComputeChannel(session_, target));
  EXPECT_EQ(session_.channels[target].samples, (std::vector<float>{5, 5}));
  // Nothing of the failed formula is left for the next one.
  EXPECT_TRUE(manager_.compute_formula("Speed*2", session_, target));
  MemoryMathSession other;
  const std::size_t other_target = other.add("result", 100, {5});
  EXPECT_EQ(manager_.compute_formula("Speed*2", other, other_target).code, 102);
}

TEST_F(MathChannels, TargetsWithoutSamplesAndOfTheirOwnOldOnes) {
  session_.add("a", 100, {1, 2});
  EXPECT_EQ(compute("gear(a,a,1,6)+slip(a,a)", 100, 0), std::vector<float>{}) << "no failure";
  const std::size_t target = session_.add("self", 100, {1, 2, 3}, "self*2");
  EXPECT_TRUE(manager_.ComputeChannel(session_, target));
  EXPECT_EQ(session_.channels[target].samples, (std::vector<float>{2, 4, 6}));
}

// 4 Hz: two values on either side. Every pass smooths once more; without such a function inputs stay raw.
TEST_F(MathChannels, SmoothedInputsOfTheFunctionsThatAskForIt) {
  session_.add("gyro", 250, {0, 0, 0, 25, 0, 0, 0});
  const std::vector<float> once = {0, 0, 5, 5, 5, 0, 0};
  EXPECT_EQ(compute("gyro+0*bike_acclat(1,1)", 250, 7), once);
  const std::vector<float> twice = {0, 0, 3, 3, 3, 0, 0};
  EXPECT_EQ(compute("gyro+0*slip(1,1)", 250, 7), twice);
  EXPECT_EQ(compute("gyro+0*deriv(1)", 250, 7), (std::vector<float>{0, 0, 0, 25, 0, 0, 0}));
}

TEST_F(MathChannels, TheResultBeginsWithTheFirstLap) {
  session_.laps = {{200, 1000}};
  session_.add("a", 100, {1, 2, 3, 4});
  EXPECT_EQ(compute("a", 100, 4), (std::vector<float>{-77, -77, 1, 2}));
  for (const double start_ms : {400.0, 1e18}) {
    session_.laps = {{start_ms, 1000}};
    EXPECT_EQ(compute("a", 100, 4), (std::vector<float>{-77, -77, -77, -77}));
  }
}

TEST_F(MathChannels, OutcomesSayWhatAndWhere) {
  session_.add("Speed #1", 100, {1});
  const std::size_t target = session_.add("result", 100, {0});
  // Code, token or character, character, text.
  const std::tuple<const char*, i32, u16, std::size_t, const char*> cases[] = {
      {"Speed #1 * 2", 0, 4, 0, "Ok, the formule has been correctly interpreted"},
      {"2 $ 3", 100, 2, 2, "Error: unknown symbol"},
      {"Speed #1 * foo", 102, 2, 11, "Error: an identifier, a constant or a symbol is unknown"},
      {"  ", 110, 0, 2, "Error: the formule string is empty"},
  };
  for (const auto& [formula, code, position, character, message] : cases) {
    const FormulaOutcome outcome = manager_.compute_formula(formula, session_, target);
    EXPECT_EQ(std::tuple(outcome.code, outcome.position, outcome.character), std::tuple(code, position, character));
    EXPECT_EQ(outcome.message, message) << formula;
  }
}

// Definitions are symbols behind the channels; one that is no channel of the session has no samples to give.
TEST_F(MathChannels, DefinitionsAndConstantsOfTheStandardSet) {
  EXPECT_EQ(manager_.MathChannelCount(), 0U);
  manager_.Store().SetDefaults();
  ASSERT_EQ(manager_.MathChannelCount(), 12U);
  EXPECT_EQ(manager_.GetMathChannel(12), nullptr);
  session_.add("Speed #1", 100, {36, 72});
  EXPECT_FLOAT_EQ(compute("Speed #1 * KMH2MS", 100, 2)[1], 20.0F);
  EXPECT_EQ(compute("ZEP_Gear + ZEP_Gear + 1", 100, 2), (std::vector<float>{1, 1}));
  session_.add("ZEP_Gear", 100, {3, 4});
  EXPECT_EQ(compute("ZEP_Gear + 1", 100, 2), (std::vector<float>{4, 5}));
}

}  // namespace
}  // namespace traguardo
