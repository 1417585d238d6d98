// Random formulas of the grammar agree with a plain evaluation of the tree that they were written from, bit for bit;
// random texts come to an error of the table, or to values.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "helpers/formula_reference.h"
#include "math/math_channel_manager.h"
#include "units/user_units_manager.h"

namespace traguardo {
namespace {

TEST(FormulaProperties, InterpreterAgreesWithATreeWalk) {
  std::mt19937 random(20240607);
  const test::Choices choices = [&random](u32 bound) { return static_cast<u32>(random() % bound); };
  CUserUnitsOfMeasureMgr units;
  CGestMathChan manager(units, L"");
  int compared = 0;
  while (compared < 3000) {
    test::MemoryMathSession session = test::random_math_session(choices);
    const std::size_t target = session.channels.size() - 1;
    test::FormulaGenerator generator(choices, {"Speed #1", "Engine", "Lateral acc.", "_x1"});
    test::GeneratedFormula formula = generator.generate();
    if (formula.text.size() > CTokenizer::kMaximumLength) continue;
    ++compared;

    const std::vector<float> expected = test::FormulaReference(formula.tree, session, target).compute();
    const FormulaOutcome outcome = manager.ComputeFormula(formula.text, session, target);
    ASSERT_TRUE(outcome) << formula.text << " gives " << outcome.code << " at " << outcome.position;
    const std::vector<float>& values = session.channels[target].samples;
    for (std::size_t i = 0; i < values.size(); ++i) {
      ASSERT_TRUE(test::same_value(values[i], expected[i]))
          << formula.text << " at sample " << i << ": " << values[i] << " where " << expected[i] << " was expected";
    }
  }
}

TEST(FormulaProperties, RandomTextsGiveACodeOfTheTable) {
  std::mt19937 random(7);
  const std::string pieces[] = {"(", ")",    ",",   "+",    "-",      "*",     "/",        "^",     " ",
                                ".", "1",    "2.5", "max(", "time()", "gear(", "Speed #1", "slip(", "_",
                                "#", "\xE8", "foo", "IF(",  "\t",     "sqrt",  "1e9",      ",2)"};
  CUserUnitsOfMeasureMgr units;
  CGestMathChan manager(units, L"");
  test::MemoryMathSession session;
  session.add("Speed #1", 100, {1, 2, 3});
  const std::size_t target = session.add("result", 100, {0, 0, 0});
  int usable = 0;
  for (int round = 0; round < 50000; ++round) {
    std::string text;
    for (auto count = random() % 12; count > 0; --count) text += pieces[random() % std::size(pieces)];
    const FormulaOutcome outcome = manager.ComputeFormula(text, session, target);
    if (outcome) ++usable;
    EXPECT_TRUE(outcome.code == 0 || (outcome.code >= 100 && outcome.code <= 110 && outcome.code != 104)) << text;
    EXPECT_LE(outcome.character, text.size()) << text;
  }
  EXPECT_GT(usable, 500);
}

}  // namespace
}  // namespace traguardo
