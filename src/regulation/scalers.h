// SPDX-License-Identifier: MIT
// How the limit on the boost pressure follows the pressure of the day.
#pragma once

#include <memory>

#include "support/bytes.h"

namespace traguardo {

// The pressure that a limit file is written for.
inline constexpr float kStandardPressureMbar = 1010.0F;

class CScaler {
 public:
  explicit CScaler(float pressure) : pressure_(pressure) {}
  virtual ~CScaler() = default;
  // `limit` in mbar.
  virtual float Scale(float limit) const = 0;
  virtual const char* Name() const = 0;

 protected:
  float pressure() const { return pressure_; }

 private:
  float pressure_;
};

// Pressure in mbar.
class CScalerDifference : public CScaler {
 public:
  using CScaler::CScaler;
  float Scale(float limit) const override { return limit - (kStandardPressureMbar - pressure()); }
  const char* Name() const override { return "subtract"; }
};

// Pressure in mbar.
class CScalerPercent1 : public CScaler {
 public:
  using CScaler::CScaler;
  float Scale(float limit) const override { return pressure() / kStandardPressureMbar * limit; }
  const char* Name() const override { return "percent"; }
};

// Pressure in bar.
class CScalerPercent2 : public CScaler {
 public:
  using CScaler::CScaler;
  float Scale(float limit) const override { return limit * pressure(); }
  const char* Name() const override { return "percent 2"; }
};

// scaling: 1 and 2 are the percent scalers, anything else the difference.
std::unique_ptr<CScaler> make_scaler(i32 scaling, float pressure_bar);

}  // namespace traguardo
