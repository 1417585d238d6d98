// SPDX-License-Identifier: MIT
#include "json_output.h"

#include <fmt/format.h>

#include <cmath>
#include <iterator>

#include "output_file.h"
#include "text.h"

namespace traguardo::tool {

namespace {

// JSON lets the control characters from U+007F to U+009F stand as they are; a terminal takes them for commands.
std::string with_escaped_controls(const std::string& text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto code = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    if (code == 0x7F) {
      result += "\\u007f";
    } else if (code == 0xC2 && next >= 0x80 && next <= 0x9F) {
      fmt::format_to(std::back_inserter(result), "\\u{:04x}", static_cast<unsigned>(next));
      ++i;
    } else {
      result += text[i];
    }
  }
  return result;
}

}  // namespace

Json json_number(double value) {
  if (!std::isfinite(value)) return shortest(value);
  return value;
}

Json json_text(std::string_view text) {
  return to_utf8(text);
}

void JsonArray::add(double number) {
  constexpr std::size_t kFlushAt = 1 << 16;
  const char* const comma = is_first_ ? "" : ", ";
  const char* const quote = std::isfinite(number) ? "" : "\"";
  is_first_ = false;
  fmt::format_to(std::back_inserter(text_), "{}{}{}{}", comma, quote, shortest(number), quote);
  if (text_.size() < kFlushAt) return;
  out_.write(text_);
  text_.clear();
}

void JsonArray::close() {
  text_ += ']';
  out_.write(text_);
}

std::string to_line(const Json& json) {
  return with_escaped_controls(json.dump());
}

std::string to_document(const Json& json) {
  return with_escaped_controls(json.dump(2)) + "\n";
}

}  // namespace traguardo::tool
