// SPDX-License-Identifier: MIT
// CFunzioni: the units of a function and the conversions between them.
#include <algorithm>

#include "units/functions.h"

namespace traguardo {
namespace {

// Begins a text of 16-bit characters, high byte first.
constexpr char kWideTextMark = 9;

const UnitRow* find_unit(UnitSet units, std::string_view name) {
  const auto row = std::find_if(units.begin(), units.end(),
                                [name](const UnitRow& unit) { return decode_unit_text(unit.name) == name; });
  return row == units.end() ? nullptr : &*row;
}

const UnitRow* follow_alias(UnitSet units, const UnitRow* row) {
  return row == nullptr || row->alias < 0 ? row : &units[static_cast<std::size_t>(row->alias)];
}

// The row that stands for a name, or null if the function doesn't have such a unit.
const UnitRow* find_canonical_unit(u32 word, std::string_view name) {
  const FunctionRow* function = CFunzioni::find_row(word);
  return function == nullptr ? nullptr : follow_alias(function->units, find_unit(function->units, name));
}

// The same with the function's first unit in the place of an unknown one.
const UnitRow* unit_or_first(u32 word, std::string_view name) {
  const FunctionRow* function = CFunzioni::find_row(word);
  if (function == nullptr) return nullptr;
  const UnitRow* row = find_unit(function->units, name);
  return row == nullptr ? &function->units.front() : follow_alias(function->units, row);
}

u32 with_position(u32 word, u32 position) {
  return fid::make(fid::quantity(word), fid::object(word), position);
}

}  // namespace

std::string decode_unit_text(std::string_view stored) {
  if (stored.empty() || stored.front() != kWideTextMark) return std::string(stored);
  std::string text;
  for (std::size_t low = 2; low < stored.size(); low += 2) text.push_back(stored[low]);
  return text;
}

const FunctionRow* CFunzioni::find_row(u32 word) {
  const FunctionRow* apart_from_position = nullptr;
  for (const FunctionRow& row : catalogue::functions()) {
    const u32 object = fid::object(row.fid);
    if (fid::quantity(row.fid) != fid::quantity(word)) continue;
    if (object != fid::object(word) && object != FID_OBJ_UNDEFINED) continue;
    const u32 position = fid::position(row.fid);
    if (position == fid::position(word) || position == FID_POS_UNDEFINED) return &row;
    if (apart_from_position == nullptr) apart_from_position = &row;
  }
  return apart_from_position;
}

std::string CFunzioni::GetUnitName(u32 fid) const {
  const FunctionRow* row = find_row(fid);
  return row == nullptr ? "" : decode_unit_text(row->units.front().name);
}

std::string CFunzioni::CanonicalUnit(u32 fid, std::string_view unit) const {
  const UnitRow* row = unit_or_first(fid, unit);
  return row == nullptr ? "" : decode_unit_text(row->name);
}

i32 CFunzioni::ClampDecimals(u32 fid, std::string_view unit, i32 decimals) const {
  const UnitOfMeasure row = GetUnitRow(fid, unit);
  const bool fits = decimals >= row.least_decimals && decimals <= row.most_decimals;
  return fits ? decimals : row.default_decimals;
}

i32 CFunzioni::DefaultDecimals(u32 fid, std::string_view unit) const {
  return GetUnitRow(fid, unit).default_decimals;
}
i32 CFunzioni::MostDecimals(u32 fid, std::string_view unit) const {
  return GetUnitRow(fid, unit).most_decimals;
}
i32 CFunzioni::LeastDecimals(u32 fid, std::string_view unit) const {
  return GetUnitRow(fid, unit).least_decimals;
}

float CFunzioni::RestValue(u32 fid) const {
  const bool is_vertical_acceleration = fid::quantity(fid) == FID_PHI_ACCELERATION && fid::object(fid) == FID_OBJ_Z;
  return is_vertical_acceleration ? -1.0F : 0.0F;
}

void CFunzioni::ListUnits(u32 fid, std::vector<std::string>* out) const {
  const FunctionRow* row = find_row(fid);
  if (row == nullptr) return;
  for (const UnitRow& unit : row->units) {
    if (unit.alias < 0) out->push_back(decode_unit_text(unit.name));
  }
}

void CFunzioni::fill_unit_set(u32 fid, std::set<std::string>* out) const {
  const FunctionRow* row = find_row(fid);
  if (row == nullptr) return;
  for (const UnitRow& unit : row->units) out->insert(decode_unit_text(unit.name));
}

void CFunzioni::fill_fid_set(u32 fid, std::set<u32>* out) const {
  const FunctionRow* row = find_row(fid);
  if (row == nullptr) return;
  out->insert(row->fid);
  for (const PositionRow& position : row->positions) {
    const u32 word = with_position(row->fid, position.position);
    out->insert(word);
    for (const PositionWordRow& corner : position.words) out->insert(word | corner.fid);
  }
}

void CFunzioni::ListPositions(u32 fid, std::vector<PositionRow>* out) const {
  const FunctionRow* row = find_row(fid);
  if (row != nullptr) out->insert(out->end(), row->positions.begin(), row->positions.end());
}

void CFunzioni::FindUnitSets(std::string_view unit, std::vector<UnitSet>* out) const {
  for (const UnitSet& units : catalogue::unit_sets()) {
    if (find_unit(units, unit) != nullptr) out->push_back(units);
  }
}

UnitOfMeasure CFunzioni::GetUnitRow(u32 fid, std::string_view unit) const {
  const UnitRow* row = unit_or_first(fid, unit);
  if (row == nullptr) return {};
  return {decode_unit_text(row->name), row->scale,         row->offset,
          row->default_decimals,       row->most_decimals, row->least_decimals};
}

UnitConversion CFunzioni::GetConversion(u32 fid, std::string_view from_unit, std::string_view to_unit) const {
  const UnitRow* from = find_canonical_unit(fid, from_unit);
  const UnitRow* to = find_canonical_unit(fid, to_unit);
  if (from_unit == to_unit || from == nullptr || to == nullptr) return {};
  // By way of the stored value, in the rows' own precision.
  return {to->scale / from->scale, to->offset - from->offset * to->scale / from->scale};
}

}  // namespace traguardo
