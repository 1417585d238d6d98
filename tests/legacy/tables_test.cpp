// The tables of the legacy reader against numbers worked out from their sources: a changed, lost, doubled or moved row,
// a digit, a letter of a text, all show here.
#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <utility>

#include "helpers/table_sums.h"
#include "legacy/conversion_sensors_data.h"
#include "legacy/dump_layout_data.h"
#include "legacy/inverse_formulas_data.h"
#include "legacy/measure_data.h"
#include "legacy/sensor_curves_data.h"
#include "legacy/sensor_formulas_data.h"
#include "legacy/sensors_data.h"
#include "legacy/session_texts_data.h"
#include "legacy/stored_units_data.h"
#include "legacy/synthesised_channels_data.h"
#include "legacy/unit_tables_data.h"
#include "legacy/wmp_layout_data.h"
#include "legacy/wmp_messages_data.h"

namespace traguardo {
namespace {

using D = TableDigest;

TEST(LegacyTables, Units) {
  EXPECT_EQ(table_sums(unit_texts(), [](D& d, const UnitTextRow& r) { d.number(r.code).text(r.text); }),
            (TableSums{64, 6630, 0x2f2a000ad1e9e003}));
  EXPECT_EQ(
      table_sums(unit_ids(), [](D& d, const UnitIdRow& r) { d.number(r.first_id).number(r.last_id).number(r.code); }),
      (TableSums{86, 155409, 0xdf634fedbfaa86e2}));
  EXPECT_EQ(table_sums(unit_conversions(),
                       [](D& d, const UnitConversionRow& r) {
                         d.number(r.from).number(r.to).real(r.scale).real(r.offset).number(r.reciprocal);
                       }),
            (TableSums{214, 42360, 0x2bf02d78937e3ebb}));
}

TEST(LegacyTables, Sensors) {
  EXPECT_EQ(table_sums(sensors(),
                       [](D& d, const SensorRow& r) {
                         d.number(r.id).number(r.family).number(r.kind);
                         d.real(r.c4).real(r.c3).real(r.c2).real(r.c1).real(r.c0);
                       }),
            (TableSums{277, 166617, 0xcf4b98692b2ea318}));
}

TEST(LegacyTables, Curves) {
  TableDigest digest;
  i32 number = 0;
  for (const SensorCurveRow& curve : sensor_curves()) {
    EXPECT_EQ(curve.number, ++number);
    ASSERT_GE(curve.points.size(), 2u);
    for (std::size_t i = 0; i < curve.points.size(); ++i) {
      digest.number(curve.number).number(curve.points[i].raw).number(curve.points[i].value).end_row();
      if (i > 0) {
        EXPECT_EQ(curve.points[i].raw > curve.points[i - 1].raw, curve.rising) << "curve " << number;
      }
    }
  }
  EXPECT_EQ(number, 10);
  EXPECT_EQ(digest.sums(), (TableSums{91, 137490, 0x23928867e61a4793}));
}

TEST(LegacyTables, Formulas) {
  EXPECT_EQ(table_sums(sensor_formulas(),
                       [](D& d, const SensorFormulaRow& r) {
                         d.number(r.sensor_id).choice(r.formula).flag(r.tests_validity).choice(r.choice);
                         d.number(r.curve).real(r.constant);
                       }),
            (TableSums{66, 9006, 0x7800038780e90e4a}));
  EXPECT_EQ(table_sums(word_polynomials(),
                       [](D& d, const WordPolynomialRow& r) {
                         d.number(r.sensor_id).real(r.below).real(r.c0).real(r.c1).real(r.c2).real(r.c3).real(r.c4);
                       }),
            (TableSums{10, 465, 0x1a1d1f4e0f1cf3f7}));
  EXPECT_EQ(table_sums(double_polynomials(),
                       [](D& d, const DoublePolynomialRow& r) {
                         d.number(r.sensor_id).real(r.up_to).real(r.c0).real(r.c1).real(r.c2).real(r.c3);
                       }),
            (TableSums{2, 116, 0x70298bb279524e8f}));
  EXPECT_EQ(table_sums(pulse_ratios(), [](D& d, float ratio) { d.real(ratio); }),
            (TableSums{7, 0, 0xacf9f77ec980dbb5}));
}

TEST(LegacyTables, InverseFormulas) {
  const auto add_class = [](D& d, const MeasureClassRow& r) { d.number(r.sensor_id).number(r.measure_class); };
  EXPECT_EQ(table_sums(sensor_replacements(),
                       [](D& d, const SensorReplacementRow& r) { d.number(r.sensor_id).number(r.replacement); }),
            (TableSums{2, 276, 0x5ce09e9ab9f9a9d3}));
  EXPECT_EQ(table_sums(inverse_measure_classes(), add_class), (TableSums{51, 4111, 0x843638d0bfa37f34}));
  EXPECT_EQ(
      table_sums(inverse_formulas(),
                 [](D& d, const InverseFormulaRow& r) { d.number(r.sensor_id).choice(r.formula).real(r.a).real(r.b); }),
      (TableSums{34, 3297, 0xf7a056491c1746b7}));
  EXPECT_EQ(table_sums(load_measure_classes(), add_class), (TableSums{9, 3373, 0x88dd9c0076f93a3e}));
}

TEST(LegacyTables, ConversionSensors) {
  const auto add_sensor = [](D& d, i32 sensor) { d.number(sensor); };
  EXPECT_EQ(table_sums(repair_passes(), [](D& d, const RepairPassRow& r) { d.number(r.sensor_id).choice(r.filter); }),
            (TableSums{12, 2013, 0x497dfba9d031d1b1}));
  EXPECT_EQ(table_sums(thermocouple_sensors(), add_sensor), (TableSums{4, 18, 0xa3a9ea5a94771e35}));
  EXPECT_EQ(table_sums(cold_junction_sensors(), add_sensor), (TableSums{2, 120, 0x3fed917e969ade8a}));
}

TEST(LegacyTables, StoredUnits) {
  EXPECT_EQ(table_sums(stored_units(), [](D& d, const StoredUnitRow& r) { d.text(r.unit).choice(r.quantity); }),
            (TableSums{22, 0, 0x629bd3dfabf63abc}));
  EXPECT_EQ(table_sums(stored_unit_rules(),
                       [](D& d, const StoredUnitRuleRow& r) {
                         d.text(r.unit).choice(r.rule).text(r.target);
                         d.choice(r.first_step).real(r.first).choice(r.second_step).real(r.second);
                       }),
            (TableSums{59, 0, 0xb3b2deab987e28fc}));
}

TEST(LegacyTables, FileLayout) {
  EXPECT_EQ(table_sums(wmp_versions(),
                       [](D& d, const WmpVersionRow& r) {
                         d.number(r.version).choice(r.reader).number(r.block_head).number(r.main_header);
                         d.number(r.configuration).number(r.identity).number(r.names).number(r.extended_names);
                         d.number(r.channel_record).number(r.channel_extension);
                         d.number(r.lap_record).number(r.lap_extension);
                         d.number(r.run_record).number(r.extra_record).choice(r.samples);
                       }),
            (TableSums{10, 32385, 0xef567d96e2046b84}));
  EXPECT_EQ(table_sums(sample_rates(),
                       [](D& d, const SampleRateRow& r) {
                         d.number(r.logger_code).number(r.frequency_hz).number(r.period_ms);
                       }),
            (TableSums{15, 68563, 0x656681da48eb2de8}));
  EXPECT_EQ(table_sums(old_record_copies(),
                       [](D& d, const OldRecordCopyRow& r) {
                         d.number(r.from).number(r.from_width).number(r.to).number(r.to_width);
                       }),
            (TableSums{8, 812, 0x2e174c2a6d80092b}));
  EXPECT_EQ(table_sums(software_letters(), [](D& d, char letter) { d.number(letter); }),
            (TableSums{16, 1080, 0x396c0aa394a6b851}));
}

TEST(LegacyTables, Messages) {
  const auto add_message = [](D& d, const WmpMessageRow& r) { d.number(r.code).text(r.id).text(r.text).text(r.table); };
  EXPECT_EQ(table_sums(wmp_messages(), add_message), (TableSums{26, 325, 0xb02bed93224eadf3}));
  EXPECT_EQ(table_sums(wmp_dump_messages(), add_message), (TableSums{5, 4010, 0xc40b15223e669092}));
}

TEST(LegacyTables, SynthesisedChannels) {
  EXPECT_EQ(table_sums(computation_kinds(),
                       [](D& d, const ComputationKindRow& r) { d.number(r.kind).choice(r.computation); }),
            (TableSums{13, 78, 0x564e7b5d1d122b37}));
  EXPECT_EQ(table_sums(synthesised_channels(),
                       [](D& d, const SynthesisedChannelRow& r) {
                         d.number(r.kind).text(r.name).text(r.unit).number(r.measure_class).number(r.rate_index);
                         d.real(r.display_min).real(r.display_max).number(r.decimals).flag(r.reference_candidate);
                         d.number(r.function).number(r.sub_function).text(r.formula).number(r.needs);
                         d.number(r.log_line);
                       }),
            (TableSums{12, 28661, 0xe49dfba0d0227c0d}));
  EXPECT_EQ(table_sums(device_kinds(), [](D& d, const DeviceKindRow& r) { d.number(r.device_code).number(r.kind); }),
            (TableSums{20, 1675, 0xd69016bf127a0a1a}));
  EXPECT_EQ(
      table_sums(configuration_kinds(), [](D& d, const ConfigurationKindRow& r) { d.text(r.file).number(r.kind); }),
      (TableSums{8, 63, 0x60c721d606dadb29}));
}

TEST(LegacyTables, SessionTexts) {
  EXPECT_EQ(table_sums(venue_types(), [](D& d, const VenueTypeRow& r) { d.number(r.code).text(r.text); }),
            (TableSums{42, 861, 0x18c357558e236ff9}));
  EXPECT_EQ(table_sums(run_default_texts(),
                       [](D& d, const RunDefaultTextRow& r) {
                         d.choice(r.section).number(r.offset).number(r.width).text(r.text);
                       }),
            (TableSums{6, 1892, 0xf8aeb9519edcf8fb}));
}

TEST(LegacyTables, DumpLayouts) {
  EXPECT_EQ(table_sums(device_layouts(),
                       [](D& d, const DeviceLayoutRow& r) { d.number(r.device_code).number(r.layout_key); }),
            (TableSums{32, 31309, 0xf3d4564d0302b351}));
  EXPECT_EQ(table_sums(dump_layouts(),
                       [](D& d, const DumpLayoutRow& r) {
                         d.number(r.layout_key);
                         for (const DumpTable& table : {r.channel_flags, r.schedule, r.sensors, r.extended_sensors,
                                                        r.extended_flags, r.further_flags})
                           d.number(table.offset).number(table.length);
                       }),
            (TableSums{5, 84094, 0xd7f66a290494648b}));
  EXPECT_EQ(table_sums(schedules(),
                       [](D& d, const ScheduleRow& r) {
                         d.number(r.family).number(r.length).number(r.long_length).flag(r.extended);
                       }),
            (TableSums{5, 14030, 0x74c7e5045176efeb}));
}

TEST(LegacyTables, Measures) {
  EXPECT_EQ(
      table_sums(rewritten_units(), [](D& d, const RewrittenUnitRow& r) { d.number(r.sensor_id).text(r.digits); }),
      (TableSums{6, 18026, 0x4b11b3d56dbe3d86}));
  EXPECT_EQ(table_sums(measure_units(),
                       [](D& d, const MeasureUnitRow& r) { d.number(r.sensor_id).choice(r.unit).text(r.text); }),
            (TableSums{44, 5071, 0xce0d81d03e2cc6d8}));
  EXPECT_EQ(table_sums(parameter_labels(),
                       [](D& d, const ParameterLabelRow& r) {
                         d.number(r.parameter).number(r.sensor_id).text(r.text).text(r.id);
                         d.text(r.imperial_text).text(r.imperial_id);
                       }),
            (TableSums{81, 6129, 0x4a5372ad79970a4e}));
  EXPECT_EQ(table_sums(setters(),
                       [](D& d, const SetterRow& r) {
                         d.number(r.operation).number(r.sensor_id).choice(r.effect).number(r.parameter);
                       }),
            (TableSums{41, 2094, 0xd619e9b5f3c9530f}));
  EXPECT_EQ(table_sums(setter_refusals(),
                       [](D& d, const SetterRefusalRow& r) {
                         d.number(r.operation).text(r.function).text(r.line).flag(r.converts);
                       }),
            (TableSums{5, 15, 0xbfc08ba424ef0017}));
}

// Maps are made of these tables: a key that stood twice would lose a row without a word.
TEST(LegacyTables, EveryKeyStandsOnce) {
  const auto distinct = [](const auto& rows, auto key) {
    std::set<decltype(key(rows[0]))> keys;
    for (const auto& row : rows) keys.insert(key(row));
    return keys.size() == rows.size();
  };
  EXPECT_TRUE(distinct(unit_texts(), [](const UnitTextRow& r) { return r.code; }));
  EXPECT_TRUE(distinct(unit_conversions(), [](const UnitConversionRow& r) { return std::pair(r.from, r.to); }));
  EXPECT_TRUE(distinct(sensors(), [](const SensorRow& r) { return r.id; }));
  EXPECT_TRUE(distinct(sensor_formulas(), [](const SensorFormulaRow& r) { return r.sensor_id; }));
  EXPECT_TRUE(distinct(inverse_measure_classes(), [](const MeasureClassRow& r) { return r.sensor_id; }));
  EXPECT_TRUE(distinct(inverse_formulas(), [](const InverseFormulaRow& r) { return r.sensor_id; }));
  EXPECT_TRUE(distinct(measure_units(), [](const MeasureUnitRow& r) { return r.sensor_id; }));
  EXPECT_TRUE(distinct(device_layouts(), [](const DeviceLayoutRow& r) { return r.device_code; }));
  u32 free_id = 0;
  for (const UnitIdRow& row : unit_ids()) {
    EXPECT_GE(row.first_id, free_id) << "unit ids overlap";
    EXPECT_GE(row.last_id, row.first_id);
    free_id = row.last_id + 1;
  }
}

// What a formula's row leans on is there: its curve, or its polynomial with a last piece that has no limit.
TEST(LegacyTables, FormulasFindTheirConstants) {
  for (const SensorFormulaRow& row : sensor_formulas()) {
    SCOPED_TRACE(row.sensor_id);
    const bool by_curve = row.formula == SensorFormula::kCurve || row.formula == SensorFormula::kCurveByScale ||
                          row.formula == SensorFormula::kThermocouple;
    EXPECT_EQ(row.curve != 0, by_curve);
    EXPECT_LE(row.curve, static_cast<i32>(sensor_curves().size()));
    if (row.formula == SensorFormula::kCurve || row.formula == SensorFormula::kTemperatureWord) {
      EXPECT_GE(row.constant, 1.0f) << "a divisor";
    }

    bool reaches_every_value = false;
    for (const WordPolynomialRow& piece : word_polynomials())
      if (piece.sensor_id == row.sensor_id) reaches_every_value = std::isinf(piece.below);
    for (const DoublePolynomialRow& piece : double_polynomials())
      if (piece.sensor_id == row.sensor_id) reaches_every_value = std::isinf(piece.up_to);
    const bool by_polynomial = row.formula == SensorFormula::kVoltsPolynomial ||
                               row.formula == SensorFormula::kPiecewiseLambda ||
                               row.formula == SensorFormula::kDoublePolynomial;
    EXPECT_EQ(reaches_every_value, by_polynomial);
  }
}

}  // namespace
}  // namespace traguardo
