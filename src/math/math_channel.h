// SPDX-License-Identifier: MIT
// One definition of a math channel, as a definition file keeps it and as a session takes it in.
#pragma once

#include <array>
#include <string>

#include "support/bytes.h"

namespace traguardo {

struct SMathChannel {
  static constexpr std::size_t kNameLength = 19;
  static constexpr std::size_t kUnitLength = 9;
  static constexpr std::size_t kTextLength = 255;  // Of formula and description.

  std::string name = "New Channel";
  std::string unit = "unit";
  i32 enabled = 0;          // Only 1 is taken into a session.
  i32 update_existing = 0;  // 1: a channel of that name already in the session takes this definition.
  std::array<i32, 2> flags{};
  u16 filter_word = 0;
  u16 channel_class = 1;   // 3: a speed channel; 8: a calculator's channel.
  u16 frequency_code = 2;  // Row of the legacy sample rate table.
  float display_minimum = 0.0F;
  float display_maximum = 0.0F;
  std::string formula;
  std::string description;
  i32 function = 0;  // Function number of the legacy file family, and its second number.
  i32 sub_function = 0;
  i32 decimals = 2;
};

}  // namespace traguardo
