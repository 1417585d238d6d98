// SPDX-License-Identifier: MIT
#include "unit_choice.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "failure.h"
#include "text.h"
#include "units/functions.h"
#include "wildcard.h"

namespace traguardo::tool {

namespace {

std::string name_of(const UnitRow& row) {
  return readable_unit(decode_unit_text(row.name));
}

// Exactly, else in another case if only one row has it.
const UnitRow* find_row(UnitSet units, const std::string& name) {
  const UnitRow* found = nullptr;
  bool is_unique = true;
  for (const UnitRow& row : units) {
    const std::string present = name_of(row);
    if (present == name) return &row;
    if (without_case(present) != without_case(name)) continue;
    is_unique = found == nullptr;
    found = &row;
  }
  return is_unique ? found : nullptr;
}

const UnitRow& behind_alias(UnitSet units, const UnitRow& row) {
  return row.alias < 0 ? row : units[static_cast<std::size_t>(row.alias)];
}

// By way of the stored value that both rows scale.
UnitChange change_between(const UnitRow& from, const UnitRow& to) {
  const double scale = static_cast<double>(to.scale) / static_cast<double>(from.scale);
  return {name_of(to), scale, static_cast<double>(to.offset) - static_cast<double>(from.offset) * scale};
}

// The sets that have the present unit, that of the channel's function in front.
std::vector<UnitSet> sets_with(u32 function, const std::string& present) {
  std::vector<UnitSet> sets;
  const FunctionRow* const row = function == 0 ? nullptr : CFunzioni::find_row(function);
  if (row != nullptr && find_row(row->units, present) != nullptr) sets.push_back(row->units);
  for (const UnitSet& units : catalogue::unit_sets()) {
    if (find_row(units, present) != nullptr) sets.push_back(units);
  }
  return sets;
}

}  // namespace

UnitChange change_of_unit(u32 function, const std::string& present, const std::string& wanted,
                          const std::string& channel) {
  if (present == wanted) return {present, 1, 0};
  std::vector<std::string> known;
  for (const UnitSet& units : sets_with(function, present)) {
    const UnitRow* const to = find_row(units, wanted);
    if (to != nullptr) {
      return change_between(behind_alias(units, *find_row(units, present)), behind_alias(units, *to));
    }
    for (const UnitRow& row : units) {
      const std::string name = name_of(row);
      if (name != present && std::find(known.begin(), known.end(), name) == known.end()) known.push_back(name);
    }
  }
  const std::string choice = known.empty() ? "no other unit" : fmt::format("{}", fmt::join(known, ", "));
  throw Failure(fmt::format("no unit \"{}\" for \"{}\", which is in {}; there is {}", wanted, channel,
                            present.empty() ? "none" : present, choice));
}

}  // namespace traguardo::tool
