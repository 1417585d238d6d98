// A file that a person names for a command to read.
#pragma once

#include <string>

namespace traguardo::tool {

class OutputFile;

// Throws Failure with the system's reason if the file can't be read.
void require_readable(const std::string& path);

// Writes all bytes of a file. False if there is none that can be opened; throws Failure if they can't be written.
bool copy_to(OutputFile& out, const std::string& path);

}  // namespace traguardo::tool
