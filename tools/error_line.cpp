// SPDX-License-Identifier: MIT
#include "error_line.h"

#include <cstdio>

#include "terminal.h"
#include "text.h"

namespace traguardo::tool {

void say_error_line(const std::string& text, const std::string& details) {
  const std::string line = for_stream(stderr, to_utf8(text), LineFeeds::shown);
  const std::string more = for_stream(stderr, to_utf8(details), LineFeeds::kept);
  std::fprintf(stderr, "traguardo: %s%s\n", line.c_str(), more.c_str());
}

}  // namespace traguardo::tool
