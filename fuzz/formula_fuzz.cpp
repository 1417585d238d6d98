// SPDX-License-Identifier: MIT
// Any text as a formula: it computes or gives a code of the message table, with a place inside the text.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "helpers/math_session.h"
#include "math/math_channel_manager.h"
#include "units/user_units_manager.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace traguardo;
  const std::string formula(reinterpret_cast<const char*>(data), size);
  const CUserUnitsOfMeasureMgr units;
  CGestMathChan manager(units, L"");
  manager.Store().SetDefaults();
  test::MemoryMathSession session;
  session.add("a", 100, {0.0F, 1.5F, -3.0F, 1e20F, 2000.0F, 7000.0F});
  session.add("Speed #1", 50, {0.0F, 20.0F, 80.0F, 81.0F});
  const std::size_t target = session.add("result", 100, std::vector<float>(8));
  session.laps = {{0, 300}, {300, 200}};
  const FormulaOutcome outcome = manager.compute_formula(formula, session, target);
  if (outcome.code != kFormulaOk && (outcome.code < 100 || outcome.code > 110 || outcome.code == 104)) std::abort();
  if (outcome.character > size || outcome.message.empty()) std::abort();
  return 0;
}
