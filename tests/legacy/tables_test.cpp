// SPDX-License-Identifier: MIT
// The long tables of the legacy reader against numbers worked out from their sources: a changed, lost, doubled or moved
// row, a digit, a letter of a text, all show here.
#include <gtest/gtest.h>

#include <source_location>
#include <tuple>
#include <type_traits>

#include "helpers/table_sums.h"
#include "legacy/file/dump_layout_data.h"
#include "legacy/sensors/inverse_formulas_data.h"
#include "legacy/sensors/sensor_curves_data.h"
#include "legacy/sensors/sensors_data.h"
#include "legacy/sensors/stored_units_data.h"
#include "legacy/sensors/unit_tables_data.h"

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

TEST(LegacyTables, Units) {
  expect_sums(unit_texts(), {64, 6630, 0x2f2a000ad1e9e003}, [](const auto& r) { return std::tie(r.code, r.text); });
  expect_sums(unit_ids(), {86, 155409, 0xdf634fedbfaa86e2},
              [](const auto& r) { return std::tie(r.first_id, r.last_id, r.code); });
  expect_sums(unit_conversions(), {214, 42360, 0x2bf02d78937e3ebb},
              [](const auto& r) { return std::tie(r.from, r.to, r.scale, r.offset, r.reciprocal); });
  expect_sums(stored_unit_rules(), {59, 0, 0xb3b2deab987e28fc}, [](const auto& r) {
    return std::tie(r.unit, r.rule, r.target, r.first_step, r.first, r.second_step, r.second);
  });
}

TEST(LegacyTables, SensorsAndCurves) {
  expect_sums(sensors(), {284, 167812, 0x332a9195d88f2ac1}, [](const auto& r) {
    const SensorScale& s = r.scale;
    const SensorConversion& c = r.conversion;
    const SensorTraits& t = r.traits;
    return std::tie(r.id, s.family, s.kind, s.c4, s.c3, s.c2, s.c1, s.c0, c.formula, c.tests_validity, c.choice,
                    c.curve, c.constant, t.unit, t.unit_text, t.measure_class, t.junction, t.repair);
  });
  TableDigest digest;
  for (const SensorCurveRow& curve : sensor_curves()) {
    for (const CurvePoint& point : curve.points) {
      digest.number(curve.number).number(point.raw).number(point.value).end_row();
    }
  }
  EXPECT_EQ(digest.sums(), (TableSums{91, 137490, 0x23928867e61a4793}));
}

TEST(LegacyTables, TheWayBackAndTheDump) {
  expect_sums(inverse_measure_classes(), {51, 4111, 0x843638d0bfa37f34},
              [](const auto& r) { return std::tie(r.sensor_id, r.measure_class); });
  expect_sums(inverse_formulas(), {34, 3297, 0xf7a056491c1746b7},
              [](const auto& r) { return std::tie(r.sensor_id, r.formula, r.a, r.b); });
  expect_sums(device_layouts(), {32, 31309, 0xf3d4564d0302b351},
              [](const auto& r) { return std::tie(r.device_code, r.layout_key); });
}

}  // namespace
}  // namespace traguardo
