// SPDX-License-Identifier: MIT
// What the commands hand to programs.
#pragma once

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
class JsonArray {
 public:
  explicit JsonArray(OutputFile& out) : out_(out) {}
  void add(double number);
  // The array is whole. Call it once.
  void close();

 private:
  OutputFile& out_;
  std::string text_ = "[";
  bool is_first_ = true;
};

// In one line.
std::string to_line(const Json& json);
// One document, indented, with a line feed behind it.
std::string to_document(const Json& json);

}  // namespace traguardo::tool
