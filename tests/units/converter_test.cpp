// SPDX-License-Identifier: MIT
#include "units/converter.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <memory>
#include <random>

#include "sample_builder.h"
#include "units/converter_wmp.h"
#include "units/fid.h"
#include "units/functions.h"
#include "units/sample_formats.h"

namespace traguardo {
namespace {

UnitOfMeasure unit_with(float scale, float offset) {
  return {"x", scale, offset, 0, 3, 0};
}

CConverter make_converter(i32 format, u32 fid = FID_PHI_NUMBER, const UnitOfMeasure& unit = unit_with(2.0F, 1.0F)) {
  const u32 size = std::max(standard_sample_size(format), 4U);
  return CConverter(make_record(fid, format, size), fid, unit, 0, {});
}

TEST(Converter, NumbersOfEveryFormat) {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  constexpr u32 kGearCode = FID_PHI_CODE | FID_OBJ_GEAR << 7;
  const struct {
    i32 format;
    u32 word;  // The sample's first four bytes.
    float value;
    bool is_proper;
    u32 fid = FID_PHI_NUMBER;
  } cases[] = {
      {kSMPL_FMT_S32, 0xFFFFFFFF, -1.0F, true},
      {kSMPL_FMT_S32, 0xFFFFCFFF, 0.0F, false},
      {kSMPL_FMT_S32, 0xFFFFCFFC, -24583.0F, true},  // (-12292) * 2 + 1
      {kSMPL_FMT_U32, 0xFFFFCFFE, 0.0F, false},
      {kSMPL_FMT_U32, 0x80000000, 4294967296.0F, true},
      {kSMPL_FMT_U32, 0x0000CFFF, 106495.0F, true},  // A sentinel of the other width.
      {kSMPL_FMT_S16, 0x1234FFFF, -1.0F, true},
      {kSMPL_FMT_S16, 0xCFFD, 0.0F, false},
      {kSMPL_FMT_U16, 0xFFFF, 131071.0F, true},
      {kSMPL_FMT_U16, 0xCFFE, 0.0F, false},
      {kSMPL_FMT_U16, 0xD000, 106497.0F, true},
      {kSMPL_FMT_U16, 0xCFFC, 106489.0F, true},
      {kSMPL_FMT_S8, 0x80, -255.0F, true},
      {kSMPL_FMT_U8, 0x80, 257.0F, true},
      {kSMPL_FMT_FLOAT, 0x3FC00000, 4.0F, true},  // 1.5
      {kSMPL_FMT_FLOAT, 0x7FC00000, 0.0F, false},
      {kSMPL_FMT_FLOAT, 0x7F800000, 0.0F, false},
      {kSMPL_FMT_FLOAT, 0xFF800000, 0.0F, false},
      {kSMPL_FMT_F16, 0x3C00, 3.0F, true},
      {kSMPL_FMT_F16, 0xC000, -3.0F, true},
      {kSMPL_FMT_F16, 0x0001, 0x1p-23F + 1.0F, true},  // The least denormal.
      {kSMPL_FMT_F16, 0x7BFF, 131009.0F, true},        // 65504
      {kSMPL_FMT_F16, 0x7C00, 0.0F, false},
      {kSMPL_FMT_F16, 0xFC00, 0.0F, false},
      {kSMPL_FMT_F16, 0x7E00, kNaN, true},  // Of this width it passes.
      {kSMPL_FMT_TGIRO, 1000, 2001.0F, true},
      {kSMPL_FMT_ZEP_LATLON, 0xFFFFCFFD, 0.0F, false},
      {kSMPL_FMT_TDIFF, 0xFFFFFFFE, -3.0F, true},
      {kSMPL_FMT_ROLL_TIME, 5, 11.0F, true},
      {kSMPL_FMT_GEAR, 0xFFEC, -8.0F, true},  // -20
      {kSMPL_FMT_GEAR, 0xFFFB, -5.0F, true},
      {kSMPL_FMT_GEAR, 300, 300.0F, true},
      {kSMPL_FMT_GEAR, 0xCFFF, -8.0F, false},
      {kSMPL_FMT_BITFIELD_8, 0xA5, 165.0F, true},
      {kSMPL_FMT_STR_CODE_2_6, '4' << 16 | 7, 7.0F, true},
      {kSMPL_FMT_STR_CODE_2_6, '4' << 16 | 7, 4.0F, true, kGearCode},
      {kSMPL_FMT_STR_CODE_2_6, '9' << 16 | 7, 9.0F, true, FID_PHI_GEAR | 5 << 7},
      {kSMPL_FMT_STR_CODE_2_6, '0' << 16 | 0xFFFF, -1.0F, true, kGearCode},
      {kSMPL_FMT_STR_CODE_2_30, '4' << 16 | 7, 7.0F, true, kGearCode},
      {kSMPL_FMT_LAP_2G, 0xFFFF, 0.0F, false},
      {kSMPL_FMT_GPS_UBX, 0xFFFF, 0.0F, false},
      {kSMPL_FMT_DATA_ORA, 0xFFFF, 0.0F, false},
  };
  for (const auto& c : cases) {
    const CConverter converter = make_converter(c.format, c.fid);
    const std::vector<u8> sample = make_sample(64, {{0, c.word}});
    ASSERT_TRUE(converter.IsValido()) << sample_format_name(c.format);
    const float unchecked = converter.Converti(sample.data());
    float value = 99.0F;
    EXPECT_EQ(converter.ConvertiValido(sample.data(), &value), c.is_proper)
        << sample_format_name(c.format) << ' ' << c.word;
    for (const float got : {unchecked, value}) {
      EXPECT_TRUE(std::isnan(c.value) ? std::isnan(got) : got == c.value)
          << sample_format_name(c.format) << ' ' << c.word << ": " << got;
    }
  }
}

TEST(Converter, GainAndOffsetInSinglePrecision) {
  // 16777217 isn't a float: it is rounded before the gain, to 16777216.
  const CConverter converter = make_converter(kSMPL_FMT_S32, FID_PHI_NUMBER, unit_with(0.1F, 0.3F));
  const std::vector<u8> sample = make_sample(4, {{0, 16777217}});
  const volatile float product = 16777216.0F * 0.1F;
  EXPECT_EQ(converter.Converti(sample.data()), product + 0.3F);
}

TEST(Converter, FormatsWithoutReader) {
  for (const i32 format : {-1, 14, 19, 23, 25, 26, 27, 28, 29, 30, 33, 34, 1000}) {
    CConverter converter = make_converter(format);
    std::wstring text = L"left";
    EXPECT_FALSE(converter.IsValido()) << format;
    EXPECT_FALSE(converter.reader()) << format;
    EXPECT_FALSE(converter.ConvertiTesto(make_sample(64, {}).data(), &text)) << format;
    EXPECT_EQ(text, L"");
  }
}

std::vector<u8> gps_sample(u8 fix, u8 satellites) {
  std::vector<u8> sample = make_sample(56, {{32, 300}, {36, static_cast<u32>(-400)}, {40, 1200}});
  sample[14] = fix;
  sample[51] = satellites;
  return sample;
}

TEST(Converter, ReceiverSpeed) {
  // The root of 300² + 400² + 1200² is 1300 cm/s.
  const CConverter converter = make_converter(kSMPL_FMT_GPS_ZEP);
  EXPECT_FLOAT_EQ(converter.Converti(gps_sample(3, 4).data()), 1300.0F * 0.036F * 2.0F + 1.0F);
  EXPECT_EQ(converter.Converti(gps_sample(2, 9).data()), 0.0F);
  EXPECT_EQ(converter.Converti(gps_sample(3, 3).data()), 0.0F);
}

TEST(Converter, SubChannelsOfTheReceiverPacket) {
  // A point at 45 degrees north, 90 degrees east, 100 m above the ellipsoid, by the formula of the way there.
  const double e2 = 0.00669437999014;
  const double n = 6378137.0 / std::sqrt(1.0 - e2 * 0.5);
  const double y = (n + 100.0) * std::sqrt(0.5);
  const double z = (n * (1.0 - e2) + 100.0) * std::sqrt(0.5);
  std::vector<u8> sample = gps_sample(3, 7);
  store_i32(&sample[20], static_cast<i32>(std::lround(y * 100.0)));
  store_i32(&sample[24], static_cast<i32>(std::lround(z * 100.0)));
  store_u32(&sample[28], 250);

  const u32 packet = fid::make(FID_PHI_PACKAGE, FID_DETTAGLI_GPS, FID_SPEC_GPS_ZEPNAVSOL);
  const CFunzioni functions;
  const auto value_of = [&](u32 fid) {
    const auto converter = functions.CreateConverter(make_record(packet, kSMPL_FMT_GPS_ZEP, 56), fid,
                                                     functions.GetUnitName(fid), 0, 5, 15);
    EXPECT_TRUE(converter->IsValido()) << std::hex << fid;
    return converter->Converti(sample.data());
  };
  EXPECT_NEAR(value_of(0xA8A07), 45.0F, 1e-5F);
  EXPECT_NEAR(value_of(0xA8A87), 90.0F, 1e-5F);
  EXPECT_NEAR(value_of(0xA8107), 100.0F, 0.02F);
  EXPECT_FLOAT_EQ(value_of(0xA8010), 46.8F);
  EXPECT_EQ(value_of(0xA940B), 7.0F);
  EXPECT_EQ(value_of(0xA998C), 250.0F);
  EXPECT_EQ(value_of(0xA9986), 3.0F);

  const CConverter unknown(make_record(packet, kSMPL_FMT_GPS_ZEP, 56), 0x1091, {}, 0, {});
  EXPECT_FALSE(unknown.IsValido());
  sample[14] = 2;
  float latitude = 1.0F;
  const CConverter without_fix(make_record(packet, kSMPL_FMT_GPS_ZEP, 56), 0xA8A07, {}, 0, {});
  EXPECT_FALSE(without_fix.ConvertiValido(sample.data(), &latitude));
  EXPECT_EQ(latitude, 0.0F);
}

TEST(Converter, SubChannelsOfLapPackets) {
  const CFunzioni functions;
  const auto value_of = [&](u32 spec, i32 format, const std::vector<u8>& sample, u32 fid) {
    const u32 packet = fid::make(FID_PHI_PACKAGE, FID_DETTAGLI_LAPTIME, spec);
    const ChannelRecord record = make_record(packet, format, static_cast<u32>(sample.size()));
    return functions.CreateConverter(record, fid, functions.GetUnitName(fid), 0, 5, 15)->Converti(sample.data());
  };
  const std::vector<u8> lap = make_sample(32, {{0, 7 << 16 | 2 << 8 | 1}, {4, 83456}, {16, 4000}, {24, 2}});
  const std::pair<u32, float> fields[] = {{0x190B, 1},    {0x178B, 2}, {0x98B, 7},  {0x992, 83456},
                                          {0x2192, 4000}, {0x1306, 0}, {0x1806, 1}, {0, 0}};  // 0: a reserved place
  for (const auto& [fid, value] : fields) {
    EXPECT_EQ(value_of(2, kSMPL_FMT_LAP_2G_v2, lap, fid), value) << std::hex << fid;
  }

  const std::vector<u8> oldest = make_sample(8, {{0, 60000}, {4, 3 << 12 | 25}});
  EXPECT_EQ(value_of(1, kSMPL_FMT_LAP_1G, oldest, 0x98B), 25.0F);
  EXPECT_EQ(value_of(1, kSMPL_FMT_LAP_1G, oldest, 0x178B), 3.0F);

  // The status byte lies behind the end of this form's record: it reads as zero.
  const std::vector<u8> newest(20, 0xFF);
  EXPECT_EQ(value_of(3, kSMPL_FMT_LAP_2G_v3, newest, 0x986), 0.0F);
  EXPECT_EQ(value_of(3, kSMPL_FMT_LAP_2G_v3, newest, 0x1306), 0.0F);
}

TEST(Converter, ASampleShorterThanItsFormatReadsZerosBehindItsEnd) {
  const std::unique_ptr<u8[]> two_bytes(new u8[2]{0x34, 0x12});
  const CConverter converter(make_record(FID_PHI_NUMBER, kSMPL_FMT_S32, 2), FID_PHI_NUMBER, {}, 0, {});
  EXPECT_EQ(converter.Converti(two_bytes.get()), 4660.0F);
  EXPECT_EQ(converter.reader().bytes_needed, 4U);
  const CConverter far_away(make_record(FID_PHI_NUMBER, kSMPL_FMT_S32, 2), FID_PHI_NUMBER, {}, 0xFFFFFFFF, {});
  EXPECT_EQ(far_away.Converti(two_bytes.get()), 0.0F);
}

// Every format and packet over samples of every size, of which each lies at the end of its own memory; the bare reader
// gives bit for bit what the converter gives.
TEST(Converter, NoSampleIsReadBehindItsEnd) {
  std::mt19937 random(20240527);
  std::vector<std::pair<u32, u32>> words;  // Word of the channel, word asked for.
  words.emplace_back(FID_PHI_NUMBER, FID_PHI_NUMBER);
  words.emplace_back(FID_PHI_GEAR, FID_PHI_GEAR);
  for (const u32 detail : {1U, 3U, 4U, 5U, 6U, 7U, 10U, 11U}) {
    for (u32 spec = 0; spec < 4; ++spec) {
      const u32 packet = fid::make(FID_PHI_PACKAGE, detail, spec);
      for (const i32 format : {kSMPL_FMT_MYLAPS_LAPTIME, kSMPL_FMT_MYLAPS_GAP, kSMPL_FMT_MYLAPS_PERSONAL}) {
        for (const SubChannelRow& row : packets::table_of(packet, format)) words.emplace_back(packet, row.fid);
      }
    }
  }
  std::size_t read_bare = 0;
  for (const auto& [channel, asked] : words) {
    for (i32 format = -2; format <= 35; ++format) {
      const u32 size = static_cast<u32>(random() % 65);
      const std::unique_ptr<u8[]> sample(new u8[size]);
      for (u32 i = 0; i < size; ++i) sample[i] = static_cast<u8>(random());
      DisplaySettings display;
      display.auto_decimals = random() % 2 == 0;
      display.padding = static_cast<Padding>(random() % 3);
      CConverter converter(make_record(channel, format, size), asked, unit_with(0.1F, 3.0F), 0, display);
      const float value = converter.Converti(sample.get());
      float checked = 0.0F;
      std::wstring text;
      converter.ConvertiValido(sample.get(), &checked);
      converter.ConvertiTesto(sample.get(), &text);
      EXPECT_LE(text.size(), 32U);
      EXPECT_EQ(std::bit_cast<u32>(value), std::bit_cast<u32>(checked));
      const SampleReader reader = converter.reader();
      if (reader && reader.bytes_needed <= size) {
        EXPECT_EQ(std::bit_cast<u32>(reader(sample.get())), std::bit_cast<u32>(value));
        ++read_bare;
      }
    }
  }
  EXPECT_GT(read_bare, 1000U);
}

TEST(ConverterWmp, PlainValues) {
  const struct {
    i32 format;
    float value;
  } cases[] = {
      {kSMPL_FMT_S32, static_cast<float>(static_cast<i32>(0xFFFFCFFF))},
      {kSMPL_FMT_S16, -12289.0F},
      {kSMPL_FMT_GEAR, -12289.0F},
      {kSMPL_FMT_STR_CODE_2_6, -12289.0F},
      {kSMPL_FMT_STR_CODE_2_30, -12289.0F},
      {kSMPL_FMT_S8, -1.0F},
      {kSMPL_FMT_U32, 4294955008.0F},
      {kSMPL_FMT_TGIRO, 4294955008.0F},
      {kSMPL_FMT_U16, 53247.0F},
      {kSMPL_FMT_F16, 53247.0F},
      {kSMPL_FMT_U8, 255.0F},
      {kSMPL_FMT_BITFIELD_8, 255.0F},
  };
  const std::vector<u8> sample = make_sample(8, {{0, 0x11111111}, {4, 0xFFFFCFFF}});
  for (const auto& c : cases) {
    ChannelRecord record = make_record(FID_PHI_NUMBER, c.format, 8);
    std::vector<u8> bytes(record.bytes().begin(), record.bytes().end());
    store_u32(&bytes[68], 4);
    record = ChannelRecord(bytes);
    CConverterWMP at_offset(&record, false);
    ASSERT_TRUE(at_offset.IsValido());
    EXPECT_EQ(at_offset.Converti(sample.data()), c.value) << sample_format_name(c.format);
    CConverterWMP at_zero(&record, true);
    float value = 0.0F;
    EXPECT_TRUE(at_zero.ConvertiValido(sample.data() + 4, &value));
    EXPECT_EQ(value, c.value) << sample_format_name(c.format);
    std::wstring text = L"stays";
    EXPECT_TRUE(at_zero.ConvertiTesto(sample.data(), &text));
    EXPECT_EQ(text, L"stays");
    EXPECT_EQ(at_offset.bytes_needed() - at_zero.bytes_needed(), 4U);
  }
}

TEST(ConverterWmp, WithoutReader) {
  const ChannelRecord record = make_record(FID_PHI_NUMBER, kSMPL_FMT_VOID, 4);
  const CConverterWMP no_format(&record, true);
  const CConverterWMP no_record(nullptr, false);
  float value = 5.0F;
  for (const CConverterWMP* converter : {&no_format, &no_record}) {
    EXPECT_FALSE(converter->IsValido());
    EXPECT_FALSE(converter->ConvertiValido(record.bytes().data(), &value));
  }
  EXPECT_EQ(value, 5.0F);
}

}  // namespace
}  // namespace traguardo
