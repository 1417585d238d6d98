// SPDX-License-Identifier: MIT
// What a program asks of the process that it owns: its standard streams, its environment, the user's folders.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace traguardo::platform {

// A program may be started without its standard streams; the next file opened would then take the place of one, and
// what is printed would go into it. Call it first of all: behind it a missing stream fails like a full disk.
void occupy_standard_streams();

// The words of the command line as the host's bytes: the system's own where main() gets them in a form that lost
// letters.
std::vector<std::string> command_line(int count, char** words);
// For programs whose output is UTF-8, byte by byte: a console of another code page changes to it until the process
// ends, and line feeds stay what they are.
void write_utf8();

// Null, with errno, where the C library can't open the file. The path is the host's bytes.
std::FILE* open_stream(const std::string& path, const char* mode);
// Whether the stream's bytes go to (or come from) the plain file of this path.
bool is_stream_of_file(std::FILE* stream, const std::wstring& path);

bool is_terminal(std::FILE* stream);
// Whether the stream is a terminal that takes escape sequences for colours; a console is told to.
bool show_colours(std::FILE* stream);

// Empty where the variable isn't set.
std::string environment(const char* name);
// For this process and those that it starts. Without effect on a variable that is set and not empty.
void set_environment_if_unset(const char* name, const std::string& value);

// Where the user's programs keep their configuration (XDG_CONFIG_HOME or ~/.config; APPDATA on Windows), without a
// trailing slash. For a user without a home it is a place where nothing is and nothing can be made.
std::wstring user_configuration_folder();

// Whether new files can be made in a folder, as far as its permissions and those of its medium say.
bool can_make_files_in(const std::wstring& folder);
// The same for writing to a file that is there; false with last_error().
bool can_write_to(const std::wstring& path);

// Some paths stand for what a process has open already, as /dev/stdout and /dev/fd/3 do: the number of that, -1 for
// other paths.
int stream_number_of(const std::string& path);
// A stream of its own to write to what has that number, at the place where that stands. Null with errno if nothing has.
std::FILE* open_numbered_stream(int number);

}  // namespace traguardo::platform
