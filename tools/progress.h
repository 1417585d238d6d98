// SPDX-License-Identifier: MIT
// Opening a file, with a bar on standard error where that takes long and somebody is watching.
#pragma once

#include <list>
#include <memory>
#include <string>

#include "model/progress.h"

namespace traguardo::tool {

// The bar for the parse of this file. Null where standard error is no terminal, or the file is read in a blink.
std::unique_ptr<IProgress> progress_for(const std::string& path);

// The result of open_file for this path.
int open_with_progress(const std::string& path, const std::list<std::string>& reader_options);

}  // namespace traguardo::tool
