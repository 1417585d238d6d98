// SPDX-License-Identifier: MIT
#include "units/functions.h"

#include <gtest/gtest.h>

#include "sample_builder.h"
#include "units/sample_formats.h"

namespace traguardo {
namespace {

TEST(Fid, FieldsOfAWord) {
  EXPECT_EQ(fid::quantity(0x48611), FID_PHI_TEMPERATURE);
  EXPECT_EQ(fid::object(0x48611), FID_OBJ_GEAR);
  EXPECT_EQ(fid::position(0x48611), FID_POS_GEARBOX);
  EXPECT_EQ(fid::make(FID_PHI_TEMPERATURE, FID_OBJ_GEAR, FID_POS_GEARBOX), 0x48611U);
  EXPECT_EQ(fid::front_rear(0x5000000), FID_FRONTREAR_FRONT);
  EXPECT_EQ(fid::left_right(0x5000000), FID_LEFTRIGHT_LEFT);
  EXPECT_EQ(fid::in_out(0x318281), FID_INOUT_CENTER);
  EXPECT_EQ(fid::up_down(0x10000000), FID_UPDOWN_UP);
  EXPECT_TRUE(fid::is_numbered(0x2C0001C));
  EXPECT_EQ(fid::number(0x2C0001C), 5U);
}

TEST(Fid, Matching) {
  constexpr u32 kFrontLeftWheel = 0x5070010;
  const struct {
    u32 word, pattern;
    bool matches, matches_strictly;
  } cases[] = {
      {0x10, 0, false, false},
      {kFrontLeftWheel, 0x10, true, true},
      {kFrontLeftWheel, 0x70010, true, true},
      {kFrontLeftWheel, 0x68010, false, false},   // Another position.
      {kFrontLeftWheel, 0x90, false, false},      // An object that the word lacks.
      {kFrontLeftWheel, 0x4000010, true, true},   // Front.
      {kFrontLeftWheel, 0x4800010, true, false},  // Front right.
      {kFrontLeftWheel, 0x100010, true, false},   // Out.
      {0x2C0001C, 0x2C0001C, true, true},
      {0x2C0001C, 0x40001C, true, true},
      {0x2C0001C, 0xC0001C, true, false},  // Number 5 isn't number 1.
      {0x280001C, 0x2C0001C, true, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(fid::matches(c.word, c.pattern), c.matches) << std::hex << c.word << ' ' << c.pattern;
    EXPECT_EQ(fid::matches(c.word, c.pattern, true), c.matches_strictly) << std::hex << c.word << ' ' << c.pattern;
  }
}

TEST(Functions, FindChannelByFidHeedsTheDevice) {
  std::vector<ChannelRecord> records = {make_record(0x11, 0, 4), make_record(0x70010, 0, 4), make_record(0x10, 0, 4)};
  std::vector<u8> marked(records[1].bytes().begin(), records[1].bytes().end());
  store_u32(&marked[8], 77);
  records[1] = ChannelRecord(marked);

  const SDeviceDescription lists_it{true, {5, 77}};
  const SDeviceDescription lists_another{true, {5}};
  const SDeviceDescription unknown{false, {77}};
  EXPECT_EQ(CFunzioni(&lists_it, records).FindChannelByFid(0x10), &records[1]);
  EXPECT_EQ(CFunzioni(&lists_another, records).FindChannelByFid(0x10), &records[2]);
  EXPECT_EQ(CFunzioni(&unknown, records).FindChannelByFid(0x10), &records[2]);
  EXPECT_EQ(CFunzioni(nullptr, records).FindChannelByFid(0x70010), nullptr);
  EXPECT_EQ(CFunzioni(nullptr, records).FindChannelByFid(0), nullptr);
  EXPECT_EQ(CFunzioni().FindChannelByFid(0x10), nullptr);
}

TEST(Functions, Names) {
  const CFunzioni functions;
  const struct {
    u32 fid;
    const char* short_name;
    const char* long_name;
  } cases[] = {
      {0x1091, "WatT", "Water Temp"},         // A basic channel.
      {0x68684, "Hd", "Heading"},             // An external one.
      {0x91, "ExhT", "Exhaust Temp"},         // A derived one, before the main table's own name.
      {0x48611, "TmpGear", "Gear Box Temp"},  // The key table has long names only.
      {0x70010, "Spd---", "Wheel Spd"},       // A position row.
      {0x5070010, "Spd---LF", "Wheel Spd"},
      {0x31091, "TmpWat", "Water Temp"},  // A position without a row.
      {0x68011, "Tmp---", "Temperature"},
      {0x1809A, "PcktLapBrk", "Pckg"},        // Packets: detail and position.
      {0x19C, "CustBat", "Custom Battery "},  // No row at all: the parts.
      {0x2C0019C, "CustBat5", "Custom Battery 5"},
      {0x120019C, "CustBatIL", "Custom Battery In Left "},
      {0x7F | 200 << 7, "", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(functions.GetShortName(c.fid), c.short_name) << std::hex << c.fid;
    EXPECT_EQ(functions.GetLongName(c.fid), c.long_name) << std::hex << c.fid;
  }
}

TEST(Functions, RowsOfTheMainTable) {
  const CFunzioni functions;
  const struct {
    u32 fid, row, catalogue_fid;
  } cases[] = {
      {0x31091, 0x1091, 0x1091},   // Water temperature, some position.
      {0x40091, 0x40091, 0x8091},  // The catalogue word doesn't look at the position.
      {0x30091, 0x91, 0x8091},
      {0x1140B, 0xB, 0xA940B},  // A particular row of another position gives way to the general one.
      {0x68010, 0x10, 0x10},
      {0xD91, 0x11, 0x11},
      {0xD84, 0x4, 0x4},  // The general row of angles stands before that of the steering.
      {0x911, 0x11, 0x11},
      {0x1C, 0, 0},
      {0, 0, 0},
      {0x24A7, 0, 0},  // The end mark of the tables.
  };
  for (const auto& c : cases) {
    const FunctionRow* row = CFunzioni::find_row(c.fid);
    EXPECT_EQ(row == nullptr ? 0 : row->fid, c.row) << std::hex << c.fid;
    EXPECT_EQ(functions.GetCatalogueFid(c.fid), c.catalogue_fid) << std::hex << c.fid;
  }
}

TEST(Functions, Units) {
  const CFunzioni functions;
  EXPECT_EQ(functions.GetUnitName(0x10), "km/h");
  EXPECT_EQ(functions.GetUnitName(0x4091E), "\xBB");
  EXPECT_EQ(functions.GetUnitName(0x992), " ");
  EXPECT_EQ(functions.GetUnitName(0x1C), "");
  EXPECT_EQ(functions.CanonicalUnit(0x596, "gal"), "USgal");
  EXPECT_EQ(functions.CanonicalUnit(0x10, "furlong"), "km/h");
  const UnitOfMeasure battery = functions.GetUnitRow(0x195, "V");
  EXPECT_EQ(battery.scale, 0.001F);
  EXPECT_EQ(battery.least_decimals, 1);
  EXPECT_EQ(functions.GetUnitRow(0x598, "l/h").scale, 3600.0F);
  EXPECT_EQ(functions.GetUnitRow(0x10, "nonsense").name, "km/h");
  EXPECT_EQ(functions.GetUnitRow(0x1C, "km/h").name, "");

  EXPECT_EQ(functions.ClampDecimals(0x10, "km/h", 5), 1);
  EXPECT_EQ(functions.ClampDecimals(0x10, "km/h", 0), 0);
  EXPECT_EQ(functions.ClampDecimals(0x195, "V", 0), 1);
  EXPECT_EQ(functions.DefaultDecimals(0x8, "km"), 3);
  EXPECT_EQ(functions.MostDecimals(0xE8C, "in"), 3);
  EXPECT_EQ(functions.LeastDecimals(0x1E, "\xBB"), 1);
  EXPECT_EQ(functions.RestValue(0x1203), -1.0F);
  EXPECT_EQ(functions.RestValue(0x1183), 0.0F);

  std::vector<std::string> units;
  functions.ListUnits(0x16, &units);
  EXPECT_EQ(units, (std::vector<std::string>{"l", "USgal", "UKgal"}));
  std::set<std::string> names;
  functions.fill_unit_set(0x16, &names);
  EXPECT_EQ(names, (std::set<std::string>{"gal", "l", "UKgal", "USgal"}));
  std::vector<UnitSet> sets;
  functions.FindUnitSets("psi", &sets);
  EXPECT_EQ(sets.size(), 3U);

  std::set<u32> words;
  functions.fill_fid_set(0x14, &words);
  EXPECT_EQ(words, (std::set<u32>{0x14, 0x58014, 0x4058014, 0x5058014, 0x4858014, 0x3058014, 0x2858014, 0x2058014}));
  std::vector<PositionRow> positions;
  functions.ListPositions(0x68010, &positions);
  ASSERT_EQ(positions.size(), 2U);
  EXPECT_STREQ(positions[1].words[1].long_name, "Front Left");
}

TEST(Functions, Conversions) {
  const CFunzioni functions;
  const struct {
    u32 fid;
    const char *from, *to;
    double scale, offset;
  } cases[] = {
      {0x11, "C", "F", 1.8, 32.0},       {0x11, "F", "C", 1.0 / 1.8, -32.0 / 1.8},
      {0x18, "l/s", "l/h", 3600.0, 0.0}, {0x15, "mV", "V", 0.001, 0.0},
      {0x16, "gal", "USgal", 1.0, 0.0},  {0x16, "gal", "UKgal", 0.219969 / 0.264172, 0.0},
      {0x11, "C", "bar", 1.0, 0.0},      {0x1C, "C", "F", 1.0, 0.0},
  };
  for (const auto& c : cases) {
    const UnitConversion conversion = functions.GetConversion(c.fid, c.from, c.to);
    EXPECT_FLOAT_EQ(conversion.scale, static_cast<float>(c.scale)) << c.from << " to " << c.to;
    EXPECT_FLOAT_EQ(conversion.offset, static_cast<float>(c.offset)) << c.from << " to " << c.to;
  }
}

TEST(Functions, NamedChannels) {
  CFunzioni functions;
  EXPECT_EQ(functions.FidFromKey("BRAKE_PRESS"), 0x20EU) << "basic before derived";
  EXPECT_EQ(functions.FidFromKey("REF_SPEED_FL"), 0x1070010U);
  EXPECT_EQ(functions.FidFromKey("NO_SUCH_KEY"), 0U);
  EXPECT_EQ(functions.NamedChannelFromKey("REF_SPEED_FL"), nullptr);
  EXPECT_STREQ(functions.GetNamedChannel(0x1820E)->key, "BRAKE_PRESS");
  EXPECT_EQ(functions.GpsFieldOfFid(0xB940B), 15);
  EXPECT_EQ(functions.GpsFieldOfFid(0xA940B), -1);
  EXPECT_EQ(functions.LapFieldOfFid(0xB898B), 2);
  EXPECT_EQ(functions.LapFieldOfFid(0xB8992), 0);

  i32 code = 0;
  double divisor = 0.0;
  std::string unit;
  EXPECT_TRUE(functions.GetChannelCodes(0x195, &code, &divisor, &unit));
  EXPECT_EQ(code, 0x12);
  EXPECT_EQ(divisor, 10.0);
  EXPECT_EQ(unit, "V");
  EXPECT_FALSE(functions.GetChannelCodes(0x7777, &code, &divisor, &unit));
}

TEST(Functions, SubChannelLists) {
  const CFunzioni functions;
  const auto names = [](const std::vector<SubChannel>& list) {
    std::string joined;
    for (const SubChannel& channel : list) joined += channel.short_name + ' ';
    return joined;
  };
  std::vector<SubChannel> lap, unknown;
  functions.ListLapSubChannels(FID_SPEC_LAPTIME_ZEP2Gv2, &lap);
  EXPECT_EQ(names(lap).substr(0, 43), "nRun nSpl nLap LapT SplT best RunT RTR Code");
  EXPECT_EQ(lap.size(), 12U + 4U) << "the reserved place left out, four worked out times behind";
  EXPECT_EQ(lap[12].short_name, "PreT");
  EXPECT_EQ(lap[12].format, kSMPL_FMT_VOID);
  functions.ListGpsSubChannels(7, &unknown);
  functions.ListLapSubChannels(7, &unknown);
  EXPECT_TRUE(unknown.empty());
}

}  // namespace
}  // namespace traguardo
