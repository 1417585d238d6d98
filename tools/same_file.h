// SPDX-License-Identifier: MIT
// Whether two paths stand for one file.
#pragma once

#include <string>

namespace traguardo::tool {

// The path that a symbolic link stands for in the end, also where there is no such file yet; other paths as they are.
std::string behind_links(const std::string& path);

// By what the system knows, however the paths are spelled: through links, hard links, another case of the letters where
// that makes no difference. Two that don't exist are the same if a file made under one of them is found under the
// other. "-" is standard output, wherever that goes.
bool are_same_file(const std::string& a, const std::string& b);

}  // namespace traguardo::tool
