// SPDX-License-Identifier: MIT
// Text in aligned columns for a terminal.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace traguardo::tool {

enum class Align { left, right };

struct Column {
  std::string title;
  Align align = Align::left;
};

class Table {
 public:
  explicit Table(std::vector<Column> columns);

  // REQUIRES: as many cells, in UTF-8, as there are columns. Control characters show where a terminal gets them.
  void add_row(std::vector<std::string> cells);
  // Title row and rows, each with its line feed.
  std::string to_text() const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

// Names in front, values behind, one pair a line, with control characters as in a table.
std::string pairs_to_text(const std::vector<std::pair<std::string, std::string>>& pairs);

}  // namespace traguardo::tool
