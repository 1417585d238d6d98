// SPDX-License-Identifier: MIT
#include "math/interpreter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "helpers/math_session.h"
#include "math/math_channel_manager.h"
#include "math/math_parser.h"
#include "math/tokenizer.h"
#include "units/user_units_manager.h"

namespace traguardo {
namespace {

using test::MemoryMathSession;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// The values that a formula gives a channel of 100 ms beside the channels a, b and c of the same period.
std::vector<float> values_of(const std::string& formula, std::vector<float> a, std::vector<float> b = {},
                             std::vector<float> c = {}, const std::vector<SMathLap>& laps = {}) {
  MemoryMathSession session;
  const std::size_t count = a.size();
  session.add("a", 100, std::move(a));
  session.add("b", 100, std::move(b));
  session.add("c", 100, std::move(c));
  const std::size_t target = session.add("result", 100, std::vector<float>(count, -77.0F), formula);
  session.laps = laps;
  CUserUnitsOfMeasureMgr units;
  CGestMathChan manager(units, L"");
  EXPECT_TRUE(manager.ComputeChannel(session, target)) << formula;
  return session.channels[target].samples;
}

float value_of(const std::string& formula) {
  return values_of(formula, {0.0F}).at(0);
}

void expect_near(const std::vector<float>& values, const std::vector<float>& expected) {
  ASSERT_EQ(values.size(), expected.size());
  for (std::size_t i = 0; i < values.size(); ++i) EXPECT_NEAR(values[i], expected[i], 1e-5F) << i;
}

TEST(FormulaValues, OperatorsAndFunctionsOfNumbers) {
  struct Case {
    const char* formula;
    float value;
  };
  const Case cases[] = {
      {"7-2-1", 4.0F},
      {"2+3*4-6/3", 12.0F},
      {"2*(3+4)*5", 70.0F},
      {"8/4/2", 1.0F},
      {"12/2*3", 18.0F},
      {"2*3^2+1", 19.0F},
      {"1/0", 0.0F},
      {"0/0", 0.0F},
      {"2^3^2", 64.0F},
      {"-2^2", -4.0F},
      {"(0-8)^(1/3)", kNaN},
      {"exp(200)", kInfinity},
      {"log(0)", -kInfinity},
      {"asin(1.5)", kNaN},
      {"sqrt(16)+abs(0-3)", 7.0F},
      {"ln(exp(2))*log(1000)", 6.0F},
      {"sin(0)+cos(0)+tan(0)", 1.0F},
      {"acos(0)-asin(1)+atan(1)", 0.785398163F},
      {"min(3,-4)", -4.0F},
      {"max(3,-4)", 3.0F},
      {"med(3,-4)", -0.5F},
      {"high_pass(5,4)", 5.0F},
      {"low_pass(4,5)+10*low_pass(5,5)", 4.0F},
      {"band_pass(5,4,6)", 5.0F},
      {"high_pass(4,4)", 0.0F},
      {"band_pass(4,4,6)", 0.0F},
      {"band_pass(6,4,6)", 0.0F},
      {"bit_and(0-1,255)", 255.0F},
      {"bit_or(0-1,0)", 4294967295.0F},
      {"bit_and(4294967808,1023)", 512.0F},  // Only the low 32 bits take part.
      {"bit_or(10^30,1)", 1.0F},             // Behind every integer: no low bits are left.
      {"bit_xor(12,10)+100*bit_and(12,10)+10000*bit_or(12,10)", 140806.0F},
      {"GE(1,1)+2*GE(0,1)+4*GT(2,1)+8*GT(1,1)", 5.0F},
      {"LT(1,1)+2*LT(0,1)+4*LE(1,1)+8*LE(2,1)", 6.0F},
      {"EQ(1,1)+2*EQ(1,2)+4*NE(1,1)+8*NE(1,2)", 9.0F},
      {"IF(1,2,3)+10*IF(0,2,3)", 32.0F},
      {"IF(sqrt(0-1),1,2)", 1.0F},
      {"atan2(1,0)", 0.0F},
      {"atan2(0,1)", 1.57079633F},
      {"16777216+1", 16777216.0F},  // Single precision throughout.
  };
  for (const Case& c : cases) {
    const float value = value_of(c.formula);
    if (std::isnan(c.value)) {
      EXPECT_TRUE(std::isnan(value)) << c.formula;
    } else {
      EXPECT_FLOAT_EQ(value, c.value) << c.formula;
    }
  }
}

TEST(FormulaValues, FunctionsThatRememberSamples) {
  const std::vector<float> ramp = {1.0F, 3.0F, 3.0F, 2.0F};
  expect_near(values_of("deriv(a)", ramp), {10.0F, 20.0F, 0.0F, -10.0F});
  expect_near(values_of("integ(a)", ramp), {0.0F, 0.1F, 0.4F, 0.7F});
  // Every occurrence remembers for itself.
  expect_near(values_of("integ(a)*10+integ(1)", ramp), {0.0F, 1.1F, 4.2F, 7.3F});
  expect_near(values_of("deriv(deriv(a))", ramp), {100.0F, 100.0F, -200.0F, -100.0F});
}

// The period is added first, and the lap's end must be passed: the fourth sample is the first one at 400 ms.
TEST(FormulaValues, LapsStartAgainBehindTheirEnd) {
  const std::vector<float> ones(8, 1.0F);
  const std::vector<SMathLap> laps = {{0, 300}, {300, 200}, {500, 100}};
  expect_near(values_of("time()", ones, {}, {}, laps), {0.0F, 0.1F, 0.2F, 0.0F, 0.1F, 0.0F, 0.1F, 0.2F});
  expect_near(values_of("lap_integ(a)", ones, {}, {}, laps), {0.0F, 0.1F, 0.2F, 0.0F, 0.1F, 0.0F, 0.1F, 0.2F});
  // One lap never restarts, and of many short ones each sample passes one.
  expect_near(values_of("time()", {1, 1, 1}, {}, {}, {{0, 100}}), {0.0F, 0.1F, 0.2F});
  expect_near(values_of("time()", {1, 1, 1, 1, 1}, {}, {}, {{0, 10}, {10, 10}, {20, 10}, {30, 1000}}),
              {0.0F, 0.0F, 0.0F, 0.1F, 0.2F});
}

// speed 36 km/h = 10 m/s; gyro 90 deg/s * 6.28 / 360 = 1.57.
TEST(FormulaValues, BikeFunctionsUseTheUsersUnits) {
  EXPECT_NEAR(value_of("bike_acclat(36,90)"), 15.7 / 9.806, 1e-6);
  EXPECT_NEAR(value_of("bike_cornrad(36,90)"), 10 / 1.57, 1e-5);
  EXPECT_TRUE(std::isinf(value_of("bike_cornrad(36,0)")));
  EXPECT_NEAR(value_of("bike_angle(36,90)"), 63.7718446, 1e-4);
  EXPECT_NEAR(value_of("bike_angle(36,20)"), 5.8629741, 1e-5);
  EXPECT_NEAR(value_of("bike_angle(36,-20)"), -5.8629741, 1e-5);
  EXPECT_EQ(value_of("bike_angle(36000,90000)"), 70.0F);
  EXPECT_EQ(value_of("bike_angle(36000,-90000)"), -70.0F);

  CUserUnitsOfMeasureMgr units;
  units.SetLengthSystem(true, nullptr);
  CGestMathChan manager(units, L"");
  MemoryMathSession session;
  session.add("result", 100, {0.0F});
  ASSERT_TRUE(manager.compute_formula("bike_acclat(22.369363,90)", session, 0));
  EXPECT_NEAR(session.channels[0].samples[0], 15.7 / 9.806, 1e-6);
  ASSERT_TRUE(manager.compute_formula("bike_cornrad(22.369363,90)", session, 0));
  EXPECT_NEAR(session.channels[0].samples[0], 10 / 1.57 / 0.3048, 1e-4);
}

// At a period of 1 s the smoothing of gear, slip and bike formulas changes nothing, so their passes can be followed by
// hand.
std::vector<float> slow_values_of(const std::string& formula, std::vector<float> rpm, std::vector<float> speed) {
  MemoryMathSession session;
  const std::size_t count = rpm.size();
  session.add("rpm", 1000, std::move(rpm));
  session.add("speed", 1000, std::move(speed));
  const std::size_t target = session.add("result", 1000, std::vector<float>(count), formula);
  CUserUnitsOfMeasureMgr units;
  CGestMathChan manager(units, L"");
  EXPECT_TRUE(manager.ComputeChannel(session, target)) << formula;
  return session.channels[target].samples;
}

TEST(FormulaValues, SlipIsTheRatioOverItsMean) {
  // Ratios 20, 10, 0 (too slow), 0 (too low a speed of the engine): mean 7.5, the zeros included.
  const std::vector<float> values = slow_values_of("slip(rpm,speed)", {200, 200, 200, 50}, {10, 20, 0.05F, 10});
  expect_near(values, {20 / 7.5F, 10 / 7.5F, 0.0F, 5 / 7.5F});  // No limit of rpm in the second pass.
  EXPECT_EQ(slow_values_of("slip(rpm,speed)", {100, 90}, {10, 20}), (std::vector<float>{0.0F, 0.0F}));
}

class GearBox {
 public:
  void drive(float ratio, int samples) {
    for (int i = 0; i < samples; ++i) {
      rpm.push_back(6000.0F);
      speed.push_back(ratio * 6000.0F);
    }
  }
  std::vector<float> rpm;
  std::vector<float> speed;
};

// A sample of each stretch of the drive.
std::vector<float> gears_of(const std::string& formula, const GearBox& box, const std::vector<std::size_t>& samples) {
  const std::vector<float> values = slow_values_of(formula, box.rpm, box.speed);
  std::vector<float> gears;
  for (const std::size_t sample : samples) gears.push_back(values.at(sample));
  return gears;
}

TEST(FormulaValues, GearsAreThePeaksOfTheRatio) {
  GearBox box;
  box.drive(0.0F, 60);  // Standing: bin 0, which never counts.
  box.drive(0.010F, 40);
  box.drive(0.020F, 30);
  box.drive(0.030F, 50);
  box.drive(0.0305F, 1);  // The range's end, which falls behind the bins.
  using Gears = std::vector<float>;
  const std::vector<std::size_t> stretches = {0, 60, 100, 130, 180};
  EXPECT_EQ(gears_of("gear(rpm,speed,1,3)", box, stretches), (Gears{1, 1, 2, 3, 3}));
  // One of the three bins more than the box has gears: the missing centre sorts to the front.
  EXPECT_EQ(gears_of("gear(rpm,speed,1,4)", box, stretches), (Gears{1, 2, 3, 4, 4}));
  // Two gears of three: the two highest peaks, of 50 and 40 samples.
  EXPECT_EQ(gears_of("gear(rpm,speed,5,6)", box, {60, 130}), (Gears{5, 6}));

  // The slopes of a peak are none, though they are higher than the next one; of equal peaks each counts.
  GearBox slopes;
  slopes.drive(0.0F, 5);
  for (const auto& [ratio, samples] :
       {std::pair{0.0094F, 35}, {0.0100F, 40}, {0.0106F, 35}, {0.020F, 30}, {0.030F, 40}, {0.0305F, 1}}) {
    slopes.drive(ratio, samples);
  }
  EXPECT_EQ(gears_of("gear(rpm,speed,1,3)", slopes, {5, 40, 80, 115, 145}), (Gears{1, 1, 1, 2, 3}));
}

TEST(FormulaValues, GearRangesThatNoBoxHasStayInBounds) {
  GearBox box;
  box.drive(0.0F, 5);
  for (int i = 1; i < 20; ++i) box.drive(0.001F * static_cast<float>(i), i);
  for (const char* formula :
       {"gear(rpm,speed,1,30)", "gear(rpm,speed,6,1)", "gear(rpm,speed,-10^9*3,10^9*3)", "gear(rpm,speed,10^9*3,0)",
        "gear(0,0,1,6)", "gear(rpm,speed,0/0,(0-1)^0.5)", "gear(rpm*10^38,speed*10^38,1,5)"}) {
    const std::vector<float> values = slow_values_of(formula, box.rpm, box.speed);
    EXPECT_EQ(values.size(), box.rpm.size()) << formula;
  }
  // Ten gears are the most: nine steps above the lowest.
  const std::vector<float> values = slow_values_of("gear(rpm,speed,1,30)", box.rpm, box.speed);
  EXPECT_LE(*std::max_element(values.begin(), values.end()), 10.0F);
  EXPECT_EQ(slow_values_of("gear(rpm,speed,6,1)", box.rpm, box.speed)[9], 6.0F);
}

class CodeByHand : public testing::Test {
 protected:
  CTokenizer tokenizer_{254, "+-*/^(),. ", "_#", "+-*/^(),"};
  CMathParser parser_{tokenizer_};
  CUserUnitsOfMeasureMgr units_;
  CInterpreter interpreter_{tokenizer_, parser_, units_};

  void compile(const char* text) {
    i32 code = 0;
    u16 position = 0;
    u16 length = 0;
    ASSERT_TRUE(tokenizer_.Tokenize(text, &code, &position, &length) && parser_.Compile(&code, &position));
  }
};

TEST_F(CodeByHand, AFullOrEmptyStackEndsTheWalk) {
  float value = 5.0F;
  EXPECT_FALSE(interpreter_.Pop(&value));
  EXPECT_FALSE(interpreter_.Push(1.0F));
  compile("1+2*3");
  interpreter_.SetStackSize(2);
  EXPECT_FALSE(interpreter_.Execute(0, {}, &value));
  EXPECT_EQ(value, 2.0F);  // The top of the stack when the third operand found no room.
  interpreter_.SetStackSize(3);
  EXPECT_TRUE(interpreter_.Execute(0, {}, &value));
  EXPECT_EQ(value, 7.0F);
  EXPECT_FALSE(interpreter_.Pop(&value));
}

TEST_F(CodeByHand, MissingInputsAndConstantsEndTheWalk) {
  tokenizer_.AddSymbol(kTokenChannel, "a", 3);
  tokenizer_.AddConstant("k", 2.0F);
  float value = 5.0F;
  interpreter_.SetStackSize(8);
  compile("a");
  EXPECT_FALSE(interpreter_.Execute(0, {}, &value));
  EXPECT_EQ(value, 0.0F);
  compile("4+k");
  tokenizer_.ClearConstants();
  EXPECT_FALSE(interpreter_.Execute(0, {}, &value));
  EXPECT_EQ(value, 4.0F);
}

}  // namespace
}  // namespace traguardo
