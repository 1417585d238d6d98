// Opening a file, with a bar on standard error where that takes long and somebody is watching.
#pragma once

#include <string>

namespace traguardo::tool {

// The result of open_file for this path.
int open_with_progress(const std::string& path);

}  // namespace traguardo::tool
