// What the commands hand to programs.
#pragma once

#include <cstddef>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace traguardo::tool {

class OutputFile;

// Keys in the order in which they were set.
using Json = nlohmann::ordered_json;

// Not-a-number and the infinities, for which JSON has no form, are the texts "nan", "inf" and "-inf".
Json json_number(double value);
// A text of the library, in UTF-8.
Json json_text(std::string_view text);

// An array of numbers, written as it goes: a channel may have millions of them.
void write_json_array(OutputFile& out, std::size_t count, const std::function<double(std::size_t)>& number_at);

// One document, indented, with a line feed behind it.
std::string to_document(const Json& json);

}  // namespace traguardo::tool
