// SPDX-License-Identifier: MIT
// Text out of a file may hold what a terminal takes for a command. On a terminal it shows in a harmless form.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace traguardo::tool {

enum class LineFeeds { kept, shown };

// UTF-8 with its control characters as "\x1b", "\r" and the like; tabs share the fate of line feeds.
std::string with_visible_controls(std::string_view utf8, LineFeeds line_feeds);

// The text as this stream should get it: as it is, unless the stream is a terminal.
std::string for_stream(std::FILE* stream, std::string_view utf8, LineFeeds line_feeds);

// Whether standard output is a terminal whose user wants colours: NO_COLOR, where it is set, says no.
bool terminal_has_colours();

// A text that takes one place in a line of standard output.
std::string cell(std::string_view utf8);

}  // namespace traguardo::tool
