// SPDX-License-Identifier: MIT
// A file that a person names for a command to read.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace traguardo::tool {

class OutputFile;

// The system's reason why a file can't be opened; empty if it can.
std::string reason_not_readable(const std::string& path);
// Throws Failure with the system's reason if the file can't be read, at once also for what isn't a file: a folder, a
// pipe, a device.
void require_readable(const std::string& path);

// Hands all bytes of a file over, piece by piece, as long as `take` gives true. False if the file can't be opened or
// read to its end.
bool read_pieces(const std::string& path, const std::function<bool(std::string_view piece)>& take);

// Writes all bytes of a file. False if there is none that can be opened; throws Failure if they can't be written.
bool copy_to(OutputFile& out, const std::string& path);

}  // namespace traguardo::tool
