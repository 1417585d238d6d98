// SPDX-License-Identifier: MIT
#include "terminal.h"

#include <cstddef>

#include "support/platform/process.h"

namespace traguardo::tool {

namespace {

constexpr unsigned char kFirstPrintable = 0x20;
constexpr unsigned char kDelete = 0x7F;
// The other control characters, U+0080 to U+009F, are this byte and their code in UTF-8.
constexpr unsigned char kLeadOfUpperControls = 0xC2;
constexpr unsigned char kLastUpperControl = 0x9F;

void append_hex(std::string& out, unsigned char code) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  out += "\\x";
  out += kDigits[code >> 4];
  out += kDigits[code & 0xF];
}

void append_control(std::string& out, unsigned char code) {
  if (code == '\n') {
    out += "\\n";
  } else if (code == '\r') {
    out += "\\r";
  } else if (code == '\t') {
    out += "\\t";
  } else {
    append_hex(out, code);
  }
}

}  // namespace

std::string with_visible_controls(std::string_view utf8, LineFeeds line_feeds) {
  std::string out;
  out.reserve(utf8.size());
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const auto code = static_cast<unsigned char>(utf8[i]);
    const auto next = static_cast<unsigned char>(i + 1 < utf8.size() ? utf8[i + 1] : 0);
    if (code == kLeadOfUpperControls && next >= 0x80 && next <= kLastUpperControl) {
      append_hex(out, next);
      ++i;
    } else if ((code >= kFirstPrintable && code != kDelete) ||
               (line_feeds == LineFeeds::kept && (code == '\n' || code == '\t'))) {
      out += utf8[i];
    } else {
      append_control(out, code);
    }
  }
  return out;
}

std::string for_stream(std::FILE* stream, std::string_view utf8, LineFeeds line_feeds) {
  return platform::is_terminal(stream) ? with_visible_controls(utf8, line_feeds) : std::string(utf8);
}

bool terminal_has_colours() {
  return platform::environment("NO_COLOR").empty() && platform::environment("TERM") != "dumb" &&
         platform::show_colours(stdout);
}

std::string cell(std::string_view utf8) {
  static const bool is_terminal = platform::is_terminal(stdout);
  return is_terminal ? with_visible_controls(utf8, LineFeeds::shown) : std::string(utf8);
}

}  // namespace traguardo::tool
