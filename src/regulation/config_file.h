// SPDX-License-Identifier: MIT
// The line form that the configuration files of the calculators share: lines of "key=value", in sections or not.
//
// A line that holds nothing but "{" opens a section, one that holds nothing but "}" closes it, and so do another "{"
// and the end of the file. The first line inside is the section's key. Keys of values stand at the start of a line,
// whatever their case; values keep theirs, blanks included. A carriage return before the line feed belongs to the line
// end.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "support/bytes.h"

namespace traguardo {

// Walks the lines of a text, one at a time, so that no file takes more memory than its bytes.
class LineWalk {
 public:
  explicit LineWalk(std::string_view text) : text_(text) {}
  // False behind the last line. A line feed at the end of the text begins no further line.
  bool next(std::string_view* line);
  // How much of the text has been read.
  std::size_t position() const { return position_; }

 private:
  std::string_view text_;
  std::size_t position_ = 0;
};

// What stands behind `key`, which is in lower case, if the line begins with it.
std::optional<std::string_view> value_of(std::string_view line, std::string_view key);

class ConfigFile {
 public:
  explicit ConfigFile(std::string text) : text_(std::move(text)) {}
  // Without a value for a file that is missing, unreadable or out of all proportion.
  static std::optional<ConfigFile> read(const std::wstring& path);

  // Views into the text live as long as the object stays where it is.
  std::string_view text() const { return text_; }
  bool has_sections() const;
  // The lines of the first section whose key line `belongs` accepts, without that key line.
  template <typename Belongs>
  std::optional<std::string_view> section(Belongs belongs) const;
  // The section of a racer: "racer=", in any case, and the name as it is.
  std::optional<std::string_view> racer_section(std::string_view racer) const;
  // The same, or the whole text where no line opens a section.
  std::optional<std::string_view> racer_lines(std::string_view racer) const;

 private:
  static constexpr std::string_view kOpen = "{";
  static constexpr std::string_view kClose = "}";

  std::string text_;
};

template <typename Belongs>
std::optional<std::string_view> ConfigFile::section(Belongs belongs) const {
  LineWalk lines(text_);
  bool expects_key = false;
  std::optional<std::size_t> begin;
  std::size_t line_begin = 0;
  for (std::string_view line; lines.next(&line); line_begin = lines.position()) {
    if (line == kOpen || line == kClose) {
      if (begin) break;
      expects_key = line == kOpen;
    } else if (expects_key) {
      expects_key = false;
      if (belongs(line)) begin = lines.position();
    }
  }
  if (!begin) return std::nullopt;
  return text().substr(*begin, line_begin - *begin);
}

}  // namespace traguardo
