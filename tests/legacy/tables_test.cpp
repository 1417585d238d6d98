// The tables of the legacy reader against numbers worked out from their sources: a changed, lost, doubled or moved row,
// a digit, a letter of a text, all show here.
#include <gtest/gtest.h>

#include <source_location>
#include <tuple>
#include <type_traits>

#include "helpers/table_sums.h"
#include "legacy/derived/synthesised_channels_data.h"
#include "legacy/file/dump_layout_data.h"
#include "legacy/file/wmp_layout_data.h"
#include "legacy/file/wmp_messages_data.h"
#include "legacy/sensors/conversion_sensors_data.h"
#include "legacy/sensors/inverse_formulas_data.h"
#include "legacy/sensors/sensor_curves_data.h"
#include "legacy/sensors/sensor_formulas_data.h"
#include "legacy/sensors/sensors_data.h"
#include "legacy/sensors/stored_units_data.h"
#include "legacy/sensors/unit_tables_data.h"
#include "legacy/texts/measure_data.h"
#include "legacy/texts/session_texts_data.h"

namespace traguardo {
namespace {

// Adds a column in the way that its type asks for.
template <typename Value>
void add_column(TableDigest& digest, const Value& value) {
  if constexpr (std::is_enum_v<Value>) {
    digest.choice(value);
  } else if constexpr (std::is_same_v<Value, bool>) {
    digest.flag(value);
  } else if constexpr (std::is_integral_v<Value>) {
    digest.number(value);
  } else if constexpr (std::is_floating_point_v<Value>) {
    digest.real(value);
  } else {
    digest.text(value);
  }
}

// `columns` ties the columns of a row together.
template <typename Row, std::size_t Extent, typename Columns>
void expect_sums(std::span<const Row, Extent> rows, const TableSums& wanted, Columns columns,
                 const std::source_location& where = std::source_location::current()) {
  const testing::ScopedTrace trace(where.file_name(), static_cast<int>(where.line()), "this table");
  const TableSums found = table_sums(rows, [&](TableDigest& digest, const Row& row) {
    std::apply([&](const auto&... column) { (add_column(digest, column), ...); }, columns(row));
  });
  EXPECT_EQ(found, wanted);
}

constexpr auto kWholeRow = [](const auto& r) { return std::tie(r); };

TEST(LegacyTables, Units) {
  expect_sums(unit_texts(), {64, 6630, 0x2f2a000ad1e9e003}, [](const auto& r) { return std::tie(r.code, r.text); });
  expect_sums(unit_ids(), {86, 155409, 0xdf634fedbfaa86e2},
              [](const auto& r) { return std::tie(r.first_id, r.last_id, r.code); });
  expect_sums(unit_conversions(), {214, 42360, 0x2bf02d78937e3ebb},
              [](const auto& r) { return std::tie(r.from, r.to, r.scale, r.offset, r.reciprocal); });
  expect_sums(stored_units(), {22, 0, 0x629bd3dfabf63abc}, [](const auto& r) { return std::tie(r.unit, r.quantity); });
  expect_sums(stored_unit_rules(), {59, 0, 0xb3b2deab987e28fc}, [](const auto& r) {
    return std::tie(r.unit, r.rule, r.target, r.first_step, r.first, r.second_step, r.second);
  });
}

TEST(LegacyTables, Sensors) {
  expect_sums(sensors(), {277, 166617, 0xcf4b98692b2ea318},
              [](const auto& r) { return std::tie(r.id, r.family, r.kind, r.c4, r.c3, r.c2, r.c1, r.c0); });
  expect_sums(repair_passes(), {12, 2013, 0x497dfba9d031d1b1},
              [](const auto& r) { return std::tie(r.sensor_id, r.filter); });
  expect_sums(thermocouple_sensors(), {4, 18, 0xa3a9ea5a94771e35}, kWholeRow);
  expect_sums(cold_junction_sensors(), {2, 120, 0x3fed917e969ade8a}, kWholeRow);
}

TEST(LegacyTables, Curves) {
  TableDigest digest;
  i32 number = 0;
  for (const SensorCurveRow& curve : sensor_curves()) {
    EXPECT_EQ(curve.number, ++number);
    EXPECT_EQ(curve.points[1].raw > curve.points[0].raw, curve.rising) << "curve " << number;
    for (const CurvePoint& point : curve.points) {
      digest.number(curve.number).number(point.raw).number(point.value).end_row();
    }
  }
  EXPECT_EQ(number, 10);
  EXPECT_EQ(digest.sums(), (TableSums{91, 137490, 0x23928867e61a4793}));
}

TEST(LegacyTables, Formulas) {
  expect_sums(sensor_formulas(), {66, 9006, 0x7800038780e90e4a}, [](const auto& r) {
    return std::tie(r.sensor_id, r.formula, r.tests_validity, r.choice, r.curve, r.constant);
  });
  expect_sums(word_polynomials(), {10, 465, 0x1a1d1f4e0f1cf3f7},
              [](const auto& r) { return std::tie(r.sensor_id, r.below, r.c0, r.c1, r.c2, r.c3, r.c4); });
  expect_sums(double_polynomials(), {2, 116, 0x70298bb279524e8f},
              [](const auto& r) { return std::tie(r.sensor_id, r.up_to, r.c0, r.c1, r.c2, r.c3); });
  expect_sums(pulse_ratios(), {7, 0, 0xacf9f77ec980dbb5}, kWholeRow);
}

TEST(LegacyTables, InverseFormulas) {
  const auto class_columns = [](const auto& r) { return std::tie(r.sensor_id, r.measure_class); };
  expect_sums(sensor_replacements(), {2, 276, 0x5ce09e9ab9f9a9d3},
              [](const auto& r) { return std::tie(r.sensor_id, r.replacement); });
  expect_sums(inverse_measure_classes(), {51, 4111, 0x843638d0bfa37f34}, class_columns);
  expect_sums(inverse_formulas(), {34, 3297, 0xf7a056491c1746b7},
              [](const auto& r) { return std::tie(r.sensor_id, r.formula, r.a, r.b); });
  expect_sums(load_measure_classes(), {9, 3373, 0x88dd9c0076f93a3e}, class_columns);
}

TEST(LegacyTables, FileLayout) {
  expect_sums(sample_rates(), {15, 68563, 0x656681da48eb2de8},
              [](const auto& r) { return std::tie(r.logger_code, r.frequency_hz, r.period_ms); });
  expect_sums(software_letters(), {16, 1080, 0x396c0aa394a6b851}, kWholeRow);
}

TEST(LegacyTables, Texts) {
  const auto message_columns = [](const auto& r) { return std::tie(r.code, r.id, r.text, r.table); };
  expect_sums(wmp_messages(), {26, 325, 0xb02bed93224eadf3}, message_columns);
  expect_sums(wmp_dump_messages(), {5, 4010, 0xc40b15223e669092}, message_columns);
  expect_sums(venue_types(), {42, 861, 0x18c357558e236ff9}, [](const auto& r) { return std::tie(r.code, r.text); });
  expect_sums(run_default_texts(), {6, 1892, 0xf8aeb9519edcf8fb},
              [](const auto& r) { return std::tie(r.section, r.offset, r.width, r.text); });
}

TEST(LegacyTables, SynthesisedChannels) {
  expect_sums(computation_kinds(), {13, 78, 0x564e7b5d1d122b37},
              [](const auto& r) { return std::tie(r.kind, r.computation); });
  expect_sums(synthesised_channels(), {12, 28661, 0xe49dfba0d0227c0d}, [](const auto& r) {
    return std::tie(r.kind, r.name, r.unit, r.measure_class, r.rate_index, r.display_min, r.display_max, r.decimals,
                    r.reference_candidate, r.function, r.sub_function, r.formula, r.needs, r.log_line);
  });
  expect_sums(device_kinds(), {20, 1675, 0xd69016bf127a0a1a},
              [](const auto& r) { return std::tie(r.device_code, r.kind); });
  expect_sums(configuration_kinds(), {8, 63, 0x60c721d606dadb29},
              [](const auto& r) { return std::tie(r.file, r.kind); });
}

TEST(LegacyTables, DumpLayouts) {
  expect_sums(device_layouts(), {32, 31309, 0xf3d4564d0302b351},
              [](const auto& r) { return std::tie(r.device_code, r.layout_key); });
  const auto place = [](const DumpTable& table) { return std::tie(table.offset, table.length); };
  expect_sums(dump_layouts(), {5, 84094, 0xd7f66a290494648b}, [&](const auto& r) {
    return std::tuple_cat(std::tie(r.layout_key), place(r.channel_flags), place(r.schedule), place(r.sensors),
                          place(r.extended_sensors), place(r.extended_flags), place(r.further_flags));
  });
  expect_sums(schedules(), {5, 14030, 0x74c7e5045176efeb},
              [](const auto& r) { return std::tie(r.family, r.length, r.long_length, r.extended); });
}

TEST(LegacyTables, Measures) {
  expect_sums(rewritten_units(), {6, 18026, 0x4b11b3d56dbe3d86},
              [](const auto& r) { return std::tie(r.sensor_id, r.digits); });
  expect_sums(measure_units(), {44, 5071, 0xce0d81d03e2cc6d8},
              [](const auto& r) { return std::tie(r.sensor_id, r.unit, r.text); });
  expect_sums(parameter_labels(), {81, 6129, 0x4a5372ad79970a4e}, [](const auto& r) {
    return std::tie(r.parameter, r.sensor_id, r.text, r.id, r.imperial_text, r.imperial_id);
  });
  expect_sums(setters(), {41, 2094, 0xd619e9b5f3c9530f},
              [](const auto& r) { return std::tie(r.operation, r.sensor_id, r.effect, r.parameter); });
  expect_sums(setter_refusals(), {5, 15, 0xbfc08ba424ef0017},
              [](const auto& r) { return std::tie(r.operation, r.function, r.line, r.converts); });
}

}  // namespace
}  // namespace traguardo
