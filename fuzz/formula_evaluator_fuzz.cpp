// SPDX-License-Identifier: MIT
// The bytes choose a formula of the grammar and a session; the interpreter must agree with a plain walk over the
// formula's tree, bit for bit.

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "helpers/formula_reference.h"
#include "math/math_channel_manager.h"
#include "units/user_units_manager.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace traguardo;
  std::size_t used = 0;
  const test::Choices choices = [&](u32 bound) -> u32 {
    u32 value = 0;
    for (u32 range = 1; range < bound && range != 0 && used < size; range <<= 8) value = value << 8 | data[used++];
    return value % bound;
  };
  test::FormulaGenerator generator(choices, {"Speed #1", "Engine", "Lateral acc.", "_x1"});
  test::GeneratedFormula formula = generator.generate();
  if (formula.text.size() > CTokenizer::kMaximumLength) return 0;
  test::MemoryMathSession session = test::random_math_session(choices);
  const std::size_t target = session.channels.size() - 1;

  const std::vector<float> expected = test::FormulaReference(formula.tree, session, target).compute();
  const CUserUnitsOfMeasureMgr units;
  CGestMathChan manager(units, L"");
  if (!manager.compute_formula(formula.text, session, target)) {
    std::fprintf(stderr, "refused: %s\n", formula.text.c_str());
    std::abort();
  }
  const std::vector<float>& values = session.channels[target].samples;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (test::same_value(values[i], expected[i])) continue;
    std::fprintf(stderr, "%s at sample %zu: %g where %g was expected\n", formula.text.c_str(), i,
                 static_cast<double>(values[i]), static_cast<double>(expected[i]));
    std::abort();
  }
  return 0;
}
