// SPDX-License-Identifier: MIT
// Text in aligned columns for a terminal.
#pragma once

#include <string>
#include <vector>

namespace traguardo::tool {

enum class Align { left, right };

// How a row stands out where a terminal shows it in colour.
enum class Tone { plain, good, bad, faint };

struct Column {
  std::string title;
  Align align = Align::left;
};

class Table {
 public:
  explicit Table(std::vector<Column> columns);

  // REQUIRES: as many cells, in UTF-8, as there are columns. Control characters show where a terminal gets them.
  void add_row(std::vector<std::string> cells, Tone tone = Tone::plain);
  // title row and rows, each with its line feed.
  std::string to_text() const;

 private:
  std::vector<Column> columns_;
  struct Row {
    std::vector<std::string> cells;
    Tone tone;
  };
  std::vector<Row> rows_;
};

// A text in colour where standard output is a terminal and NO_COLOR isn't set. Behind cell(): a terminal would show its
// colours as control characters.
std::string in_tone(const std::string& text, Tone tone);

// Names in front, values behind, one pair a line, with control characters as in a table.
struct Pair {
  std::string name;
  std::string value;
  Tone tone = Tone::plain;
};
std::string pairs_to_text(const std::vector<Pair>& pairs);

}  // namespace traguardo::tool
