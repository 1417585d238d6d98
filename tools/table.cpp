// SPDX-License-Identifier: MIT
#include "table.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "terminal.h"
#include "text.h"

namespace traguardo::tool {

namespace {

constexpr const char* kGap = "  ";

std::string padding(std::size_t width, std::size_t taken) {
  return std::string(width > taken ? width - taken : 0, ' ');
}

void append_cell(std::string& line, const std::string& cell, std::size_t width, Align align, bool is_last) {
  const std::string space = padding(width, display_width(cell));
  if (align == Align::right) {
    line += space + cell;
  } else {
    line += cell;
    if (!is_last) line += space;
  }
}

}  // namespace

Table::Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

void Table::add_row(std::vector<std::string> cells, Tone tone) {
  for (std::string& text : cells) text = cell(text);
  rows_.push_back({std::move(cells), tone});
}

std::string Table::to_text() const {
  std::vector<std::string> titles;
  std::vector<std::size_t> widths;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    titles.push_back(columns_[i].title);
    std::size_t width = display_width(columns_[i].title);
    for (const Row& row : rows_) width = std::max(width, display_width(row.cells[i]));
    widths.push_back(width);
  }
  std::string text;
  const auto append_row = [&](const std::vector<std::string>& cells, Tone tone) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (i > 0) line += kGap;
      append_cell(line, cells[i], widths[i], columns_[i].align, i + 1 == cells.size());
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += in_tone(line, tone) + '\n';
  };
  append_row(titles, Tone::plain);
  for (const Row& row : rows_) append_row(row.cells, row.tone);
  return text;
}

std::string in_tone(const std::string& text, Tone tone) {
  static const bool has_colours = terminal_has_colours();
  if (tone == Tone::plain || !has_colours) return text;
  const char* const code = tone == Tone::good ? "32" : tone == Tone::bad ? "31" : "2";
  return std::string("\x1b[") + code + "m" + text + "\x1b[0m";
}

std::string pairs_to_text(const std::vector<Pair>& pairs) {
  std::size_t width = 0;
  for (const Pair& pair : pairs) width = std::max(width, display_width(pair.name));
  std::string text;
  for (const Pair& pair : pairs) {
    text.append(pair.name).append(padding(width, display_width(pair.name))).append(kGap);
    text.append(in_tone(cell(pair.value), pair.tone)).append(1, '\n');
  }
  return text;
}

}  // namespace traguardo::tool
