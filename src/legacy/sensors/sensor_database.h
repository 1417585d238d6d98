// SPDX-License-Identifier: MIT
// What is known of the sensors of the legacy family: the unit that each measures in, how its words become values, and
// how a value moves from one unit to another.
#pragma once

#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "legacy/sensors/sensor_curves_data.h"
#include "legacy/sensors/sensors_data.h"
#include "legacy/sensors/unit_tables_data.h"
#include "support/bytes.h"

namespace traguardo {

class CDBSensori {
 public:
  CDBSensori();
  virtual ~CDBSensori() = default;

  // Null for a sensor that the data base doesn't know. Lives as long as the data base.
  const SensorScale* scale(i32 sensor_id) const;
  // From now on the sensor counts as measuring in `family` (a unit code), for every channel that comes after. An
  // unknown sensor stays unknown.
  void override_family(i32 sensor_id, u8 family);

  // The unit code that a descriptor's unit id names.
  std::optional<u8> unit_code(u32 unit_id) const;
  // From one unit code to another.
  std::optional<UnitConversionRow> conversion(u8 from, u8 to) const;
  // 8-bit; empty for a code without a text. Lives as long as the process.
  std::string_view unit_text(u8 unit_code) const;
  // REQUIRES: the number of a curve that exists, 1 to 10.
  const SensorCurveRow& curve(i32 number) const { return curves_.at(number); }

 private:
  std::map<u8, std::string_view> unit_texts_;
  std::map<u32, u8> unit_codes_;
  std::map<std::pair<u8, u8>, UnitConversionRow> conversions_;
  std::map<i32, SensorScale> scales_;
  std::map<i32, SensorCurveRow> curves_;
};

}  // namespace traguardo
