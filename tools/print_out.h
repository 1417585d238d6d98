// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace traguardo::tool {

// Writes a whole text to standard output. Throws Failure, as for a full disk behind it.
void print_out(std::string_view text);
// The same for a table or pairs, which show their controls already, so that their colours stay.
void print_shown(std::string_view text);

}  // namespace traguardo::tool
