// SPDX-License-Identifier: MIT
// Names with places left open, as people type them for channels and files.
#pragma once

#include <string>
#include <string_view>

namespace traguardo::tool {

// Whether a text holds "*" (any text, also none) or "?" (any one character).
bool has_wildcard(std::string_view text);

// Whether the whole name fits a pattern, both in UTF-8.
bool fits(std::string_view pattern, std::string_view name);

// ASCII letters in lower case, all else as it is: what two names are compared by that may differ in case.
std::string without_case(std::string_view text);

}  // namespace traguardo::tool
