// SPDX-License-Identifier: MIT
// The standard set of math channels, and the constants that its formulas name.
#pragma once

#include <span>
#include <string_view>

#include "support/bytes.h"

namespace traguardo {

struct SStandardDefinition {
  std::string_view name;
  std::string_view unit;
  u16 channel_class;
  float display_minimum;
  float display_maximum;
  i32 function;
  i32 sub_function;
  std::string_view formula;
};
// Vehicle figures among them (MASS, WHEELBASE, GEARFACTOR, Cx, FRONTSURF) are those of no particular vehicle.
struct SStandardConstant {
  std::string_view name;
  float value;
};

std::span<const SStandardDefinition> standard_definitions();
std::span<const SStandardConstant> standard_constants();

}  // namespace traguardo
