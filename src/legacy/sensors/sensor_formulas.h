// SPDX-License-Identifier: MIT
// The formulas of the sensors that no polynomial of the data base describes, or that have no unit descriptor.
#pragma once

#include <span>

#include "legacy/sensors/sensors_data.h"
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
  const SensorRow& sensor;
  const CDBSensori& data_base;
  std::span<const float, 5> p;  // parameters of the channel record
  float k;                      // scale and offset of the result
  float o;
  SystemChoices imperial;
  std::span<const u16> raw;
  std::span<float> out;  // at least as long as raw
};

void run_sensor_formula(const FormulaCall& call);

}  // namespace traguardo
