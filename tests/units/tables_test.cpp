// SPDX-License-Identifier: MIT
// Every table against the row counts and sums that were worked out from the tables' source.
#include <gtest/gtest.h>

#include <tuple>

#include "helpers/table_sums.h"
#include "units/catalogue.h"
#include "units/exact_units.h"
#include "units/fid.h"
#include "units/packet_tables.h"
#include "units/sample_formats.h"

namespace traguardo {
namespace {

TableSums sums_of(std::span<const NameRow> names) {
  return table_sums(names, [](TableDigest& digest, const NameRow& row) {
    digest.number(row.value).text(row.key).text(row.short_name).text(row.long_name);
  });
}

TableSums sums_of(std::span<const NamedChannelRow> channels) {
  return table_sums(channels, [](TableDigest& digest, const NamedChannelRow& row) {
    digest.number(row.fid).text(row.unit).real(row.divisor).number(row.code).real(row.scale);
    digest.text(row.short_name).text(row.long_name).text(row.key).number(row.format);
  });
}

TableSums sums_of(PacketTable packet) {
  return table_sums(packet, [](TableDigest& digest, const SubChannelRow& row) {
    digest.number(row.fid).number(row.byte_offset).number(row.format).text(row.short_name).text(row.long_name);
  });
}

i64 number_of_set(UnitSet units) {
  i64 number = 1;
  for (const UnitSet& set : catalogue::unit_sets()) {
    if (set.data() == units.data()) return number;
    ++number;
  }
  return -1;
}

void add_positions(TableDigest& digest, const FunctionRow& row) {
  for (const PositionRow& position : row.positions) {
    digest.number(position.position).text(position.short_name).text(position.long_name);
    for (const PositionWordRow& word : position.words) {
      digest.number(word.fid).text(word.short_name).text(word.long_name);
    }
  }
}

TEST(Tables, EnumerationsOfTheFunctionWord) {
  EXPECT_EQ(sums_of(catalogue::physical_quantities()), (TableSums{39, 741, 0x83AB5BB0F665D145}));
  EXPECT_EQ(sums_of(catalogue::objects()), (TableSums{70, 2421, 0x9104013449DD70FC}));
  EXPECT_EQ(sums_of(catalogue::details()), (TableSums{10, 49, 0xC47A7C9A6F38C6E9}));
  EXPECT_EQ(sums_of(catalogue::packet_specs()), (TableSums{6, 7, 0xEF5B40B65C5975B0}));
  EXPECT_EQ(sums_of(catalogue::positions()), (TableSums{23, 253, 0x53086D3A9CD849E0}));
  EXPECT_EQ(sums_of(catalogue::in_out()), (TableSums{4, 6, 0xED2B263F9D378BF8}));
  EXPECT_EQ(sums_of(catalogue::left_right()), (TableSums{4, 6, 0xBE8DAE58922EC066}));
  EXPECT_EQ(sums_of(catalogue::front_rear()), (TableSums{4, 6, 0x1720C697E4750638}));
  EXPECT_EQ(sums_of(catalogue::up_down()), (TableSums{4, 6, 0x7486D4C77190D44F}));
}

TEST(Tables, UnitSets) {
  TableDigest digest;
  for (const UnitSet& set : catalogue::unit_sets()) {
    for (const UnitRow& unit : set) {
      digest.number(number_of_set(set)).text(decode_unit_text(unit.name).c_str()).real(unit.scale).real(unit.offset);
      digest.number(unit.default_decimals).number(unit.most_decimals).number(unit.least_decimals).number(unit.alias);
      digest.end_row();
    }
  }
  EXPECT_EQ(catalogue::unit_sets().size(), 48U);
  EXPECT_EQ(digest.sums(), (TableSums{105, 2841, 0x78CB1342BA5A77C4}));
}

TEST(Tables, Functions) {
  const TableSums sums = table_sums(catalogue::functions(), [](TableDigest& digest, const FunctionRow& row) {
    digest.number(row.fid).text(row.short_name).text(row.long_name).number(number_of_set(row.units));
    add_positions(digest, row);
  });
  EXPECT_EQ(sums, (TableSums{105, 1059873456, 0xCF12B55FD5177CA3}));
}

TEST(Tables, KeysAndNamedChannels) {
  const TableSums sums = table_sums(catalogue::keys(), [](TableDigest& digest, const KeyRow& row) {
    digest.number(row.fid).text(row.short_name).text(row.long_name).text(row.key);
  });
  EXPECT_EQ(sums, (TableSums{20, 196177140, 0xE6CFDE1ACA0184C2}));
  EXPECT_EQ(sums_of(catalogue::basic_channels()), (TableSums{19, 759795, 0xC40819E68D2AA093}));
  EXPECT_EQ(sums_of(catalogue::external_channels()), (TableSums{22, 7184154, 0x61E81CB9CEAE5FD4}));
  EXPECT_EQ(sums_of(catalogue::derived_channels()), (TableSums{14, 9595799, 0xE76138D514C4DF32}));
}

TEST(Tables, Packets) {
  constexpr i32 kVoid = kSMPL_FMT_VOID;
  const std::tuple<u32, u32, TableSums> packets[] = {
      {FID_DETTAGLI_LAPTIME, FID_SPEC_LAPTIME_ZEP2G, {13, 62566, 0x63E96D7DD8CA40B0}},
      {FID_DETTAGLI_LAPTIME, FID_SPEC_LAPTIME_ZEP2Gv2, {13, 62566, 0x63E96D7DD8CA40B0}},
      {FID_DETTAGLI_LAPTIME, FID_SPEC_LAPTIME_ZEP2Gv3, {9, 43072, 0xB104A969128D791D}},
      {FID_DETTAGLI_LAPTIME, FID_SPEC_LAPTIME_ZEP1G, {7, 31960, 0x2DD5CDB9DB353A59}},
      {FID_DETTAGLI_GPS, FID_SPEC_GPS_ZEPNAVSOL, {9, 6229134, 0x47D32B91C4059FD3}},
      {FID_DETTAGLI_GPS, FID_SPEC_GPS_UBXNAVSOL, {5, 3465584, 0xB2447852FC8815C5}},
      {FID_DETTAGLI_MISURE_KESTREL_BASE, 5, {5, 9327, 0x6098471017E6D798}},
      {FID_DETTAGLI_TOTAL_ODOMETER, 5, {3, 16736, 0xC20C466CA0A5C36F}},
      {FID_DETTAGLI_RESETTABLE_ODOMETER, 5, {3, 16992, 0x2DA3B3CB127D51AB}},
      {FID_DETTAGLI_BEST_TIME, 5, {2, 9776, 0xF841DEC5C2A90BAB}},
      {FID_DETTAGLI_ROLL_TIME, 5, {2, 14528, 0x2E3D8C45D36922F1}},
  };
  for (const auto& [object, position, sums] : packets) {
    EXPECT_EQ(sums_of(packets::table_of_kind(object, position, kVoid)), sums) << object << ' ' << position;
  }
  for (const PacketRow& packet : packets::all()) {
    for (const SubChannelRow& row : packet.fields) {
      EXPECT_EQ(row.read.value != nullptr, row.format == kComputedFormat) << std::hex << row.fid;
    }
  }
}

TEST(Tables, SampleFormatsAndChannelTypes) {
  TableDigest formats;
  for (i32 format = -1; format <= 33; ++format) {
    formats.number(format).text(sample_format_name(format)).number(standard_sample_size(format)).end_row();
  }
  EXPECT_EQ(formats.sums(), (TableSums{35, 1075, 0xA13AD3B75857CB15}));
  for (const i32 format : {-2, 34, 0x7FFFFFFF}) {
    EXPECT_STREQ(sample_format_name(format), "UNKNOWN FORMAT !!!!!!!!!!!!!! ");
    EXPECT_EQ(standard_sample_size(format), 0U);
  }

  TableDigest types;
  for (i32 type = 0; type <= 102; ++type) {
    if (type <= 13 || type >= 101) types.number(type).text(channel_type_name(type)).end_row();
  }
  EXPECT_EQ(types.sums(), (TableSums{16, 294, 0xE49BCD57ACB2529F}));
  for (const i32 type : {-1, 14, 100, 103}) EXPECT_STREQ(channel_type_name(type), "UNKNOWN TYPE !!!!!!! ");
}

TEST(Tables, ExactUnits) {
  const std::pair<Quantity, std::vector<const char*>> units[] = {
      {Quantity::kAngle, {"rad", "deg"}},
      {Quantity::kAngularSpeed, {"rad/s", "deg/s"}},
      {Quantity::kFrequency, {"Hz", "kHz"}},
      {Quantity::kLength, {"km", "mi", "m", "ft", "cm", "in", "mm"}},
      {Quantity::kPower, {"W", "kW"}},
      {Quantity::kPressure, {"bar", "psi", "pa", "kPa", "mbar"}},
      {Quantity::kTemperature, {"K", "C", "F"}},
      {Quantity::kTime, {"ms", "s", "min", "us", "h"}},
      {Quantity::kSpeed, {"km/h", "mph", "m/s", "ft/s", "cm/s", "m/min"}},
      {Quantity::kVoltage, {"V", "mV"}},
      {Quantity::kVolume, {"l", "USgal", "UKgal"}},
  };
  TableDigest digest;
  for (const auto& [quantity, names] : units) {
    for (const char* name : names) {
      double factor = 0.0;
      double addend = 0.0;
      EXPECT_TRUE(exact_unit(quantity, name, &factor, &addend)) << name;
      digest.number(static_cast<int>(quantity)).text(name).real(factor).real(addend).end_row();
    }
  }
  EXPECT_EQ(digest.sums(), (TableSums{39, 209, 0xDE8F3EAC4C037014}));
}

}  // namespace
}  // namespace traguardo
