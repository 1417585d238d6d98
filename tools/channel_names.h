// SPDX-License-Identifier: MIT
// Channels by the names that people give them: from all that a session has, those that somebody means.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace traguardo::tool {

// The places in `names` that `wanted` means, in their order. The exact name comes first; then "#N", the place itself;
// then, in any case of the letters, a pattern with "*" and "?", the whole name, a part that one name has. Empty for a
// name that nothing has. All in UTF-8. Throws Failure for a part that several names have; `where` says of what.
std::vector<std::size_t> named(const std::string& wanted, const std::vector<std::string>& names,
                               const std::string& where);

// What to say where nothing has the name: "; did you mean "Speed" or "GPS Speed"?", or the nearest three where none
// comes near. Empty without any names.
std::string question_about_names(const std::string& wanted, const std::vector<std::string>& names);

// Throws Failure: `wanted` stands for one thing but fits these.
[[noreturn]] void refuse_several(const std::string& wanted, const std::vector<std::string>& fitting,
                                 const std::string& where);

}  // namespace traguardo::tool
