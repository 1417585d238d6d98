// SPDX-License-Identifier: MIT
// Values in the unit of a person's choice, by the library's catalogue of units.
#pragma once

#include <string>

#include "support/bytes.h"

namespace traguardo::tool {

// A value in the wanted unit is value * scale + offset.
struct UnitChange {
  std::string unit;  // as the catalogue spells it, UTF-8
  double scale = 1;
  double offset = 0;
};

// From the unit that a channel has to the wanted one, both in UTF-8, the wanted one in any case of the letters unless
// two differ by it. The units of the channel's function (0: unknown) come first, then any set of units that has both.
// Throws Failure with the units that there are; `channel` is for its text.
UnitChange change_of_unit(u32 function, const std::string& present, const std::string& wanted,
                          const std::string& channel);

}  // namespace traguardo::tool
