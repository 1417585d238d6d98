// SPDX-License-Identifier: MIT
#include "legacy/sensors/sensor_database.h"

namespace traguardo {

CDBSensori::CDBSensori() {
  for (const UnitTextRow& row : unit_texts()) unit_texts_.emplace(row.code, row.text);
  for (const UnitIdRow& row : unit_ids()) {
    for (u32 unit_id = row.first_id; unit_id <= row.last_id; ++unit_id) unit_codes_.emplace(unit_id, row.code);
  }
  for (const UnitConversionRow& row : unit_conversions()) conversions_.emplace(std::pair(row.from, row.to), row);
  for (const SensorRow& row : sensors()) {
    if (row.scale.family != 0) scales_.emplace(row.id, row.scale);
  }
  for (const SensorCurveRow& row : sensor_curves()) curves_.emplace(row.number, row);
}

const SensorScale* CDBSensori::scale(i32 sensor_id) const {
  const auto found = scales_.find(sensor_id);
  return found == scales_.end() ? nullptr : &found->second;
}

void CDBSensori::override_family(i32 sensor_id, u8 family) {
  const auto found = scales_.find(sensor_id);
  if (found != scales_.end()) found->second.family = family;
}

std::optional<u8> CDBSensori::unit_code(u32 unit_id) const {
  const auto found = unit_codes_.find(unit_id);
  if (found == unit_codes_.end()) return std::nullopt;
  return found->second;
}

std::optional<UnitConversionRow> CDBSensori::conversion(u8 from, u8 to) const {
  const auto found = conversions_.find({from, to});
  if (found == conversions_.end()) return std::nullopt;
  return found->second;
}

std::string_view CDBSensori::unit_text(u8 unit_code) const {
  const auto found = unit_texts_.find(unit_code);
  return found == unit_texts_.end() ? std::string_view() : found->second;
}

}  // namespace traguardo
