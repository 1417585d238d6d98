// SPDX-License-Identifier: MIT
#include "units/value_text.h"

#include <gtest/gtest.h>

#include "sample_builder.h"
#include "units/converter.h"
#include "units/fid.h"
#include "units/mylaps_bits.h"
#include "units/sample_formats.h"

namespace traguardo {
namespace {

std::string number(float value, int digits, int decimals, Padding padding = Padding::kBlanks) {
  DisplaySettings display;
  display.significant_digits = digits;
  display.decimals = decimals;
  display.padding = padding;
  NumberMemory memory;
  return plain_number_text(value, display, &memory);
}

TEST(ValueText, PlainNumbers) {
  EXPECT_EQ(number(83.46F, 5, 1), "  83.5");
  EXPECT_EQ(number(-83.46F, 5, 1), " -83.5");
  EXPECT_EQ(number(0.05F, 5, 2), "  0.05");
  EXPECT_EQ(number(0.0F, 5, 0), "    0");
  EXPECT_EQ(number(-0.3F, 5, 0), "    0");
  EXPECT_EQ(number(2.5F, 5, 0), "    3");
  EXPECT_EQ(number(-2.5F, 5, 0), "   -3");
  EXPECT_EQ(number(1.23456F, 6, 5), "  1.235") << "more than three decimals count as three";
  EXPECT_EQ(number(-0.5F, 2, 1), "-.5");
  EXPECT_EQ(number(83.46F, 5, 1, Padding::kShiftAndBlank), "83.5  ");
  EXPECT_EQ(number(-83.46F, 5, 1, Padding::kShiftAndBlank), "-83.5 ");
  EXPECT_EQ(number(83.46F, 5, 1, Padding::kShiftAndEnd), "83.5");
  EXPECT_EQ(number(12345.0F, 5, 0), "12345");
  EXPECT_EQ(number(-1234.0F, 5, 0), "-1234");
  for (const float value : {123456.0F, -12345.0F, 1e30F, -1e30F}) EXPECT_EQ(number(value, 5, 0), "-----") << value;
  EXPECT_EQ(number(1.0F, -4, 2), "1");
}

TEST(ValueText, AutomaticDecimalsRememberTheLastValue) {
  DisplaySettings display;
  display.auto_decimals = true;
  display.highest_decimals = 3;
  NumberMemory memory;
  const auto text = [&](float value) { return plain_number_text(value, display, &memory); };
  EXPECT_EQ(text(1.5F), " 1.500");
  EXPECT_EQ(text(95.0F), "95.000") << "above the mark of 90, but there were three decimals before";
  EXPECT_EQ(text(99.5F), " 99.50") << "too near to 100 for three";
  EXPECT_EQ(text(12000.0F), "12000");
  EXPECT_EQ(text(850.25F), "850.25");
  NumberMemory fresh;
  EXPECT_EQ(plain_number_text(95.0F, display, &fresh), " 95.00");
}

TEST(ValueText, Status) {
  EXPECT_EQ(status_text(kStatusNoValue | kStatusBlank | kStatusBad), "---");
  EXPECT_EQ(status_text(kStatusBlank | kStatusBad), "   ");
  EXPECT_EQ(status_text(kStatusBad), "---");
  EXPECT_EQ(status_text(kStatusGood), "");
}

TEST(ValueText, Times) {
  EXPECT_EQ(lap_text(83456, 7), " 1:23.450 (7)");
  EXPECT_EQ(lap_text(3723004, 12), " 1:02:03 (12)");
  EXPECT_EQ(running_time_text(754), " 0:00.750");
  const struct {
    i32 time_ms;
    const char *short_form, *short_tenths, *long_form, *long_tenths;
  } cases[] = {
      {0, "--", " 0:00.0", "--", " 0:00.0"},
      {83456, "1:23.45", " 1:23.4", " 1:23.45", " 1:23.4"},
      {661200, "11:01.2", "11:01.2", "11:01.20", "11:01.2"},
      {3723000, "1:02.03", "1:02.03", " 1:02:03", " 1:02:03"},
      {36060000, " 10:01", " 10:01", "10:01:00", "10:01:00"},
      {-83456, "-1:23.45", "- 1:23.4", "- 1:23.45", "- 1:23.4"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(lap_time_text(c.time_ms, 5, false), c.short_form) << c.time_ms;
    EXPECT_EQ(lap_time_text(c.time_ms, 5, true), c.short_tenths) << c.time_ms;
    EXPECT_EQ(lap_time_text(c.time_ms, 15, false), c.long_form) << c.time_ms;
    EXPECT_EQ(lap_time_text(c.time_ms, 15, true), c.long_tenths) << c.time_ms;
  }
  EXPECT_EQ(lap_time_text(std::numeric_limits<i32>::min(), 15, false), "-596:31:23");
  EXPECT_EQ(time_difference_text(61234, 6), " +61.23");
  EXPECT_EQ(time_difference_text(-1234, 15), " - 1.23");
  EXPECT_EQ(time_difference_text(1234, 5), "  1.23");
  EXPECT_EQ(time_difference_text(-1234, 5), "- 1.23");
  EXPECT_EQ(time_difference_text(1234, 4), " 1.23");
  EXPECT_EQ(time_difference_text(-1234, 4), "-1.23");
  EXPECT_EQ(odometer_time_text(3723, 0), "   1");
  EXPECT_EQ(odometer_time_text(3723, 5), "  1:02");
  EXPECT_EQ(odometer_time_text(3600000, 5), " 1000");
  EXPECT_EQ(odometer_time_text(36003600, 4), "   1");
  EXPECT_EQ(odometer_time_text(0xFFFFCFFE, 0), "   ");
}

TEST(ValueText, GearsCoordinatesAndReceiverStates) {
  std::string gears;
  for (const int gear : {0, 1, 9, 10, -1, -2, -3, -4, -5, -6, -7, -8, -12289})
    gears += gear_text(static_cast<i16>(gear));
  EXPECT_EQ(gears, "N19-RDPSWdB--");
  EXPECT_EQ(coordinate_text(451234567), "45.1234567");
  EXPECT_EQ(coordinate_text(-5), "-0.0000005");
  EXPECT_EQ(coordinate_text(std::numeric_limits<i32>::min()), "-214.7483648");
  const struct {
    u32 fix, satellites;
    const char *zep, *ubx;
  } cases[] = {
      {250, 8, "No GPS", "No GPS"},       {3, 255, "No GPS", "No GPS"}, {0, 8, "No GPS Data", "GPS Search"},
      {2, 8, "GPS Search", "GPS Search"}, {3, 3, "GPS Low", "GPS Low"}, {3, 5, "GPS Weak", "GPS Weak"},
      {3, 6, "GPS Good", "GPS Good"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(gps_state_text(c.fix, c.satellites, true), c.zep) << c.fix << ' ' << c.satellites;
    EXPECT_EQ(gps_state_text(c.fix, c.satellites, false), c.ubx) << c.fix << ' ' << c.satellites;
  }
}

TEST(ValueText, OfAConvertersFormat) {
  std::vector<u8> gps = make_sample(56, {});
  gps[14] = 3;
  gps[51] = 7;
  const std::vector<u8> gear_code = {7, 0, 'R', 'e', 'v', 0, 'x', 'x'};
  const struct {
    i32 format;
    std::vector<u8> sample;
    const wchar_t* text;
  } cases[] = {
      {kSMPL_FMT_U16, {0x39, 0x30}, L"12345"},
      {kSMPL_FMT_U16, {0xFE, 0xCF}, L"   "},
      {kSMPL_FMT_S32, make_sample(4, {{0, 0xFFFFCFFF}}), L"---"},
      {kSMPL_FMT_FLOAT, make_sample(4, {{0, 0x7FC00000}}), L"---"},
      {kSMPL_FMT_LAP_2G, make_sample(28, {{0, 7 << 16}, {4, 83456}}), L" 1:23.450 (7)"},
      {kSMPL_FMT_GPS_ZEP, gps, L"GPS Good"},
      {kSMPL_FMT_DATA_ORA, make_sample(36, {}), L"Date and Time Packet"},
      {kSMPL_FMT_GEAR, {0xFF, 0xFF}, L"R"},
      {kSMPL_FMT_TGIRO, make_sample(4, {{0, 83456}}), L" 1:23.45"},
      {kSMPL_FMT_TGIRO, make_sample(4, {{0, 0xFFFFCFFD}}), L"---"},
      {kSMPL_FMT_STR_CODE_2_6, gear_code, L"Rev"},
      {kSMPL_FMT_LAP_1G, make_sample(8, {}), L"LAP Packet 1G"},
      {kSMPL_FMT_GPS_SV_INFO, make_sample(64, {}), L"GPS SV Info Packet"},
      {kSMPL_FMT_ZEP_LATLON, make_sample(4, {{0, 90000001}}), L"9.0000001"},
      {kSMPL_FMT_TDIFF, make_sample(4, {{0, 2500}}), L" + 2.50"},
      {kSMPL_FMT_ROLL_TIME, make_sample(12, {{0, 83456}}), L" 1:23.450"},
  };
  for (const auto& c : cases) {
    const u32 size = static_cast<u32>(c.sample.size());
    CConverter converter(make_record(FID_PHI_NUMBER, c.format, size), FID_PHI_NUMBER, {"#", 1, 0, 0, 0, 0}, 0, {});
    std::wstring text;
    EXPECT_TRUE(converter.ConvertiTesto(c.sample.data(), &text));
    EXPECT_EQ(text, c.text) << sample_format_name(c.format);
  }
}

TEST(ValueText, DecimalsOfAConverter) {
  const std::vector<u8> sample = {100};
  CConverter converter(make_record(FID_PHI_NUMBER, kSMPL_FMT_U8, 1), FID_PHI_NUMBER, {"x", 0.25F, 0, 2, 2, 0}, 0, {});
  const auto text = [&] {
    std::wstring out;
    converter.ConvertiTesto(sample.data(), &out);
    return out;
  };
  EXPECT_EQ(text(), L" 25.00") << "the unit's default";
  converter.SetNumDecimali(1);
  EXPECT_EQ(text(), L"  25.0");
  converter.SetNumDecimali(-3);
  EXPECT_EQ(text(), L"   25");

  // Those of an odometer's time choose its form.
  const u32 packet = fid::make(FID_PHI_PACKAGE, FID_DETTAGLI_TOTAL_ODOMETER);
  CConverter odometer(make_record(packet, KSMPL_FMT_TOTAL_ODOMETER, 12), 0x1612, {" ", 1, 0, 0, 0, 0}, 0, {});
  std::wstring hours;
  odometer.ConvertiTesto(make_sample(12, {{0, 7300}}).data(), &hours);
  EXPECT_EQ(hours, L"   2");
  odometer.SetNumDecimali(5);
  odometer.ConvertiTesto(make_sample(12, {{0, 7300}}).data(), &hours);
  EXPECT_EQ(hours, L"  2:01");
}

TEST(ValueText, OfTimingFields) {
  using mylaps::field_text;
  using mylaps::value_text;
  const struct {
    u32 value, kind;
    const char* text;
  } cases[] = {
      {7, 0, " 7"},        {123, 0, "123"},   {999, 1, "999"},   {1000, 1, "---"}, {599, 2, "9:59"},
      {600, 2, "10"},      {59999, 2, "999"}, {60000, 2, "---"}, {599, 3, "9:59"}, {3720, 3, "1:02"},
      {2160000, 3, "---"}, {599, 4, "59.9"},  {600, 4, "1:00"},  {999, 5, "9.99"}, {1000, 6, "10.0"},
      {5999, 6, "59.9"},   {6000, 6, "---"},  {0, 4, "0"},       {5, 7, "---"},
  };
  for (const auto& c : cases) EXPECT_EQ(value_text(c.value, c.kind, false), c.text) << c.value << " kind " << c.kind;
  EXPECT_EQ(value_text(599, 4, true), "-59.9");
  EXPECT_EQ(field_text(4001, 4, false), "err");
  EXPECT_EQ(field_text(4095, 0, false), "err");

  constexpr u32 kNegative = 0x80000000;
  EXPECT_EQ(mylaps::gap_text(mylaps::gap_of(1 << 10 | 239)), "+1.23");
  EXPECT_EQ(mylaps::gap_text(mylaps::gap_of(kNegative | 59 << 10 | 999)), "-59.9");
  EXPECT_EQ(mylaps::gap_text(mylaps::gap_of(kNegative | 75 << 10)), "-75");
  EXPECT_EQ(mylaps::gap_text(mylaps::gap_of(4001 << 10)), "err");
  EXPECT_EQ(mylaps::gap_text(mylaps::gap_of(kNegative)), "0");
}

TEST(ValueText, SubChannelsOfATimingPacket) {
  constexpr u32 kPacket = fid::make(FID_PHI_PACKAGE, FID_DETTAGLI_MYLAPS_LAPTIME);
  const auto check = [](i32 format, const std::vector<u8>& sample, u32 fid, float value, const wchar_t* text) {
    CConverter converter(make_record(kPacket, format, 12), fid, {"", 1, 0, 0, 0, 0}, 0, {});
    std::wstring out;
    EXPECT_TRUE(converter.ConvertiTesto(sample.data(), &out)) << std::hex << fid;
    EXPECT_EQ(out, text) << std::hex << fid;
    EXPECT_EQ(converter.Converti(sample.data()), value) << std::hex << fid;
  };
  // Position 5, 3720 s to go by kind 3; lap 12 by kind 1, 83.4 s by kind 4.
  const std::vector<u8> lap =
      make_sample(12, {{0, 5U << 25 | 3U << 22 | 3720}, {4, 1U << 28 | 12U << 16 | 4U << 12 | 834}});
  check(kSMPL_FMT_MYLAPS_LAPTIME, lap, 0x208B, 5.0F, L" 5");
  check(kSMPL_FMT_MYLAPS_LAPTIME, lap, 0x1D92, 3720000.0F, L"1:02");
  check(kSMPL_FMT_MYLAPS_LAPTIME, lap, 0x98B, 12.0F, L"12");
  check(kSMPL_FMT_MYLAPS_LAPTIME, lap, 0x992, 83400.0F, L"1:23");
  const std::vector<u8> gaps = make_sample(12, {{0, 1 << 10 | 500}, {4, 0x80000000 | 20 << 10 | 250}});
  check(kSMPL_FMT_MYLAPS_GAP, gaps, 0x1E92, 1500.0F, L"+1.50");
  check(kSMPL_FMT_MYLAPS_GAP, gaps, 0x1F12, -20250.0F, L"-20.2");
  check(kSMPL_FMT_MYLAPS_PERSONAL, gaps, 0x1F92, 1500.0F, L"+1.50");
  check(kSMPL_FMT_MYLAPS_PERSONAL, gaps, 0x2012, -20250.0F, L"-20.2");
}

}  // namespace
}  // namespace traguardo
