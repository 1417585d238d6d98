// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>

#include "helpers/parsed_session.h"

namespace traguardo {
namespace {

using test::Bytes;
using test::Channel;
using test::cnf;
using test::frame;
using test::frame_s;
using test::operator+;
using test::ParsedSession;
using test::StoredSample;
using test::tail;
using Names = std::vector<std::string>;
using Samples = std::vector<StoredSample>;

constexpr u32 kSpeed = 0x10;            // km/h
constexpr u32 kSpeedOfWheel = 0x70010;  // another word, the same unit
constexpr u32 kTemperature = 0x11;      // C
constexpr u32 kBattery = 0x195;         // V, stored in mV
constexpr u32 kPackage = 0x1A;

TEST(ChannelTable, DoubledNamesAreNumbered) {
  struct Case {
    std::vector<Channel> channels;
    Names want;
  };
  const Case cases[] = {
      {{{1, "Temp"}, {2, "Temp"}}, {"Temp dup 1", "Temp dup 2"}},
      {{{3, "A"}, {1, "A"}, {2, "A"}}, {"A dup 1", "A dup 2", "A dup 3"}},
      {{{1, "A"}, {2, "A"}, {3, "A"}, {4, "A dup 2"}}, {"A dup 1", "A dup 3", "A dup 4", "A dup 2"}},
      {{{1, "A"}, {1, "B"}, {2, "A"}}, {"B", "A"}},
      {{{1, ""}, {2, ""}}, {" dup 1", " dup 2"}},
  };
  for (const Case& c : cases) {
    ParsedSession session(cnf(c.channels) + tail());
    EXPECT_EQ(session.channel_names(), c.want);
  }
}

TEST(ChannelTable, ARepeatedTableKeepsSamplesWhileTheUnitStays) {
  struct Case {
    const char* name;
    Channel again;
    Samples want;
  };
  Channel same{1, "a"};
  Channel renamed{1, "b"};
  Channel other_word{1, "a"};
  other_word.fid = kSpeedOfWheel;
  other_word.format = 5;
  other_word.size = 1;
  Channel other_unit{1, "a"};
  other_unit.fid = kTemperature;
  const Case cases[] = {
      {"identical", same, {{10000, 7}, {20000, 0x0203}}},
      {"renamed", renamed, {{10000, 7}, {20000, 0x0203}}},
      {"another word and format, same unit", other_word, {{10000, 7}, {20000, 3}}},
      {"another unit starts afresh", other_unit, {{20000, 0x0203}}},
  };
  for (const Case& c : cases) {
    const Bytes data = c.again.size == 1 ? Bytes{3} : Bytes{3, 2};
    ParsedSession session(cnf({same}) + frame_s(10, 1, 7) + cnf({c.again}) + frame('S', 20, 1, data) + tail());
    ASSERT_TRUE(session.good()) << c.name;
    EXPECT_EQ(session.channel_names(), Names{c.again.name}) << c.name;
    EXPECT_EQ(session.samples(c.again.name), c.want) << c.name;
  }
}

// Descriptors follow the object under their index as it is now, also when it was deleted or has another size.
// A place that had no channel when the descriptor was read stays without one; one with a channel follows its index.
TEST(ChannelTable, DescriptorsFollowARepeatedTableWhereTheyHadAChannel) {
  Channel wide{1, "a"};
  wide.fid = kTemperature;
  wide.format = 3;
  wide.size = 4;
  ParsedSession session(cnf({{1, "a"}}, test::grp(5, {1, 2})) + frame('G', 10, 5, Bytes{1, 0}) + cnf({wide, {2, "b"}}) +
                        frame('G', 20, 5, Bytes{2, 0, 0, 0}) + frame('G', 30, 5, Bytes{2, 0, 0, 0, 3, 0}) + tail());
  EXPECT_EQ(session.samples("a"), (Samples{{20000, 2}}));
  EXPECT_EQ(session.samples("b"), Samples{});
}

TEST(ChannelTable, RecordsOfAnotherSizeAreIgnored) {
  Bytes shorter = Channel{1, "a"}.record();
  shorter.pop_back();
  ParsedSession session(cnf({{2, "b"}}, test::tag("CHS", shorter)) + tail());
  EXPECT_EQ(session.channel_names(), Names{"b"});
}

TEST(ChannelTable, ChannelsTakeUnitAndPropertiesFromTheirRecord) {
  Channel speed{1, "speed", 4, 2, kSpeed, 20000, 0x600};
  speed.device_code = 48;
  speed.id_in_device = 3;
  speed.device_serial = 77;
  Channel lateral{2, "lateral", 4, 2, 0x1183};
  Channel bits{3, "bits", 13, 1, kSpeed};
  Channel unknown{4, "unknown", 4, 2, 0x7F};
  ParsedSession session(cnf({speed, lateral, bits, unknown}) + tail());
  const CParsedChannel* a = session.channel("speed");
  EXPECT_EQ(a->GetUnita(), "km/h");
  EXPECT_TRUE(a->GetTieniUltimoValore());
  EXPECT_TRUE(a->HasFlag400());
  EXPECT_TRUE(a->IsVelocita());
  EXPECT_EQ(a->GetFrequenza(), 50.0F);
  EXPECT_EQ(a->GetDeviceCode(), 48);
  EXPECT_EQ(a->GetIdInDevice(), 3);
  EXPECT_EQ(a->GetDeviceSerial(), 77U);
  EXPECT_TRUE(session.channel("lateral")->IsAccLaterale());
  EXPECT_EQ(session.channel("lateral")->GetUnita(), "g");
  EXPECT_TRUE(session.channel("bits")->IsBitField());
  EXPECT_EQ(session.channel("bits")->GetUnita(), "") << "a bit field has no unit";
  EXPECT_EQ(session.channel("unknown")->GetUnita(), "");
}

// What a channel makes of its formats; each format's own cases stand with the converter.
TEST(ChannelTable, SamplesAreConvertedAsTheirFormatSays) {
  struct Case {
    const char* name;
    i32 format;
    u32 fid;
    Bytes data;
    float want;
  };
  const float nan = std::nanf("");
  const Case cases[] = {
      {"S32", 0, kSpeed, {0xFE, 0xFF, 0xFF, 0xFF}, -2},
      {"U16 sentinel", 4, kSpeed, {0xFF, 0xCF}, 0},
      {"FLOAT", 6, kSpeed, {0, 0, 0x20, 0xC0}, -2.5F},
      {"F16 not a number passes", 20, kSpeed, {0, 0x7E}, nan},
      {"GEAR below the lowest", 11, 0x61F, {0xEC, 0xFF}, -8},
      {"GEAR sentinel", 11, 0x61F, {0xFF, 0xCF}, -8},
      {"bit field", 13, kBattery, {0xFF}, 255},
      {"text of a gear", 15, 0x61F, {9, 0, '4', 0, 0, 0, 0, 0}, 4},
      {"text of another word", 15, kSpeed, {9, 0, '4', 0, 0, 0, 0, 0}, 9},
      {"gain of the unit", 4, kBattery, {0xB0, 0x36}, 14000 * 0.001F},
      {"no reader", 25, kSpeed, {1, 2, 3, 4}, 0},
      {"date and time is no number", 10, kSpeed, Bytes(36, 1), 0},
  };
  for (const Case& c : cases) {
    ParsedSession session(cnf({{1, "a", c.format, static_cast<u32>(c.data.size()), c.fid}}) +
                          frame('S', 10, 1, c.data) + tail());
    const Samples samples = session.samples("a");
    ASSERT_EQ(samples.size(), 1U) << c.name;
    if (std::isnan(c.want)) {
      EXPECT_TRUE(std::isnan(samples[0].value)) << c.name;
    } else {
      EXPECT_EQ(samples[0].value, c.want) << c.name;
    }
  }
}

TEST(ChannelTable, PacketsHaveNoChannelAndOtherFramesGoOn) {
  const Channel packets[] = {
      {10, "GPS", 8, 56, kPackage | 3 << 7},
      {11, "lap v3", 31, 20, kPackage | 1 << 7 | 3 << 15},
      {12, "lap v2", 22, 32, kPackage | 1 << 7 | 2 << 15},
      {13, "total", 26, 12, kPackage | 5 << 7},
      {14, "trip", 27, 12, kPackage | 6 << 7},
      {15, "best", 33, 60, kPackage | 10 << 7},
      {16, "rolling", 32, 12, kPackage | 11 << 7},
      {17, "other", 19, 8, kPackage | 40 << 7},
  };
  Bytes bytes =
      cnf({{1, "a"}, packets[0], packets[1], packets[2], packets[3], packets[4], packets[5], packets[6], packets[7]});
  for (const Channel& packet : packets) bytes = bytes + frame('S', 10, packet.index, Bytes(packet.size));
  for (const Channel& packet : packets) bytes = bytes + frame('M', 10, packet.index, Bytes{1, 0} + Bytes(packet.size));
  ParsedSession session(bytes + frame_s(20, 1, 5) + tail());
  ASSERT_TRUE(session.good());
  EXPECT_EQ(session.channel_names(), Names{"a"});
  EXPECT_EQ(session.samples("a"), (Samples{{20000, 5}}));
  EXPECT_TRUE(session.reader().errors_in_s().empty());
  EXPECT_TRUE(session.reader().errors_in_m().empty());
}

TEST(ChannelTable, OnlyWantedChannelsAreMadeWhereSomebodySaysWhich) {
  const test::TempFolder folder;
  folder.write("a.qlt", cnf({{1, "a"}, {2, "b"}}) + tail());
  CParserZep_2Gv4 reader(folder.wide("a.qlt"), {});
  reader.SetCanaliVoluti({"b"});
  ASSERT_TRUE(reader.ParsaFile(nullptr));
  ASSERT_EQ(reader.GetCanali().size(), 1U);
  EXPECT_EQ(reader.GetCanali().front()->GetNome(), "b");
}

}  // namespace
}  // namespace traguardo
