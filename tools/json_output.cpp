#include "json_output.h"

#include <cmath>

#include "text.h"

namespace traguardo::tool {

Json json_number(double value) {
  if (!std::isfinite(value)) return shortest(value);
  return value;
}

Json json_text(std::string_view text) {
  return to_utf8(text);
}

std::string to_document(const Json& json) {
  return json.dump(2) + "\n";
}

}  // namespace traguardo::tool
