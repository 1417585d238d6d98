// SPDX-License-Identifier: MIT
// Sizes in a file are claims. None of them may crash the reader, make it run without end, or take memory that the file
// does not pay for.
#include <gtest/gtest.h>

#include <algorithm>
#include <span>

#include "legacy/wmp_parser.h"
#include "opened_session.h"

namespace traguardo::test {
namespace {

constexpr u16 kVersions[] = {100, 320, 400, 451, 500, 550, 600, 700};
constexpr u16 kVersionsWithRecordsOf668[] = {400, 500, 550, 600};

wmp::File claiming_file(u16 version) {
  wmp::File file = small_file(version);
  file.derived = {plain_channel("Derived", {}, 8)};
  if (version <= 320) file.derived.clear();
  file.extras = 1;
  if (version == 500) file.dump = Bytes(70000, 0x11);
  return file;
}

// However it ends, what is there fits together and is paid for.
void expect_bounded(const Bytes& bytes) {
  OpenedSession opened(bytes);
  WmpSession& session = opened.session();
  if (!opened.opened()) {
    EXPECT_EQ(session.tables.channels.size(), 0U);
    return;
  }
  u64 logged = 0;
  u64 derived = 0;
  for (std::size_t i = 0; i < session.tables.channels.size(); ++i) {
    EXPECT_EQ(session.store.values(i).size(), session.tables.channels[i].record.sample_count());
    if (session.tables.is_derived(i)) {
      derived += session.store.values(i).size();
    } else {
      EXPECT_EQ(session.store.raw_words(i).size(), session.store.values(i).size());
      logged += session.store.values(i).size();
    }
  }
  EXPECT_LE(logged, bytes.size());
  // A day at 1000 Hz.
  EXPECT_LE(derived, 4 * logged + 86400 * 1000);
}

// Each field, wherever its record lies, with each of these claims in it. Four bytes cover the shorter fields, too.
constexpr u32 kClaims[] = {0, 1, 2, 3, 15, 500, 0x7FFF, 0x8000, 0xFFFF, 100000, 0x7F800000, 0x7FFFFFFF, 0xFFFFFFFF};

void claim_everywhere(u16 version, std::size_t record, std::span<const std::size_t> fields, std::size_t width) {
  const Bytes sound = wmp::build(claiming_file(version));
  for (const std::size_t at : fields) {
    for (const u32 claim : kClaims) {
      if (width == 2 && claim > 0xFFFF) break;
      SCOPED_TRACE(testing::Message() << version << ", record at " << record << ", field " << at << ": " << claim);
      Bytes damaged = sound;
      if (width == 2) {
        set_u16(&damaged, record + at, static_cast<u16>(claim));
      } else {
        set_u32(&damaged, record + at, claim);
      }
      if (version >= 600) {
        wmp::reseal_first_group(&damaged);
        for (std::size_t i = 0; i < 3; ++i) wmp::reseal_channel(&damaged, i);
      }
      expect_bounded(damaged);
    }
  }
}

TEST(HostileClaims, EveryCountOfTheHeader) {
  // Channels, laps, logged, derived, reference; file length, duration, value area, raw area.
  constexpr std::size_t kWords[] = {96, 98, 100, 102, 118};
  constexpr std::size_t kDwords[] = {84, 88, 92, 121};
  for (const u16 version : kVersions) {
    claim_everywhere(version, wmp::header_at(version), kWords, 2);
    claim_everywhere(version, wmp::header_at(version), kDwords, 4);
    // The dump's place, and the counts of runs and extra records.
    constexpr std::size_t kConfiguration[] = {0, 18, 22};
    if (version >= 500) claim_everywhere(version, wmp::configuration_at(version), kConfiguration, 4);
  }
}

TEST(HostileClaims, EveryNumberOfAChannel) {
  constexpr std::size_t kFields[] = {62, 64, 68, 70, 72, 92, 96, 100, 104, 132, 136, 661, 662, 664};
  for (const u16 version : kVersionsWithRecordsOf668) {
    const std::size_t stride = version >= 600 ? 1056U : version >= 500 ? 1024U : 668U;
    for (std::size_t channel = 0; channel < 3; ++channel) {
      claim_everywhere(version, wmp::first_channel_at(version) + channel * stride, kFields, 4);
    }
  }
}

TEST(HostileClaims, DerivedChannelsAreBoundedTogether) {
  // Each of 300 derived channels of 1000 Hz would be a thousand times as long as the logged one of 1 Hz.
  wmp::File file = small_file(600);
  file.logged = {plain_channel("Slow", std::vector<u16>(2000, 7), 0)};
  file.derived.assign(100, plain_channel("Fast", {}, 8));
  const LogFile log;
  SoundSession opened(file);
  constexpr std::size_t kWhole = 43;  // 2,000,000 samples each; the next one is cut, the others get nothing
  for (const auto& [channel, missing] : {std::pair(kWhole, 0U), {kWhole + 1, 1592000U}, {kWhole + 2, 2000000U}}) {
    EXPECT_EQ(missing_samples(opened.session().tables, channel), missing);
    EXPECT_EQ(opened.values(channel).size(), 2000000U - missing);
  }
  EXPECT_NE(log.text().find("WARNING = Channel Fast ends 1592000 samples early\n"), std::string::npos);
  // A host is told of those, too, that nothing is left of.
  CParserWMP parser(opened.folder().wide("session.wmp"));
  opened.folder().write("session.jts", plain_jts(5));
  ASSERT_TRUE(parser.ParsaFile(nullptr));
  const auto& shortened = parser.shortened_channels();
  ASSERT_EQ(shortened.size(), 100 - kWhole);
  EXPECT_EQ(shortened[1].samples, 0U);
  EXPECT_EQ(shortened[1].missing, 2000000U);
}

TEST(HostileClaims, WhatTheReaderAddsIsNoClaim) {
  const std::tuple<u16, std::size_t, std::size_t> kSessions[] = {{2, 10, 3}, {0, 1, 24}};  // rate, channels, hours
  for (const auto& [rate, channels, hours] : kSessions) {
    wmp::File file = small_file(600);
    file.logged.assign(channels, plain_channel("Slow", std::vector<u16>(3600 * hours * (rate == 2 ? 10 : 1), 7), rate));
    OpenedSession opened(wmp::build(file), Load::kTablesOnly);
    opened.folder().write("FIA.txt", std::string("any"));
    ASSERT_TRUE(opened.open("session.wmp", Load::kEverything));
    ASSERT_EQ(opened.session().tables.channels.size(), channels + 6);
    for (std::size_t i = channels; i < channels + 6; ++i) {
      EXPECT_EQ(opened.session().tables.channels[i].record.sample_count(), 100 * 3600 * hours);
    }
  }
}

TEST(HostileClaims, FilesThatEndAnywhere) {
  for (const u16 version : kVersions) {
    const Bytes sound = wmp::build(claiming_file(version));
    const std::size_t step = sound.size() / 60 + 1;
    for (std::size_t length = 0; length < sound.size(); length += step) {
      SCOPED_TRACE(testing::Message() << version << " cut at " << length);
      Bytes cut(sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(length));
      // Below 600 a length that agrees lets the reader find out by itself.
      if (version < 600 && length > 100) set_u32(&cut, 84, static_cast<u32>(length));
      expect_bounded(cut);
    }
  }
}

}  // namespace
}  // namespace traguardo::test
