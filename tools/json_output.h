// What the commands hand to programs.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace traguardo::tool {

// Keys in the order in which they were set.
using Json = nlohmann::ordered_json;

// Not-a-number and the infinities, for which JSON has no form, are the texts "nan", "inf" and "-inf".
Json json_number(double value);
// A text of the library, in UTF-8.
Json json_text(std::string_view text);

// One document, indented, with a line feed behind it.
std::string to_document(const Json& json);

}  // namespace traguardo::tool
