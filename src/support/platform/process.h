// SPDX-License-Identifier: MIT
// What a program asks of the process that it owns: its standard streams, its environment, the user's folders.
#pragma once

#include <cstdio>
#include <string>

namespace traguardo::platform {

// A program may be started without its standard streams; the next file opened would then take the place of one, and
// what is printed would go into it. Call it first of all: behind it a missing stream fails like a full disk.
void occupy_standard_streams();

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

}  // namespace traguardo::platform
