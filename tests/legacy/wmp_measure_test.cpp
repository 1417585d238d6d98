// SPDX-License-Identifier: MIT
#include "legacy/texts/wmp_measure.h"

#include <gtest/gtest.h>

#include <tuple>

#include "opened_session.h"

namespace traguardo::test {
namespace {

// The measure of a channel that stands alone in a version 451 file.
class OneMeasure : public OpenedSession {
 public:
  explicit OneMeasure(const wmp::Channel& channel) : OpenedSession(wmp::build(file_of(channel))) {}
  CWMPMisura& measure() { return *session().measures.at(0); }
  std::string shown_unit() { return narrow_low_bytes(measure().unit_text()); }

 private:
  static wmp::File file_of(const wmp::Channel& channel) {
    wmp::File file = small_file(451);
    file.logged = {channel};
    return file;
  }
};

wmp::Channel sensor_channel(u16 sensor, std::string unit) {
  wmp::Channel channel = plain_channel("A", {10, 20, 30});
  channel.sensor = sensor;
  channel.unit = std::move(unit);
  return channel;
}

// A descriptor of the packed form: a little-endian word of decimals and unit id. The decimal form is a tab, the unit id
// in four digits and the decimals in one.
std::string packed_descriptor(u32 unit_id, u32 decimals) {
  const u32 word = decimals << 12 | unit_id;
  return {'\x0B', static_cast<char>(word & 0xFF), static_cast<char>(word >> 8)};
}

TEST(Measure, UnitTexts) {
  const std::tuple<u16, std::string, std::string> cases[] = {
      {0, "anything", "rpm"},
      {1, "mph", "km/h"},
      {91, "K", "C"},
      {42, "x", "\xA1/sec"},
      {17, "bar", "bar"},
      // A descriptor decides by unit id, or by what the user wants for temperature and speed.
      {52, "\t03001", "bar"},
      {52, packed_descriptor(304, 2), "psi"},
      {91, "\t01021", "C"},
      {93, "\t02021", "km/h"},
      {17, "\t99991", ""},
      {17, packed_descriptor(40, 1), ""},  // a unit without a text
      // A descriptor of a sensor that nobody knows is a text; its first byte stays in it.
      {12345, "\t03001", "\t03001"},
      {0, "\t0300x", "rpm"},
      // Sensor 999 stores its unit and shows the user's.
      {999, "mbar", "bar"},
      {999, "C", "C"},
      {999, "in", "mm"},
      {999, "mV", "mV"},
  };
  for (const auto& [sensor, stored, shown] : cases) {
    EXPECT_EQ(OneMeasure(sensor_channel(sensor, stored)).shown_unit(), shown)
        << sensor << " stores " << testing::PrintToString(stored);
  }
}

TEST(Measure, UnitTextsOfAnImperialUser) {
  const ImperialUnits imperial;
  const std::tuple<u16, std::string, std::string> cases[] = {
      {93, "x", "mph"}, {97, "x", "PSI"}, {999, "mm", "in"}, {91, "\t01001", "F"}, {52, "\t03001", "bar"}};
  for (const auto& [sensor, stored, shown] : cases) {
    EXPECT_EQ(OneMeasure(sensor_channel(sensor, stored)).shown_unit(), shown) << sensor << ' ' << stored;
  }
  EXPECT_EQ(OneMeasure(sensor_channel(1, "x")).measure().parameter_label(0), "Wheel circumference (inches):");
}

TEST(Measure, RewritesOldUnitFields) {
  const std::string nuls(4, '\0');
  const std::string rest(4, '\x55');
  struct Case {
    const char* what;
    u16 sensor;
    u8 form;
    std::string stored;
    std::string wanted;  // all ten bytes
    std::string shown;
  };
  const std::string old_201 = packed_descriptor(201, 2) + "zz" + rest;
  const std::string old_800_3 = packed_descriptor(800, 3) + "ab" + rest;
  const Case cases[] = {
      {"a speed", 3001, 1, old_201, "\t02011" + nuls, "km/h"},
      // What is shown is the unit of the new field, not that of the old one.
      {"a hidden one as well", 3004, 253, old_201, "\t04052" + nuls, "g"},
      {"only where the record says so", 3001, 0, old_201, old_201 + nuls.substr(3), "km/h"},
      {"600 by number", 600, 1, old_800_3, "\t08003" + nuls, "#"},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.what);
    wmp::Channel channel = sensor_channel(one.sensor, one.stored);
    channel.form = one.form;
    OneMeasure alone(channel);
    const u8* field = alone.session().tables.channels[0].record.unit_bytes();
    EXPECT_EQ(std::string(field, field + 10), one.wanted);
    EXPECT_EQ(alone.shown_unit(), one.shown);
  }
}

TEST(Measure, SettersChangeTheCalibrationAndConvertAgain) {
  using Parameters = std::array<float, 5>;
  using Setter = bool (CWMPMisura::*)(float);
  const std::tuple<const char*, u16, Setter, float, Parameters, Parameters> cases[] = {
      {"pulses", 0, &CWMPMisura::SetParametro_1, 3, {1, 0, 0, 0, 0}, {1, 0, -666, 3, 0}},
      {"wheel, first change", 93, &CWMPMisura::SetParametro_1, 1500, {1400, 8}, {1400, 8, -666, 1500, 8}},
      {"wheel, second change", 93, &CWMPMisura::SetParametro_1, 5, {1400, 8, -666, 1500, 4}, {1400, 8, -666, 10, 4}},
      {"magnets, first change", 1, &CWMPMisura::SetParametro_2, 5.9F, {1400, 8}, {1400, 8, -666, 1400, 5}},
      {"bottom, not above zero", 8, &CWMPMisura::SetParametro_3, 4, {0, 1, -5, 1, 1}, {0, 1, 0, 1, 1}},
  };
  for (const auto& [what, sensor, setter, value, before, after] : cases) {
    wmp::Channel channel = sensor_channel(sensor, "x");
    channel.parameters = before;
    OneMeasure alone(channel);
    EXPECT_TRUE((alone.measure().*setter)(value)) << what;
    EXPECT_EQ(alone.session().tables.channels[0].record.parameters(), after) << what;
  }
  // The values follow: a multiplier of 2 in place of 0.5.
  wmp::Channel multiplied = sensor_channel(70, "x");
  multiplied.parameters = {0.5F, 0, 0, 0, 0};
  OneMeasure alone(multiplied);
  EXPECT_EQ(alone.values(0), (std::vector<float>{5, 10, 15}));
  alone.measure().SetParametro_1(2);
  EXPECT_EQ(alone.values(0), (std::vector<float>{20, 40, 60}));
}

}  // namespace
}  // namespace traguardo::test
