// SPDX-License-Identifier: MIT
// What the tool says beside its output.
#pragma once

#include <string>

namespace traguardo::tool {

// One line on standard error behind the tool's name; on a terminal with its control characters shown.
// details: further lines, each behind a line feed.
void say_error_line(const std::string& text, const std::string& details = {});

}  // namespace traguardo::tool
