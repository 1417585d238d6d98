// SPDX-License-Identifier: MIT
// A unit as CFunzioni hands it out: the decoded name with the row's numbers.
#pragma once

#include <string>

#include "support/bytes.h"

namespace traguardo {

// The empty unit (no name) shows a value as it is.
struct UnitOfMeasure {
  std::string name;
  float scale = 1.0F;
  float offset = 0.0F;
  i32 default_decimals = 0;
  i32 most_decimals = 0;
  i32 least_decimals = 0;
};

// x in one unit is x * scale + offset in the other.
struct UnitConversion {
  float scale = 1.0F;
  float offset = 0.0F;
};

}  // namespace traguardo
