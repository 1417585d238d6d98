#include "json_output.h"

#include <fmt/format.h>

#include <cmath>
#include <iterator>

#include "output_file.h"
#include "text.h"

namespace traguardo::tool {

Json json_number(double value) {
  if (!std::isfinite(value)) return shortest(value);
  return value;
}

Json json_text(std::string_view text) {
  return to_utf8(text);
}

void write_json_array(OutputFile& out, std::size_t count, const std::function<double(std::size_t)>& number_at) {
  constexpr std::size_t kFlushAt = 1 << 16;
  fmt::memory_buffer text;
  text.push_back('[');
  for (std::size_t i = 0; i < count; ++i) {
    const double number = number_at(i);
    const char* const comma = i == 0 ? "" : ", ";
    const char* const quote = std::isfinite(number) ? "" : "\"";
    fmt::format_to(std::back_inserter(text), "{}{}{}{}", comma, quote, shortest(number), quote);
    if (text.size() < kFlushAt) continue;
    out.write(text.data(), text.size());
    text.clear();
  }
  text.push_back(']');
  out.write(text.data(), text.size());
}

std::string to_document(const Json& json) {
  return json.dump(2) + "\n";
}

}  // namespace traguardo::tool
