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

void Table::add_row(std::vector<std::string> cells) {
  for (std::string& text : cells) text = cell(text);
  rows_.push_back(std::move(cells));
}

std::string Table::to_text() const {
  std::vector<std::string> titles;
  std::vector<std::size_t> widths;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    titles.push_back(columns_[i].title);
    std::size_t width = display_width(columns_[i].title);
    for (const std::vector<std::string>& row : rows_) width = std::max(width, display_width(row[i]));
    widths.push_back(width);
  }
  std::string text;
  const auto append_row = [&](const std::vector<std::string>& cells) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (i > 0) text += kGap;
      append_cell(text, cells[i], widths[i], columns_[i].align, i + 1 == cells.size());
    }
    text += '\n';
  };
  append_row(titles);
  for (const std::vector<std::string>& row : rows_) append_row(row);
  return text;
}

std::string pairs_to_text(const std::vector<std::pair<std::string, std::string>>& pairs) {
  std::size_t width = 0;
  for (const auto& [name, value] : pairs) width = std::max(width, display_width(name));
  std::string text;
  for (const auto& [name, value] : pairs) {
    text.append(name).append(padding(width, display_width(name))).append(kGap).append(cell(value)).append(1, '\n');
  }
  return text;
}

}  // namespace traguardo::tool
