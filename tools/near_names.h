// SPDX-License-Identifier: MIT
// What somebody may have meant who typed a name that doesn't exist.
#pragma once

#include <string>
#include <vector>

namespace traguardo::tool {

// "; did you mean "Speed" or "GPS Speed"?" for names that differ in case, in a letter or two, or have the wanted one in
// them; empty where none comes near. All in UTF-8.
std::string question_about_names(const std::string& wanted, const std::vector<std::string>& names);

}  // namespace traguardo::tool
