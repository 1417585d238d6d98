// SPDX-License-Identifier: MIT
// Raw words of every sensor to values and back. Values of the formulas stand in sensor_expectations_data.h; what is
// here was worked out by hand.
#include "legacy/sensors/sensors.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "legacy/sensor_expectations_data.h"
#include "legacy/sensors/sensor_database.h"
#include "legacy/sensors/unit_descriptor.h"
#include "units/user_units_manager.h"

namespace traguardo {
namespace {

using namespace test;
using Parameters = std::array<float, 5>;
using UnitBytes = std::array<u8, kUnitFieldWidth>;

void choose_systems(CUserUnitsOfMeasureMgr* units, u8 imperial) {
  units->SetLengthSystem((imperial & kSpeed) != 0, nullptr);
  units->SetTemperatureSystem((imperial & kTemperature) != 0, nullptr);
  units->SetPressureSystem((imperial & kPressure) != 0, nullptr);
}

UnitBytes unit_bytes(std::string_view text) {
  UnitBytes bytes{};
  for (std::size_t i = 0; i < text.size(); ++i) bytes[i] = static_cast<u8>(text[i]);
  return bytes;
}

// A data base and sensors over it in metric units.
class SensorsTest : public testing::Test {
 protected:
  float value(i32 sensor_id, const Parameters& parameters, const UnitBytes& unit, u16 word) {
    float out = -12345.0F;
    EXPECT_TRUE(sensors_.ConvertiCampioni(sensor_id, parameters, unit, std::span(&word, 1), std::span(&out, 1)));
    return out;
  }
  std::vector<float> by_formula(i32 sensor_id, const Parameters& parameters, float scale, float offset,
                                const std::vector<u16>& words) {
    std::vector<float> out(words.size());
    sensors_.convert_by_formula(sensor_id, parameters, scale, offset, words, out);
    return out;
  }

  CUserUnitsOfMeasureMgr units_;
  CDBSensori data_base_;
  CSensori sensors_{&units_, &data_base_};
};

TEST(SensorFormulas, EveryValueIsThatOfAnIndependentCalculation) {
  CUserUnitsOfMeasureMgr units;
  const CDBSensori shared_data_base;
  for (const SensorExpectation& row : kSensorExpectations) {
    choose_systems(&units, row.imperial);
    // A family override stays in the data base, so each row gets one of its own.
    CDBSensori fresh_data_base = shared_data_base;
    CSensori sensors(&units, &fresh_data_base);
    std::vector<u16> words;
    for (const SensorSample& sample : row.samples) words.push_back(sample.word);
    std::vector<float> values(words.size());
    sensors.ConvertiCampioni(row.sensor_id, row.parameters, row.unit, words, values);
    for (std::size_t i = 0; i < words.size(); ++i) {
      EXPECT_EQ(values[i], row.samples[i].value)
          << "sensor " << row.sensor_id << ", unit " << testing::PrintToString(row.unit) << ", word " << words[i]
          << ", imperial " << int{row.imperial};
    }
  }
}

TEST_F(SensorsTest, FamilyOverrideStaysForLaterChannelsOfTheSensor) {
  const UnitBytes psi = unit_bytes("\t03042");
  const UnitBytes psi_of_psi_sensor = unit_bytes("\t03042043");
  const float in_psi = value(129, {}, psi, 100);
  EXPECT_EQ(in_psi, 100.0F) << "volts have no way to psi";
  // Sensor 244 is in bar, and bar to psi is a reciprocal one; in its new family the value stands as it is.
  EXPECT_EQ(value(244, {}, psi, 100), 1.0F / (100.0F * 14.5F));
  EXPECT_EQ(value(244, {}, psi_of_psi_sensor, 100), 100.0F);
  EXPECT_EQ(value(244, {}, psi, 100), 100.0F);
  // Others keep theirs, and a sensor that nobody knows stays unknown.
  EXPECT_EQ(data_base_.scale(248)->family, 40);
  EXPECT_EQ(value(12345, {}, psi_of_psi_sensor, 100), 100.0F);
  EXPECT_EQ(data_base_.scale(12345), nullptr);
}

// --- Gears

Parameters thresholds(const std::array<u16, 10>& words) {
  Parameters parameters{};
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    parameters[i] = std::bit_cast<float>(u32{words[2 * i]} | (u32{words[2 * i + 1]} << 16));
  }
  return parameters;
}

TEST_F(SensorsTest, GearByThresholds) {
  const Parameters gears = thresholds({100, 600, 1200, 1800, 2400, 3000, 3400, 3700, 3900, 4090});
  // 350 lies in the middle of the first two; 0xFFFF is -1.
  EXPECT_EQ(by_formula(90, gears, 1.0F, 0.0F, {0, 100, 349, 350, 351, 3000, 4096, 4097, 0x7FFF, 0xFFFF}),
            (std::vector<float>{0, 0, 0, 0, 1, 5, 9, 10, 10, 0}));
  EXPECT_EQ(by_formula(90, gears, 2.0F, 0.5F, {0, 601, 5000}), (std::vector<float>{0.5F, 2.5F, 20.5F}));
  // Word 0 is gear 0, whatever threshold lies there; the threshold itself has its own number.
  const Parameters fourth_at_zero = thresholds({500, 600, 700, 0, 900, 1000, 1100, 1200, 1300, 1400});
  EXPECT_EQ(by_formula(90, fourth_at_zero, 1.0F, 0.0F, {0, 1}), (std::vector<float>{0, 3}));
  // Not within 10000 of any threshold.
  EXPECT_EQ(by_formula(90, gears, 1.0F, 0.0F, {0x8000}), (std::vector<float>{0}));
}

TEST_F(SensorsTest, GearByNearestThresholdWithTolerance) {
  const Parameters even = thresholds({0, 400, 800, 1200, 1600, 2000, 2400, 2800, 3200, 3600});
  using Case = std::tuple<const char*, Parameters, std::vector<u16>, std::vector<float>>;
  const Case cases[] = {
      {"within a quarter of the distance to the neighbour, else the sample before",
       even,
       {410, 550, 700, 650, 1200},
       {1, 1, 2, 2, 3}},
      {"without a sample before it is wide", even, {3750, 3}, {9, 0}},
      {"a negative word is gear 0, and what later samples repeat", even, {1200, 0xFFFF, 550}, {3, 0, 0}},
      {"a tie is the lower gear's, too far to count", even, {400, 600}, {1, 1}},
      {"a tolerance below 1 accepts every word",
       thresholds({0, 3, 100, 200, 300, 400, 500, 600, 700, 800}),
       {100, 1},
       {2, 0}},
  };
  for (const i32 sensor : {99, 104}) {
    for (const auto& [what, gears, words, values] : cases) {
      EXPECT_EQ(by_formula(sensor, gears, 1.0F, 0.0F, words), values) << what;
    }
  }
  // Scaled once, repeated as it is.
  EXPECT_EQ(by_formula(99, even, 2.0F, 1.0F, {410, 550}), (std::vector<float>{3, 3}));
}

// --- The way back

TEST(SensorInverse, WordsSensorClassAndParameters) {
  struct Case {
    u16 sensor_id;
    Parameters parameters;
    u8 imperial;
    float value;
    u16 word;
    u16 sensor_after;
    u16 measure_class;
    float new_factor;  // 0: the parameters stay; else p0 is this and the others are 0
  };
  const Case cases[] = {
      {0, {1}, kMetric, 6500.7F, 6500, 0, 4, 0},
      {0, {}, kMetric, -1.9F, 0xFFFF, 0, 4, 0},
      {0, {}, kMetric, 70000.0F, 4464, 0, 4, 0},
      {1, {1900, 4}, kMetric, 123.47F, 1234, 1, 3, 0},
      {5, {7, 8}, kMetric, 12.35F, 123, 70, 1, 0.1F},
      // Goes on under today's number.
      {56, {1, 2}, kMetric, 12.305F, 1230, 84, 1, 0.01F},
      {8, {1344, 0, -100, 3688, 100}, kMetric, 50.0F, 2516, 8, 1, 0},
      {8, {1344, 0, -100, 3688, 100}, kMetric, -50.0F, 672, 8, 1, 0},
      {8, {1344, 0, -100, 3688, 100}, kSpeed, 2.0F, 2534, 8, 1, 0},
      {8, {1344, 0, 0, 3688, 0}, kMetric, 5.0F, 0, 8, 1, 0},
      {9, {7, 100, 400}, kMetric, 3.0F, 19, 9, 1, 0},
      {9, {7, 100, 400}, kPressure, 3.0F, 181, 9, 1, 0},
      {10, {2079}, kMetric, 0.5F, 2297, 10, 1, 0},
      {11, {2079}, kMetric, 0.5F, 1860, 11, 1, 0},
      {17, {0, 0, 5, 5}, kMetric, 2.5F, 2048, 17, 1, 0},
      {38, {25, 3621, 3000, 1.02F}, kMetric, 100.0F, 29, 38, 3, 0},
      {38, {25, 3621, 3000, 1.02F}, kSpeed, 100.0F, 26, 38, 3, 0},
      {42, {2048}, kMetric, 50.0F, 3198, 42, 1, 0},
      {45, {}, kMetric, 20.0F, 2401, 45, 1, 0},
      {45, {}, kTemperature, 68.0F, 2401, 45, 1, 0},
      {68, {}, kMetric, 12.5F, 2275, 68, 1, 0},
      {999, {-40, 160}, kMetric, 10.0F, 16383, 999, 1, 0},
      {999, {10, 10}, kMetric, 10.0F, 0, 999, 1, 0},
      {67, {1, 2, 3, 4, 5}, kMetric, 3.555F, 355, 67, 5, 0.01F},
  };
  CUserUnitsOfMeasureMgr units;
  CDBSensori data_base;
  const CSensori sensors(&units, &data_base);
  for (const Case& c : cases) {
    choose_systems(&units, c.imperial);
    u16 sensor_id = c.sensor_id;
    u16 measure_class = 77;
    u16 word = 0xABCD;
    Parameters parameters = c.parameters;
    EXPECT_TRUE(
        sensors.RicavaCampioni(&sensor_id, &measure_class, std::span(&c.value, 1), std::span(&word, 1), &parameters));
    EXPECT_EQ(word, c.word) << "sensor " << c.sensor_id << ", value " << c.value;
    EXPECT_EQ(sensor_id, c.sensor_after) << c.sensor_id;
    EXPECT_EQ(measure_class, c.measure_class) << c.sensor_id;
    const Parameters expected = c.new_factor == 0.0F ? c.parameters : Parameters{c.new_factor, 0, 0, 0, 0};
    EXPECT_EQ(parameters, expected) << c.sensor_id;
  }
}

TEST(UnitDescriptors, BothFormsAndWhatIsNone) {
  struct Case {
    std::string field;
    bool valid;
    u32 unit_id;
    i32 decimals;
    u8 family;
  };
  const Case cases[] = {
      {"\t03042", true, 304, 2, 0},
      {"\t20000043\xFF", true, 2000, 0, 43},
      // No such unit code, and nothing to read: no override.
      {"\t03042256", true, 304, 2, 0},
      {"\t030424x3", true, 304, 2, 0},
      {"\t 3042", false, 0, 1, 0},
      {"\t0304", false, 0, 1, 0},
      {"\x0B\x2C\x11", true, 300, 1, 0},
      {"\x0B\xFF\xFF\1\2\3\4\5\6\x2B", true, 4095, 15, 43},
      {"km/h", false, 0, 1, 0},
  };
  for (const Case& one : cases) {
    const UnitDescriptor read = read_unit_descriptor(unit_bytes(one.field));
    EXPECT_EQ(std::tuple(read.valid, read.unit_id, read.decimals, read.family_override),
              std::tuple(one.valid, one.unit_id, one.decimals, one.family))
        << testing::PrintToString(one.field);
  }
}

}  // namespace
}  // namespace traguardo
