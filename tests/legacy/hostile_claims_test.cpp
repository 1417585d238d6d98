// Sizes in a file are claims. None of them may crash the reader, make it run without end, or take memory that the file
// does not pay for.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "opened_session.h"

namespace traguardo::test {
namespace {

using wmp::Bytes;

constexpr u16 kVersions[] = {100, 320, 400, 451, 500, 550, 600, 700};
constexpr u16 kVersionsWithRuns[] = {500, 550, 600};
constexpr u16 kVersionsWithRecordsOf668[] = {400, 500, 550, 600};
constexpr std::size_t kChannelFields[] = {62, 64, 68, 70, 72, 92, 96, 100, 104, 132, 136, 661, 662, 664};
constexpr u16 kWordClaims[] = {0, 1, 3, 500, 0x7FFF, 0x8000, 0xFFFF};

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
  CWMP& session = opened.session();
  if (!opened.opened()) {
    EXPECT_EQ(session.channel_count(), 0U);
    return;
  }
  u64 logged = 0;
  u64 derived = 0;
  for (std::size_t i = 0; i < session.channel_count(); ++i) {
    EXPECT_EQ(session.values(i).size(), session.channel(i).sample_count());
    if (session.is_derived(i)) {
      derived += session.values(i).size();
    } else {
      EXPECT_EQ(session.raw_words(i).size(), session.values(i).size());
      logged += session.values(i).size();
    }
  }
  EXPECT_LE(logged, bytes.size());
  EXPECT_LE(derived, 4 * logged + (u64{16} << 20));
}

TEST(HostileClaims, EveryCountOfTheHeader) {
  struct Field {
    const char* what;
    std::size_t at;
  };
  const Field words[] = {{"channels", 96}, {"laps", 98}, {"logged", 100}, {"derived", 102}, {"reference", 118}};
  const Field dwords[] = {{"file length", 84}, {"duration", 88}, {"value area", 92}, {"raw area", 121}};
  for (const u16 version : kVersions) {
    const Bytes sound = wmp::build(claiming_file(version));
    const std::size_t header = wmp::header_at(version);
    const auto check = [&](Bytes damaged) {
      if (version >= 600) wmp::reseal_block_a(&damaged);
      expect_bounded(damaged);
    };
    for (const Field& field : words) {
      for (const u16 claim : kWordClaims) {
        SCOPED_TRACE(testing::Message() << version << ' ' << field.what << ' ' << claim);
        Bytes damaged = sound;
        wmp::set_word(&damaged, header + field.at, claim);
        check(std::move(damaged));
      }
    }
    for (const Field& field : dwords) {
      for (const u32 claim : {0U, 1U, 3U, 100000U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        SCOPED_TRACE(testing::Message() << version << ' ' << field.what << ' ' << claim);
        Bytes damaged = sound;
        wmp::set_dword(&damaged, header + field.at, claim);
        check(std::move(damaged));
      }
    }
  }
}

TEST(HostileClaims, RunsExtrasAndTheDump) {
  for (const u16 version : kVersionsWithRuns) {
    const Bytes sound = wmp::build(claiming_file(version));
    const std::size_t block = wmp::configuration_at(version);
    for (const u32 claim : {0U, 1U, 2U, 0xFFFFU, 0xFFFFFFFFU}) {
      for (const std::size_t at : {std::size_t{0}, std::size_t{18}, std::size_t{22}}) {
        SCOPED_TRACE(testing::Message() << version << " at " << at << ' ' << claim);
        Bytes damaged = sound;
        wmp::set_dword(&damaged, block + at, claim);
        if (version >= 600) wmp::reseal_block_a(&damaged);
        expect_bounded(damaged);
      }
    }
  }
}

TEST(HostileClaims, EveryNumberOfAChannel) {
  for (const u16 version : kVersionsWithRecordsOf668) {
    const Bytes sound = wmp::build(claiming_file(version));
    for (std::size_t channel = 0; channel < 3; ++channel) {
      const std::size_t stride = version >= 600 ? 1056U : version >= 500 ? 1024U : 668U;
      const std::size_t record = wmp::first_channel_at(version) + channel * stride;
      for (const std::size_t at : kChannelFields) {
        for (const u32 claim : {0U, 1U, 15U, 0xFFFFU, 0x7F800000U, 0xFFFFFFFFU}) {
          SCOPED_TRACE(testing::Message() << version << " channel " << channel << " at " << at << ' ' << claim);
          Bytes damaged = sound;
          wmp::set_dword(&damaged, record + at, claim);
          if (version >= 600) wmp::reseal_channel(&damaged, channel);
          expect_bounded(damaged);
        }
      }
    }
  }
}

TEST(HostileClaims, DerivedChannelsAreBoundedTogether) {
  // Each of 300 derived channels of 1000 Hz would be a thousand times as long as the logged one of 1 Hz.
  wmp::File file = small_file(600);
  file.logged = {plain_channel("Slow", std::vector<u16>(2000, 7), 0)};
  file.derived.assign(300, plain_channel("Fast", {}, 8));
  expect_bounded(wmp::build(file));
}

TEST(HostileClaims, AManyRunSessionNeedsNoMoreThanItsLaps) {
  // The last lap's run number says 65,535 runs; four of them exist.
  wmp::File file = small_file(600);
  file.laps = {wmp::Lap{10, 1, 1}, wmp::Lap{10, 2, 1}, wmp::Lap{10, 60000, 1}, wmp::Lap{10, 65535, 1}};
  OpenedSession opened(wmp::build(file));
  ASSERT_TRUE(opened.opened());
  EXPECT_EQ(opened.session().runs().size(), 4U);
  EXPECT_EQ(opened.session().configuration().run_count(), 65535);
}

TEST(HostileClaims, FilesThatEndAnywhere) {
  for (const u16 version : kVersions) {
    const Bytes sound = wmp::build(claiming_file(version));
    const std::size_t step = sound.size() / 60 + 1;
    for (std::size_t length = 0; length < sound.size(); length += step) {
      SCOPED_TRACE(testing::Message() << version << " cut at " << length);
      Bytes cut(sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(length));
      // Below 600 a length that agrees lets the reader find out by itself.
      if (version < 600 && length > 100) wmp::set_dword(&cut, 84, static_cast<u32>(length));
      expect_bounded(cut);
    }
  }
}

TEST(HostileClaims, RandomTables) {
  std::mt19937 random(20260101);
  for (const u16 version : kVersions) {
    const wmp::File file = claiming_file(version);
    const Bytes sound = wmp::build(file);
    for (int round = 0; round < 60; ++round) {
      Bytes damaged = sound;
      const std::size_t tables_end = std::min<std::size_t>(damaged.size(), 2272 + 3 * 1056 + 2 * 288 + 4128 + 96);
      for (int hit = 0; hit < 12; ++hit) {
        const std::size_t at = 4 + random() % (tables_end - 4);
        damaged[at] = static_cast<u8>(random());
      }
      if (version < 600) {
        wmp::set_word(&damaged, 0, 22349);
        wmp::set_dword(&damaged, 84, static_cast<u32>(damaged.size()));
      } else {
        wmp::reseal_block_a(&damaged);
        for (std::size_t i = 0; i < 3; ++i) wmp::reseal_channel(&damaged, i);
      }
      SCOPED_TRACE(testing::Message() << version << " round " << round);
      expect_bounded(damaged);
    }
  }
}

TEST(HostileClaims, ACutRawAreaYieldsWhatIsThere) {
  for (const u16 version : kBlockVersions) {
    Bytes bytes = wmp::build(small_file(version));
    bytes.resize(bytes.size() - 8);  // four words of the second channel's five
    OpenedSession opened(bytes);
    ASSERT_TRUE(opened.opened()) << opened.error();
    EXPECT_EQ(opened.values(0).size(), 10U);
    EXPECT_EQ(opened.values(1), std::vector<float>{11});
  }
}

}  // namespace
}  // namespace traguardo::test
