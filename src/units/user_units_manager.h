// SPDX-License-Identifier: MIT
// In which units a user sees values: one set of choices for the whole process. A host of the library has no call into
// it, so the library works with the metric defaults; the readers and the math channels take factors and texts from
// here.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "units/auto_calibration_values.h"
#include "units/exact_units.h"
#include "units/function_units.h"
#include "units/functions.h"

namespace traguardo {

// The settings that follow the system of length and speed.
struct LengthSettings {
  double speed_factor;           // Display units per metre per second.
  double inverse_speed_factor;   // Metres per second per display unit.
  double length_factor;          // Metres per display unit.
  double inverse_length_factor;  // Display units per metre.
  double long_distance_factor;   // Kilometres per display unit.
  double small_length_factor;    // Millimetres per display unit.
  double mass_factor;            // Kilograms per display unit.
  double area_factor;            // Square metres per display unit.
  std::string speed_unit;
  std::string mass_unit;
  std::string area_unit;
  std::string length_unit;
  std::string bracketed_length_unit;
  std::string small_length_unit;
  std::string bracketed_small_length_unit;
  std::string small_length_format;
  std::string speed_format;
  std::string long_distance_format;
  i32 distance_code;
  double consumption_pair;
};

struct TemperatureSettings {
  double scale;
  double offset;
  std::string unit;
  i32 code;
  std::string format;
};

struct PressureSettings {
  double factor;
  std::string unit;
  std::string format;
  std::string coarse_format;
};

// What a channel can have a unit text of its own for.
enum class ChannelUnitKind { kTemperature, kLength, kVoltage, kSpeed, kPressure, kVolume, kAngularSpeed };
inline constexpr int kChannelUnitKindCount = 7;

using NameTextPairs = std::vector<std::pair<std::string, std::string>>;

// Bit of the `changed` word of the three Set...System operations.
inline constexpr u32 kSystemChanged = 1;

class IUserUnitOfMeasureManager {
 public:
  virtual ~IUserUnitOfMeasureManager() = default;

  // The entry of a function, made if absent; null, with a line in the log, if the memory can't be had. Functions share
  // the entry of their catalogue row.
  virtual CUserUnitsAndNDecPerFID* AssicuraPresenzaIniFunzione(u32 fid) = 0;
  virtual CUserAutoCalValuesPerChName* AssicuraPresenzaIniCanale(std::string_view name) = 0;
  // False, with a line in the log, if the unit was refused. For speed, temperature and pressure the choice also
  // switches that system.
  virtual bool SetUnitaScelta(u32 fid, std::string_view unit) = 0;
  virtual bool SetNumDecimaliDefault(u32 fid, std::string_view unit, i32 decimals) = 0;
  virtual bool SetValoreAutoCal(std::string_view channel, std::string_view key, float value) = 0;
  virtual float GetValoreAutoCal(std::string_view channel, std::string_view key) const = 0;
  // The units of a function with their decimals; the unit texts of all channels. False, with a line in the log, without
  // a list to fill.
  virtual bool GetElencoNdecInFID(u32 fid, std::vector<std::pair<std::string, i32>>* out) = 0;
  virtual bool GetElencoUnitaInNomiCanali(NameTextPairs* out) const = 0;

  // `changed` may be null; else its bit kSystemChanged tells whether the system is another one now.
  virtual void SetLengthSystem(bool imperial, u32* changed) = 0;
  virtual void SetTemperatureSystem(bool imperial, u32* changed) = 0;
  virtual void SetPressureSystem(bool imperial, u32* changed) = 0;
  virtual bool IsLengthImperial() const = 0;
  virtual bool IsTemperatureImperial() const = 0;
  virtual bool IsPressureImperial() const = 0;

  virtual const double& GetSpeedFactor() const = 0;
  virtual const double& GetInverseSpeedFactor() const = 0;
  virtual const double& GetLengthFactor() const = 0;
  virtual const double& GetInverseLengthFactor() const = 0;
  virtual const double& GetLongDistanceFactor() const = 0;
  virtual const double& GetSmallLengthFactor() const = 0;
  virtual const double& GetMassFactor() const = 0;
  virtual const double& GetAreaFactor() const = 0;
  virtual const std::string& GetSpeedUnit() const = 0;
  virtual const std::string& GetMassUnit() const = 0;
  virtual const std::string& GetAreaUnit() const = 0;
  virtual const std::string& GetLengthUnit() const = 0;
  virtual const std::string& GetBracketedLengthUnit() const = 0;
  virtual const std::string& GetSmallLengthUnit() const = 0;
  virtual const std::string& GetBracketedSmallLengthUnit() const = 0;
  virtual const std::string& GetSmallLengthFormat() const = 0;
  virtual const std::string& GetSpeedFormat() const = 0;
  virtual const std::string& GetLongDistanceFormat() const = 0;
  virtual const i32& GetDistanceCode() const = 0;
  virtual const double& GetConsumptionPair() const = 0;
  virtual const double& GetTemperatureScale() const = 0;
  virtual const double& GetTemperatureOffset() const = 0;
  virtual const std::string& GetTemperatureUnit() const = 0;
  virtual const i32& GetTemperatureCode() const = 0;
  virtual const std::string& GetTemperatureFormat() const = 0;
  virtual const double& GetPressureFactor() const = 0;
  virtual const std::string& GetPressureUnit() const = 0;
  virtual const std::string& GetPressureFormat() const = 0;
  virtual const std::string& GetCoarsePressureFormat() const = 0;

  // The unit texts of channels, by channel name; empty for a channel without one.
  virtual void ListChannelUnits(ChannelUnitKind kind, NameTextPairs* out) const = 0;
  virtual std::string GetChannelUnit(ChannelUnitKind kind, std::string_view channel) const = 0;
  virtual void SetChannelUnit(ChannelUnitKind kind, std::string_view channel, std::string_view unit) = 0;

  // `value` in another unit of the function, a fraction rounded up in its fourth decimal; with `round`, values above 10
  // as whole numbers.
  virtual double Convert(u32 fid, std::string_view from, std::string_view to, double value, bool round) const = 0;
  // The number of an odometer in its chosen unit, without the unit.
  virtual void FormatDistance(double metres, std::string* out) = 0;

  // Exact conversions, apart from the catalogue's rounded factors. The value itself for an unknown unit.
  virtual double ConvertExact(Quantity quantity, std::string_view from, std::string_view to, double value) const = 0;
  virtual double ExactFactor(Quantity quantity, std::string_view from, std::string_view to) const = 0;
};

class CUserUnitsOfMeasureMgr final : public IUserUnitOfMeasureManager {
 public:
  // The one object of the process, made at first use. Entries come into being under a lock, since every file that is
  // opened asks for some; who changes a setting does so before files are opened.
  static CUserUnitsOfMeasureMgr* GetInstance();
  static void Release();

  CUserUnitsOfMeasureMgr();
  CUserUnitsOfMeasureMgr(const CUserUnitsOfMeasureMgr&) = delete;
  CUserUnitsOfMeasureMgr& operator=(const CUserUnitsOfMeasureMgr&) = delete;

  CUserUnitsAndNDecPerFID* AssicuraPresenzaIniFunzione(u32 fid) override;
  CUserAutoCalValuesPerChName* AssicuraPresenzaIniCanale(std::string_view name) override;
  bool SetUnitaScelta(u32 fid, std::string_view unit) override;
  bool SetNumDecimaliDefault(u32 fid, std::string_view unit, i32 decimals) override;
  bool SetValoreAutoCal(std::string_view channel, std::string_view key, float value) override;
  float GetValoreAutoCal(std::string_view channel, std::string_view key) const override;
  bool GetElencoNdecInFID(u32 fid, std::vector<std::pair<std::string, i32>>* out) override;
  bool GetElencoUnitaInNomiCanali(NameTextPairs* out) const override;

  void SetLengthSystem(bool imperial, u32* changed) override;
  void SetTemperatureSystem(bool imperial, u32* changed) override;
  void SetPressureSystem(bool imperial, u32* changed) override;
  bool IsLengthImperial() const override { return length_imperial_; }
  bool IsTemperatureImperial() const override { return temperature_imperial_; }
  bool IsPressureImperial() const override { return pressure_imperial_; }

  const double& GetSpeedFactor() const override { return length_.speed_factor; }
  const double& GetInverseSpeedFactor() const override { return length_.inverse_speed_factor; }
  const double& GetLengthFactor() const override { return length_.length_factor; }
  const double& GetInverseLengthFactor() const override { return length_.inverse_length_factor; }
  const double& GetLongDistanceFactor() const override { return length_.long_distance_factor; }
  const double& GetSmallLengthFactor() const override { return length_.small_length_factor; }
  const double& GetMassFactor() const override { return length_.mass_factor; }
  const double& GetAreaFactor() const override { return length_.area_factor; }
  const std::string& GetSpeedUnit() const override { return length_.speed_unit; }
  const std::string& GetMassUnit() const override { return length_.mass_unit; }
  const std::string& GetAreaUnit() const override { return length_.area_unit; }
  const std::string& GetLengthUnit() const override { return length_.length_unit; }
  const std::string& GetBracketedLengthUnit() const override { return length_.bracketed_length_unit; }
  const std::string& GetSmallLengthUnit() const override { return length_.small_length_unit; }
  const std::string& GetBracketedSmallLengthUnit() const override { return length_.bracketed_small_length_unit; }
  const std::string& GetSmallLengthFormat() const override { return length_.small_length_format; }
  const std::string& GetSpeedFormat() const override { return length_.speed_format; }
  const std::string& GetLongDistanceFormat() const override { return length_.long_distance_format; }
  const i32& GetDistanceCode() const override { return length_.distance_code; }
  const double& GetConsumptionPair() const override { return length_.consumption_pair; }
  const double& GetTemperatureScale() const override { return temperature_.scale; }
  const double& GetTemperatureOffset() const override { return temperature_.offset; }
  const std::string& GetTemperatureUnit() const override { return temperature_.unit; }
  const i32& GetTemperatureCode() const override { return temperature_.code; }
  const std::string& GetTemperatureFormat() const override { return temperature_.format; }
  const double& GetPressureFactor() const override { return pressure_.factor; }
  const std::string& GetPressureUnit() const override { return pressure_.unit; }
  const std::string& GetPressureFormat() const override { return pressure_.format; }
  const std::string& GetCoarsePressureFormat() const override { return pressure_.coarse_format; }

  void ListChannelUnits(ChannelUnitKind kind, NameTextPairs* out) const override;
  std::string GetChannelUnit(ChannelUnitKind kind, std::string_view channel) const override;
  void SetChannelUnit(ChannelUnitKind kind, std::string_view channel, std::string_view unit) override;

  double Convert(u32 fid, std::string_view from, std::string_view to, double value, bool round) const override;
  void FormatDistance(double metres, std::string* out) override;
  double ConvertExact(Quantity quantity, std::string_view from, std::string_view to, double value) const override;
  double ExactFactor(Quantity quantity, std::string_view from, std::string_view to) const override;

  // The units that the system shows by default, and the unit that the values of a function's row are stored against.
  const std::vector<std::string>& default_units() const { return default_units_; }
  std::string reference_unit(u32 fid) const;

 private:
  using TextMap = std::map<std::string, std::string, std::less<>>;

  void switch_system(u32 catalogue_fid, bool imperial);
  const TextMap& channel_units(ChannelUnitKind kind) const { return channel_units_[static_cast<std::size_t>(kind)]; }

  CFunzioni functions_;
  mutable std::mutex entries_lock_;
  std::map<u32, std::unique_ptr<CUserUnitsAndNDecPerFID>> per_function_;
  std::map<std::string, std::unique_ptr<CUserAutoCalValuesPerChName>, std::less<>> per_channel_;
  bool length_imperial_ = false;
  bool temperature_imperial_ = false;
  bool pressure_imperial_ = false;
  LengthSettings length_;
  TemperatureSettings temperature_;
  PressureSettings pressure_;
  std::array<TextMap, kChannelUnitKindCount> channel_units_;
  std::vector<std::string> default_units_;
  std::map<u32, std::string> reference_units_;
};

}  // namespace traguardo
