// The sensor ids that get something of their own while a file is loaded and a channel is converted.
#pragma once

#include <span>

#include "legacy/sensors/inverse_formulas_data.h"
#include "support/bytes.h"

namespace traguardo {

// `CWMP`, while it normalises the tables: these sensors have this measure class whatever the record says.
std::span<const MeasureClassRow> load_measure_classes();

// `CWMP::ConvertiCanale`, step of the repair flag: one more pass of a filter.
enum class RepairFilter : u8 {
  kFir,
  kMovingAverage,  // half width: frequency in Hz / 3, in whole numbers
};
struct RepairPassRow {
  i32 sensor_id;
  RepairFilter filter;
};
std::span<const RepairPassRow> repair_passes();

// Thermocouples, stored relative to the logger's cold junction; and the sensors that hold the junction's temperature,
// of which the first logged channel counts.
std::span<const i32> thermocouple_sensors();
std::span<const i32> cold_junction_sensors();

}  // namespace traguardo
