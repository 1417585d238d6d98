// The formulas of the sensors that no polynomial of the data base describes, or that have no unit descriptor.
#pragma once

#include <span>

#include "legacy/sensors/sensor_formulas_data.h"
#include "support/bytes.h"

namespace traguardo {

class CDBSensori;

// The user's three system choices; false is metric.
struct SystemChoices {
  bool imperial_speed = false;
  bool imperial_temperature = false;
  bool imperial_pressure = false;
};

// What one call of a formula works on.
struct FormulaCall {
  const SensorFormulaRow& row;
  const CDBSensori& data_base;
  std::span<const float, 5> p;  // parameters of the channel record
  float k;                      // scale and offset of the result
  float o;
  SystemChoices imperial;
  std::span<const u16> raw;
  std::span<float> out;  // at least as long as raw
};

// The row of a sensor id, or the plain row for an id that has none.
const SensorFormulaRow& sensor_formula_row(i32 sensor_id);

void run_sensor_formula(const FormulaCall& call);

}  // namespace traguardo
