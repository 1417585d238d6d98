// SPDX-License-Identifier: MIT
#include "regulation/config_file.h"

#include "support/platform/platform.h"

namespace traguardo {

bool LineWalk::next(std::string_view* line) {
  if (position_ >= text_.size()) return false;
  const std::size_t feed = text_.find('\n', position_);
  if (feed == std::string_view::npos) {
    *line = text_.substr(position_);
    position_ = text_.size();
    return true;
  }
  *line = text_.substr(position_, feed - position_);
  if (!line->empty() && line->back() == '\r') line->remove_suffix(1);
  position_ = feed + 1;
  return true;
}

std::optional<std::string_view> value_of(std::string_view line, std::string_view key) {
  if (line.size() < key.size()) return std::nullopt;
  for (std::size_t i = 0; i < key.size(); ++i) {
    const char c = line[i];
    if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) != key[i]) return std::nullopt;
  }
  return line.substr(key.size());
}

std::optional<ConfigFile> ConfigFile::read(const std::wstring& path) {
  constexpr u64 kLargest = u64{1} << 26;
  std::string text;
  if (!platform::read_whole_file(path, &text, kLargest)) return std::nullopt;
  return ConfigFile(std::move(text));
}

bool ConfigFile::has_sections() const {
  LineWalk lines(text_);
  for (std::string_view line; lines.next(&line);) {
    if (line == kOpen) return true;
  }
  return false;
}

std::optional<std::string_view> ConfigFile::racer_section(std::string_view racer) const {
  return section([racer](std::string_view line) { return value_of(line, "racer=") == racer; });
}

std::optional<std::string_view> ConfigFile::racer_lines(std::string_view racer) const {
  if (!has_sections()) return text();
  return racer_section(racer);
}

}  // namespace traguardo
