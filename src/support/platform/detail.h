// SPDX-License-Identifier: MIT
// What the two platform sources and common.cpp share among themselves.
#pragma once

#include <string>
#include <string_view>

#include "support/platform/fault_injection.h"
#include "support/platform/platform.h"

namespace traguardo::platform::detail {

// The system's code for a disk without room.
extern const u32 kDiskFull;
// The system's code for a device that failed.
extern const u32 kIoError;

// False, with an error for last_error(), where a test wants this operation to fail.
bool may_go_on(Operation operation);

// Remembers the code for last_error() and gives false.
bool fail_with(u32 code);

// False, with an error for last_error(), where the disk of a test takes no more. Counts the bytes otherwise.
bool disk_takes(u64 growth);

// The text as this system's text files hold it.
std::string with_line_ends(std::string_view text);

// Case of ASCII letters apart.
bool ends_with_ignoring_case(std::wstring_view text, std::wstring_view suffix);

}  // namespace traguardo::platform::detail
