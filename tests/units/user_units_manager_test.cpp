// SPDX-License-Identifier: MIT
#include "units/user_units_manager.h"

#include <gtest/gtest.h>

#include <cmath>

namespace traguardo {
namespace {

TEST(UserUnits, OneObjectPerProcess) {
  CUserUnitsOfMeasureMgr* first = CUserUnitsOfMeasureMgr::GetInstance();
  first->SetPressureSystem(true, nullptr);
  EXPECT_EQ(CUserUnitsOfMeasureMgr::GetInstance(), first);
  CUserUnitsOfMeasureMgr::Release();
  EXPECT_FALSE(CUserUnitsOfMeasureMgr::GetInstance()->IsPressureImperial());
  CUserUnitsOfMeasureMgr::Release();
}

TEST(UserUnits, SettingsOfBothSystems) {
  CUserUnitsOfMeasureMgr units;
  for (const bool imperial : {false, true, false}) {
    units.SetLengthSystem(imperial, nullptr);
    units.SetTemperatureSystem(imperial, nullptr);
    units.SetPressureSystem(imperial, nullptr);
    EXPECT_EQ(units.GetInverseSpeedFactor(), 1.0 / (imperial ? 2.2369363 : 3.6));
    EXPECT_EQ(units.GetSmallLengthFactor(), imperial ? 25.4 : 1.0);
    EXPECT_EQ(units.GetConsumptionPair(), imperial ? 0.6818182 : 3.6);
    EXPECT_EQ(units.GetTemperatureOffset(), imperial ? 32.0 : 0.0);
    EXPECT_EQ(units.GetPressureFactor(), imperial ? 14.5039 : 1.0);
  }
}

TEST(UserUnits, TheChangedFlagTouchesItsBitAlone) {
  CUserUnitsOfMeasureMgr units;
  u32 changed = 0xF0;
  units.SetLengthSystem(true, &changed);
  EXPECT_EQ(changed, 0xF1U);
  units.SetLengthSystem(true, &changed);
  EXPECT_EQ(changed, 0xF0U);
}

TEST(UserUnits, AChosenUnitSwitchesItsSystem) {
  CUserUnitsOfMeasureMgr units;
  const struct {
    u32 fid;
    const char* unit;
    bool length, temperature, pressure;
  } steps[] = {
      {0x10, "mph", true, false, false}, {0x11, "F", true, true, false},     {0xE, "psi", true, true, false},
      {0xE, "inHg", true, true, true},   {0x20E, "bar", true, true, true},  // Another function of the same quantity.
      {0xE, "bar", true, true, false},   {0x10, "km/h", false, true, false}, {0x11, "C", false, false, false},
  };
  for (const auto& step : steps) {
    EXPECT_TRUE(units.SetUnitaScelta(step.fid, step.unit)) << step.unit;
    EXPECT_EQ(units.IsLengthImperial(), step.length) << step.unit;
    EXPECT_EQ(units.IsTemperatureImperial(), step.temperature) << step.unit;
    EXPECT_EQ(units.IsPressureImperial(), step.pressure) << step.unit;
  }
}

TEST(UserUnits, FunctionsShareTheEntryOfTheirCatalogueRow) {
  CUserUnitsOfMeasureMgr units;
  EXPECT_EQ(units.AssicuraPresenzaIniFunzione(0x68010), units.AssicuraPresenzaIniFunzione(0x10));
  const CUserUnitsAndNDecPerFID* battery = units.AssicuraPresenzaIniFunzione(0x195);
  EXPECT_EQ(battery->GetChosenUnit(), "V");
  EXPECT_EQ(battery->GetLongName(), "Battery Voltage");
  EXPECT_EQ(battery->GetNumDecimaliDefault("V"), 1);
  EXPECT_EQ(units.AssicuraPresenzaIniFunzione(0x1C)->GetChosenUnit(), "");
  EXPECT_EQ(units.reference_unit(0x31091), "C");
  EXPECT_EQ(units.default_units().front(), "km/h");
}

TEST(UserUnits, DecimalsCalibrationsAndTextsOfChannels) {
  CUserUnitsOfMeasureMgr units;
  EXPECT_TRUE(units.SetNumDecimaliDefault(0x10, "mph", 0));
  EXPECT_FALSE(units.SetNumDecimaliDefault(0x10, "km/h", 2));
  EXPECT_FALSE(units.SetNumDecimaliDefault(0x10, "knots", 1));
  EXPECT_FALSE(units.SetUnitaScelta(0x16, "gal"));
  std::vector<std::pair<std::string, i32>> decimals;
  EXPECT_TRUE(units.GetElencoNdecInFID(0x10, &decimals));
  EXPECT_EQ(decimals, (std::vector<std::pair<std::string, i32>>{{"km/h", 1}, {"mph", 0}}));

  EXPECT_TRUE(units.SetValoreAutoCal("Brake", "zero", 1.5F));
  EXPECT_EQ(units.GetValoreAutoCal("Brake", "zero"), 1.5F);
  EXPECT_EQ(units.GetValoreAutoCal("Brake", "span"), 0.0F);
  EXPECT_EQ(units.AssicuraPresenzaIniCanale("Brake")->GetValoreAutoCal("zero"), 1.5F);

  units.SetChannelUnit(ChannelUnitKind::kPressure, "Oil", "psi");
  units.SetChannelUnit(ChannelUnitKind::kSpeed, "Wheel", "mph");
  EXPECT_EQ(units.GetChannelUnit(ChannelUnitKind::kPressure, "Oil"), "psi");
  EXPECT_EQ(units.GetChannelUnit(ChannelUnitKind::kSpeed, "Oil"), "");
  NameTextPairs pairs;
  units.ListChannelUnits(ChannelUnitKind::kSpeed, &pairs);
  EXPECT_EQ(pairs, (NameTextPairs{{"Wheel", "mph"}}));
  pairs.clear();
  EXPECT_TRUE(units.GetElencoUnitaInNomiCanali(&pairs));
  EXPECT_EQ(pairs.size(), 2U);
}

TEST(UserUnits, Convert) {
  const CUserUnitsOfMeasureMgr units;
  // 100 km/h are 62.1371 mph less the rounding of a float: 62.137097, whose fourth decimal is rounded up.
  EXPECT_NEAR(units.Convert(0x10, "km/h", "mph", 100.0, false), 62.1371, 1e-9);
  EXPECT_EQ(units.Convert(0x10, "km/h", "mph", 100.0, true), 62.0);
  EXPECT_EQ(units.Convert(0x11, "C", "F", 0.0, false), 32.0);
  EXPECT_NEAR(units.Convert(0x11, "C", "F", -20.5, false), -4.8999, 1e-9) << "the whole number below -4.9 is -5";
  EXPECT_NEAR(units.Convert(0x10, "km/h", "km/h", 20.5, false), 20.5001, 1e-9) << "also a whole step is rounded up";
  EXPECT_EQ(units.Convert(0x10, "km/h", "km/h", 20.5, true), 21.0);
  EXPECT_EQ(units.Convert(0x10, "km/h", "km/h", 3.00005, false), 3.0) << "a fraction below 0.0001 is dropped";
  EXPECT_NEAR(units.Convert(0x10, "km/h", "km/h", 9.25, true), 9.2501, 1e-9) << "not above 10: no rounding";
}

TEST(UserUnits, ExactConversions) {
  const CUserUnitsOfMeasureMgr units;
  const struct {
    Quantity quantity;
    const char *from, *to;
    double value, expected;
  } cases[] = {
      {Quantity::kAngle, "deg", "rad", 180.0, 3.14159265358979},
      {Quantity::kLength, "mi", "km", 2.0, 3.218688},
      {Quantity::kPressure, "bar", "psi", 1.0, 14.5037737730},
      {Quantity::kTemperature, "C", "F", 100.0, 212.0},
      {Quantity::kTemperature, "F", "K", 32.0, 273.15},
      {Quantity::kTime, "h", "ms", 1.0, 3600000.0},
      {Quantity::kSpeed, "mph", "km/h", 100.0, 160.9344},
      {Quantity::kVolume, "UKgal", "l", 2.0, 9.09218},
      {Quantity::kPower, "kW", "HP", 1.0, 735499.62},  // Through its inverted factor.
      {Quantity::kLength, "m", "bar", 5.0, 5.0},
  };
  for (const auto& c : cases) {
    const double converted = units.ConvertExact(c.quantity, c.from, c.to, c.value);
    EXPECT_NEAR(converted / c.expected, 1.0, 1e-8) << c.from << " to " << c.to << ": " << converted;
  }
  EXPECT_DOUBLE_EQ(units.ExactFactor(Quantity::kLength, "ft", "m"), 0.3048);
}

}  // namespace
}  // namespace traguardo
