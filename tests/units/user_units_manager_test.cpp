// SPDX-License-Identifier: MIT
#include "units/user_units_manager.h"

#include <gtest/gtest.h>

#include <cmath>

#include "helpers/temp_folder.h"
#include "support/event_log.h"

namespace traguardo {
namespace {

// Switches the event log on for the length of a test.
class LogCapture {
 public:
  LogCapture() : path_(folder_.wide("events.log")) { g_percorso_log = path_.c_str(); }
  ~LogCapture() { g_percorso_log = nullptr; }
  // What was logged since the last call, line numbers as '#'.
  std::string take() {
    std::string text;
    bool in_brackets = false;
    for (const char c : folder_.read("events.log").substr(taken_)) {
      if (c == '[') text += "[#";
      if (c == '[' || c == ']') in_brackets = c == '[';
      if (!in_brackets && c != '\r') text += c;
    }
    taken_ = folder_.read("events.log").size();
    return text;
  }

 private:
  test::TempFolder folder_;
  std::wstring path_;
  std::size_t taken_ = 0;
};

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
    const auto pick = [imperial](auto metric, auto other) { return imperial ? other : metric; };
    const auto text = [imperial](const char* metric, const char* other) { return imperial ? other : metric; };
    EXPECT_EQ(units.GetSpeedFactor(), pick(3.6, 2.2369363));
    EXPECT_EQ(units.GetInverseSpeedFactor(), 1.0 / pick(3.6, 2.2369363));
    EXPECT_EQ(units.GetLengthFactor(), pick(1.0, 0.3048));
    EXPECT_NEAR(units.GetInverseLengthFactor(), pick(1.0, 3.28084), 1e-6);
    EXPECT_EQ(units.GetLongDistanceFactor(), pick(1.0, 1.609344));
    EXPECT_EQ(units.GetSmallLengthFactor(), pick(1.0, 25.4));
    EXPECT_EQ(units.GetMassFactor(), pick(1.0, 0.4535924));
    EXPECT_EQ(units.GetAreaFactor(), pick(1.0, 0.09290304));
    EXPECT_EQ(units.GetSpeedUnit(), text("km/h", "mph"));
    EXPECT_EQ(units.GetMassUnit(), text("kg", "lb"));
    EXPECT_EQ(units.GetAreaUnit(), text("m^2", "feet^2"));
    EXPECT_EQ(units.GetLengthUnit(), text("m", "feet"));
    EXPECT_EQ(units.GetBracketedLengthUnit(), text("[m]", "[feet]"));
    EXPECT_EQ(units.GetSmallLengthUnit(), text("mm", "in"));
    EXPECT_EQ(units.GetBracketedSmallLengthUnit(), text("[mm]", "[inches]"));
    EXPECT_EQ(units.GetSmallLengthFormat(), text("%.0f", "%.2f"));
    EXPECT_EQ(units.GetSpeedFormat(), "%.1f");
    EXPECT_EQ(units.GetLongDistanceFormat(), text("%.1f", "%.0f"));
    EXPECT_EQ(units.GetDistanceCode(), pick(201, 203));
    EXPECT_EQ(units.GetConsumptionPair(), pick(3.6, 0.6818182));
    EXPECT_EQ(units.GetTemperatureScale(), pick(1.0, 1.8));
    EXPECT_EQ(units.GetTemperatureOffset(), pick(0.0, 32.0));
    EXPECT_EQ(units.GetTemperatureUnit(), text("C", "F"));
    EXPECT_EQ(units.GetTemperatureCode(), pick(100, 102));
    EXPECT_EQ(units.GetTemperatureFormat(), "%.0f");
    EXPECT_EQ(units.GetPressureFactor(), pick(1.0, 14.5039));
    EXPECT_EQ(units.GetPressureUnit(), text("bar", "PSI"));
    EXPECT_EQ(units.GetPressureFormat(), text("%.3f", "%.2f"));
    EXPECT_EQ(units.GetCoarsePressureFormat(), text("%.1f", "%.0f"));
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

TEST(UserUnits, MessagesOfRefusedChoices) {
  CUserUnitsOfMeasureMgr units;
  LogCapture log;
  EXPECT_FALSE(units.SetUnitaScelta(0x16, "gal"));
  EXPECT_EQ(log.take(),
            "CUserUnitsAndNDecPerFID::SetUnitaScelta [#] ERROR = Bad unit requested\n"
            "CUserUnitsOfMeasureMgr::SetUnitaScelta [#] ERROR = Bad param or can't alloc memory\n");
  EXPECT_FALSE(units.SetNumDecimaliDefault(0x10, "km/h", 2));
  EXPECT_FALSE(units.SetNumDecimaliDefault(0x10, "knots", 1));
  EXPECT_FALSE(units.SetNumDecimaliDefault(0x1C, "", 1));
  constexpr char kManager[] =
      "CUserUnitsOfMeasureMgr::SetNumDecimaliDefault [#] ERROR = Bad param or can't alloc memory\n";
  constexpr char kEntry[] = "CUserUnitsAndNDecPerFID::SetNumDecimaliDefault [#] ERROR = ";
  EXPECT_EQ(log.take(), std::string(kEntry) + "Bad ndec requested\n" + kManager + kEntry + "Bad unit requested\n" +
                            kManager + kEntry + "Bad data\n" + kManager);
  EXPECT_EQ(units.AssicuraPresenzaIniFunzione(0x1C)->GetNumDecimaliDefault("V"), 0);
  EXPECT_EQ(log.take(), "CUserUnitsAndNDecPerFID::GetNumDecimaliDefault [#] ERROR = Bad data\n");
  EXPECT_FALSE(units.GetElencoNdecInFID(0x10, nullptr));
  EXPECT_FALSE(units.GetElencoUnitaInNomiCanali(nullptr));
  EXPECT_EQ(log.take(),
            "CUserUnitsOfMeasureMgr::GetElencoNdecInFID [#] ERROR = Bad param or can't alloc memory\n"
            "CUserUnitsOfMeasureMgr::GetElencoUnitaInNomiCanali [#] ERROR = Bad param or can't alloc memory\n");
}

TEST(UserUnits, DecimalsCalibrationsAndTextsOfChannels) {
  CUserUnitsOfMeasureMgr units;
  EXPECT_TRUE(units.SetNumDecimaliDefault(0x10, "mph", 0));
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

TEST(UserUnits, FormatDistance) {
  CUserUnitsOfMeasureMgr units;
  std::string text = "before";
  units.FormatDistance(12345.6, &text);
  EXPECT_EQ(text, "12.3");
  EXPECT_TRUE(units.SetUnitaScelta(0x1608, "mi"));
  units.FormatDistance(12345.6, &text);
  EXPECT_EQ(text, "7.7");
  units.FormatDistance(1e308, &text);
  EXPECT_EQ(text.size(), 305U + 2U) << "6.2e304 miles";
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
