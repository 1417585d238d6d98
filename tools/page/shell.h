// SPDX-License-Identifier: MIT
// The page around its title and its data, with its script and its style. Made by page/bundle.mjs where the build finds
// node and its packages; all of it empty elsewhere (no_shell.cpp).
#pragma once

#include <string_view>

namespace traguardo::tool {

extern const std::string_view kPageBegin;  // up to the title
extern const std::string_view kPageBody;   // up to the data
extern const std::string_view kPageEnd;

}  // namespace traguardo::tool
