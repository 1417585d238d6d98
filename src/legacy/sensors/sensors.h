// SPDX-License-Identifier: MIT
// Raw words of a legacy channel to values and back, by what the sensor data base knows and the user's units say.
#pragma once

#include <array>
#include <span>

#include "legacy/sensors/sensor_formulas.h"
#include "legacy/sensors/sensors_data.h"
#include "legacy/sensors/unit_descriptor.h"
#include "support/bytes.h"

namespace traguardo {

class CDBSensori;
class IUserUnitOfMeasureManager;

class CSensori {
 public:
  // Both borrowed, for the life of the object.
  CSensori(IUserUnitOfMeasureManager* user_units, CDBSensori* data_base);
  virtual ~CSensori() = default;

  // Values of one channel in the unit that its descriptor names, or, without one, in the user's units. sensor_id: any;
  // an unknown one gives the words as they are. parameters: those of the channel record. A family override in the
  // descriptor changes the data base. Always true. REQUIRES: `out` is at least as long as `raw`.
  bool ConvertiCampioni(i32 sensor_id, const std::array<float, 5>& parameters, UnitField unit, std::span<const u16> raw,
                        std::span<float> out);

  // The way back, for the files that hold values: the words that the first conversion would have needed. Sensor id and
  // parameters change where the words now need another formula. Values beyond 16 bits keep their low ones. Always true.
  // REQUIRES: `raw` is at least as long as `values`.
  bool RicavaCampioni(u16* sensor_id, u16* measure_class, std::span<const float> values, std::span<u16> raw,
                      std::array<float, 5>* parameters) const;

  // The formula of a sensor alone: value * scale + offset in the user's units, whatever the unit field says.
  // REQUIRES: `out` is at least as long as `raw`.
  void convert_by_formula(i32 sensor_id, const std::array<float, 5>& parameters, float scale, float offset,
                          std::span<const u16> raw, std::span<float> out) const;

  SystemChoices system_choices() const;
  const CDBSensori& data_base() const { return *data_base_; }

 private:
  // value * scale + offset, or 1 / that.
  struct UnitScale {
    float scale = 1.0F;
    float offset = 0.0F;
    bool reciprocal = false;
  };
  UnitScale unit_scale(u8 family, u32 unit_id) const;
  static void convert_by_polynomial(i32 sensor_id, const SensorScale& row, const UnitScale& unit,
                                    std::span<const u16> raw, std::span<float> out);

  IUserUnitOfMeasureManager* user_units_;
  CDBSensori* data_base_;
};

}  // namespace traguardo
