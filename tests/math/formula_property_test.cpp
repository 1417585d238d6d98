// SPDX-License-Identifier: MIT
// Random formulas of the grammar agree with a plain evaluation of the tree that they were written from, bit for bit.
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
    const FormulaOutcome outcome = manager.compute_formula(formula.text, session, target);
    ASSERT_TRUE(outcome) << formula.text << " gives " << outcome.code << " at " << outcome.position;
    const std::vector<float>& values = session.channels[target].samples;
    for (std::size_t i = 0; i < values.size(); ++i) {
      ASSERT_TRUE(test::same_value(values[i], expected[i]))
          << formula.text << " at sample " << i << ": " << values[i] << " where " << expected[i] << " was expected";
    }
  }
}

}  // namespace
}  // namespace traguardo
