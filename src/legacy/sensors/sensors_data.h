// SPDX-License-Identifier: MIT
// All that is known of a sensor by its id: one row each, in rising order of the ids. A new sensor is a new row.
#pragma once

#include <span>

#include "legacy/sensors/sensor_formulas_data.h"
#include "support/bytes.h"

namespace traguardo {

// What the kind of a sensor says.
inline constexpr u8 kSensorKindPolynomial = 1;  // with a unit descriptor: x c1 + c0 + x^2 c2 + x^3 c3 + x^4 c4
// Every other kind (0, 2, and 101 to 104, which name curves that no conversion uses) has a formula of its own.

// Families (unit codes of unit_texts()) whose scale and unit text are the user's own, whatever a descriptor says.
inline constexpr u8 kTemperatureFamily = 20;
inline constexpr u8 kSpeedFamily = 30;

// In the third parameter of a channel: its calibration was changed after logging. The first two parameters then hold
// the values of the logging, the fourth and fifth today's.
inline constexpr float kRecalibrated = -666.0F;

// The sensor in `CDBSensori`, for channels with a unit descriptor: the unit that its values stand in, and how its words
// become values. Beside kinds other than 1 the five numbers are the parameters p4 to p0 and no conversion reads them.
// Family 0: the data base doesn't know the sensor, which is then converted as sensor 0 is.
struct SensorScale {
  u8 family = 0;  // a unit code of unit_texts(); a family override of a channel changes it for later ones
  u8 kind = 0;
  float c4 = 0.0F;
  float c3 = 0.0F;
  float c2 = 0.0F;
  float c1 = 0.0F;
  float c0 = 0.0F;
};

// How words become values where no polynomial does.
struct SensorConversion {
  SensorFormula formula = SensorFormula::kPlain;
  bool tests_validity = false;  // words from 0x8000 to 0xCFFF give 0.0
  SystemChoice choice = SystemChoice::kNone;
  i32 curve = 0;          // number in sensor_curves(), 0 for none
  float constant = 0.0F;  // as the formula's line says, 0 where it has none
};

// Unit text of a channel whose unit field is no descriptor.
enum class MeasureUnit : u8 {
  kAsStored,         // the unit field as it stands
  kFixed,            // `unit_text`
  kUserSpeed,        // the user's unit texts
  kUserTemperature,  //
  kUserPressure,     //
  kByQuantity,       // by the quantity of the stored unit, see stored_units_data.h
};

// Thermocouples are stored relative to the logger's cold junction, of whose sensors the first logged channel counts.
enum class JunctionRole : u8 { kNoRole, kRelativeToJunction, kIsJunction };

// One more pass of a filter at the end of the conversion.
enum class RepairFilter : u8 {
  kNoPass,
  kFirPass,
  kAveragePass,  // half width: frequency in Hz / 3, in whole numbers
};

struct SensorTraits {
  MeasureUnit unit = MeasureUnit::kAsStored;
  const char* unit_text = nullptr;  // 8-bit
  u16 measure_class = 0;            // whatever the record says; 0: what the record says
  JunctionRole junction = JunctionRole::kNoRole;
  RepairFilter repair = RepairFilter::kNoPass;
};

struct SensorRow {
  i32 id = 0;
  SensorScale scale = {};
  SensorConversion conversion = {};
  SensorTraits traits = {};
};

std::span<const SensorRow> sensors();
// A row of defaults with that id for a sensor that has none: its words are its values.
SensorRow find_sensor(i32 sensor_id);

}  // namespace traguardo
