// SPDX-License-Identifier: MIT
// What the calculators write lies under fixed names in folders of the user, where anything may have these names: a
// report that is a link to the session must not become the end of the session.
#pragma once

#include <string>
#include <vector>

#include "regulation/session_view.h"

namespace traguardo {

// All files that a legacy session is computed by, calculators and math channels, whether they are there or not.
std::vector<std::wstring> configuration_paths(const std::wstring& working_folder);

// False, with a line in the log, where the path leads to a file that the session is read from, or to a configuration
// under another name.
bool may_be_written(const SessionView& session, const std::wstring& path);

}  // namespace traguardo
