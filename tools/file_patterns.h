// SPDX-License-Identifier: MIT
// Files by patterns, for shells that don't open those themselves.
#pragma once

#include <string>
#include <vector>

namespace traguardo::tool {

// Each argument that no file has for its name and that holds "*" or "?" becomes the files that fit it, in the order of
// their names; one that nothing fits stays as it is.
std::vector<std::string> opened_patterns(const std::vector<std::string>& arguments);

}  // namespace traguardo::tool
