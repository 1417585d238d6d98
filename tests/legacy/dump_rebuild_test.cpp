// SPDX-License-Identifier: MIT
// Dumps of the logger's memory, taken apart: where each sample goes, and what damage costs.
#include "legacy/file/dump_rebuild.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "helpers/wire.h"
#include "opened_session.h"

namespace traguardo::test {
namespace {

constexpr i32 kPlainFamily = 0;
constexpr i32 kExtendedFamily = 7;
constexpr u64 kNoLimit = u64{1} << 30;

// Of a logger that uses its first channel, without which there is no dump.
Dump dump_of(const Bytes& schedule) {
  Dump dump(schedule);
  dump.set_byte(0, 1);
  return dump;
}

struct Rebuilt {
  bool succeeded = false;
  u32 error = 0;
  Words words;
};

Rebuilt rebuild(const Bytes& bytes, i32 family = kPlainFamily, u64 most_words = kNoLimit) {
  const auto read = [&bytes](u64 offset, u8* out, std::size_t count) {
    const std::size_t at = static_cast<std::size_t>(std::min<u64>(offset, bytes.size()));
    const std::size_t held = std::min(count, bytes.size() - at);
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), held, out);
    return held;
  };
  CWMPvers500 reader(read, bytes.size(), most_words);
  Rebuilt result;
  result.succeeded = reader.Rebuild(family, &result.error);
  result.words = reader.take_words();
  return result;
}

// The samples of a sound dump, in the order in which they were put in.
Words words_of(const Dump& made, i32 family = kPlainFamily) {
  const Rebuilt result = rebuild(made.bytes(), family);
  EXPECT_TRUE(result.succeeded);
  EXPECT_EQ(result.error, 0U);
  return result.words;
}

TEST(DumpRebuild, SamplesGoRoundTheSchedule) {
  const std::tuple<const char*, i32, Bytes, Words, Words> cases[] = {
      {"ascending by channel, whatever the schedule's order", 0, {9, 2}, {1, 2, 3, 4}, {2, 4, 1, 3}},
      {"twice in a round", 0, {5, 2, 5, 9}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, {2, 6, 10, 1, 3, 5, 7, 9, 4, 8}},
      {"bytes that name no channel", 0, {5, 255, 24, 2, 31}, {1, 2, 3, 4}, {2, 4, 1, 3}},
      {"the first byte doesn't count", 0, {255, 4, 1}, {1, 2, 3, 4}, {2, 4, 1, 3}},
      {"extended channels behind primary ones", 7, {249, 32, 23}, {1, 2, 3, 4}, {3, 2, 1, 4}},
      {"family 7 skips 24 to 31 and 250 to 255", 7, {40, 24, 31, 250, 255}, {1, 2}, {1, 2}},
      {"other families know no extended channels", 0, {40, 1, 249}, {1, 2}, {1, 2}},
  };
  for (const auto& [what, family, schedule, stream, wanted] : cases) {
    EXPECT_EQ(words_of(dump_of(schedule).words(stream), family), wanted) << what;
  }
}

TEST(DumpRebuild, ScheduleLengthFollowsTheFamily) {
  // Family, device, where in the schedule channels 1, 2 and so on stand, and what the stream 1, 2, 3, 4 becomes.
  const std::tuple<const char*, i32, u32, std::vector<std::size_t>, Words> cases[] = {
      {"500 entries", 5, 0, {0, 499, 500}, {1, 3, 2, 4}},
      {"1000 entries", 7, 0, {0, 999, 1000}, {1, 3, 2, 4}},
      {"5000 where a channel stands behind them", 0, 0, {0, 4500}, {1, 3, 2, 4}},
      {"never more than 5000", 0, 0, {0, 4999}, {1, 3, 2, 4}},
      {"the layout of device 37 has room for 2000", 0, 37, {0, 1999, 2000}, {1, 3, 2, 4}},
  };
  for (const auto& [what, family, device, places, wanted] : cases) {
    Bytes schedule(Dump::kScheduleRoom, 0xFF);
    for (std::size_t i = 0; i < places.size(); ++i) schedule[places[i]] = static_cast<u8>(i + 1);
    Dump made = dump_of(schedule);
    made.set_device(device).words({1, 2, 3, 4});
    EXPECT_EQ(words_of(made, family), wanted) << what;
  }
}

TEST(DumpRebuild, TheFormatWordPlacesTheStream) {
  EXPECT_EQ(words_of(dump_of({1}).set_format(0x10300).words({1, 2})), (Words{1, 2}));
  EXPECT_EQ(words_of(dump_of({1}).set_format(0x102FF).words({1, 2})), (Words{1, 2}));
  // A new stream read from the old place would begin in the set-up area.
  Bytes crossed = dump_of({1}).set_format(0x10300).words({1, 2}).bytes();
  crossed[193] = 0;
  EXPECT_EQ(rebuild(crossed).words.size(), (65536U - 24576U) / 2 + 2);
}

TEST(DumpRebuild, RefusesADumpWithoutChannels) {
  // The only flag that is set: the last ones that count, and the first that don't.
  for (const auto& [flag, family, error] : {std::tuple{23U, kPlainFamily, 0U},
                                            {24U, kPlainFamily, 1001U},
                                            {7696U + 63, kExtendedFamily, 0U},
                                            {7696U + 63, kPlainFamily, 1001U},
                                            {7696U + 64, kExtendedFamily, 1001U}}) {
    const Rebuilt result = rebuild(dump_of({1}).set_byte(0, 0).set_byte(flag, 9).words({1}).bytes(), family);
    EXPECT_EQ(result.succeeded, error == 0);
    EXPECT_EQ(result.error, error) << flag;
  }
  EXPECT_EQ(rebuild(Bytes()).error, 1001U);
}

TEST(DumpRebuild, StreamsByHand) {
  Words lost_run(257, 0);
  lost_run.front() = 5;
  lost_run.back() = 6;
  const std::tuple<const char*, Dump, Words> cases[] = {
      {"a channel without samples has no place", dump_of({1, 2, 3}).set_byte(2, 1).words({10, 20}), {10, 20}},
      {"a wrong sum",
       dump_of({1, 2}).words({1, 2}).checksum().words({3, 4, 5, 6}).checksum(1).words({7, 8}).checksum().words({9, 10}),
       {1, 0, 0, 7, 9, 2, 0, 0, 8, 10}},
      {"a block that ends within a round: the next one starts the schedule over",
       dump_of({1, 2}).words({1, 2, 3}).checksum().words({4, 5}).checksum(),
       {0, 0, 4, 0, 5}},
      {"the same at a mark, which doesn't start the sum over",
       dump_of({1, 2}).words({1, 2}).mark().words({3}).mark().words({4, 5}).checksum(),
       {1, 0, 4, 2, 5}},
      {"the last block ends without a word on it",
       dump_of({1, 2}).words({1, 2}).checksum(1).words({3, 4, 5}),
       {0, 3, 5, 0, 4}},
      {"laps don't move the schedule",
       dump_of({1, 2}).words({1}).lap_end(3).words({2, 3}).lap_record(5, 12, 61000).words({4, 5, 6}).checksum(),
       {1, 3, 5, 2, 4, 6}},
      {"the sum of a lap record damages the block in front of it",
       dump_of({1, 2}).words({1}).lap_record(5, 12, 61000, 1).words({2, 3, 4}).checksum(),
       {0, 3, 2, 4}},
      {"words for others within a round, outside the sum",
       dump_of({1, 2})
           .words({1})
           .foreign({0x9000, 0xFFFF, 0xD000}, false, 0xAA)
           .words({2})
           .checksum()
           .words({3, 4})
           .checksum(),
       {1, 3, 2, 4}},
      {"and in the sum", dump_of({1, 2}).foreign({0x9000, 0xFFFF, 0xD000}, true).words({1, 2}).checksum(), {1, 2}},
      {"erased words are lost samples",
       dump_of({1, 2}).words({5, 0xFFFF, 6, 0xFFFF, 0xFFFF, 7}).checksum().words({8, 9}).checksum(),
       {5, 6, 0, 8, 0, 0, 7, 9}},
      {"up to 255", dump_of({1}).words({5}).repeat(255, 0xFFFF).words({6}).checksum(), lost_run},
      {"and 256 are the end", dump_of({1}).words({5}).repeat(256, 0xFFFF).words({6, 7}), {5}},
      {"others of high byte 0xFF are samples", dump_of({1}).words({0xFF00, 0xFFFE}), {0xFF00, 0xFFFE}},
  };
  for (const auto& [what, made, wanted] : cases) EXPECT_EQ(words_of(made), wanted) << what;
}

TEST(DumpRebuild, ReadingStopsBehindAnErasedTail) {
  // The lap record eats five of the 256 erased words at the end of the first 64 KiB, so that the stream itself goes on.
  Dump made = dump_of({1});
  made.repeat(32768 - 300, 1).word(0xD205).repeat(256, 0xFFFF).repeat(43, 1).repeat(100, 1);
  EXPECT_EQ(words_of(made).size(), 32768U - 300 + 251 + 43);
  // The same a little further on lies across two pieces, and neither holds enough of it.
  Dump across = dump_of({1});
  across.repeat(32768 - 100, 1).word(0xD205).repeat(256, 0xFFFF).repeat(100, 1);
  EXPECT_EQ(words_of(across).size(), 32768U - 100 + 251 + 100);
}

TEST(DumpRebuild, OnlySoManyDamagedBlocksAndWordsAreKnown) {
  // One sample a block, all damaged: the list's last place goes to the last of them.
  Dump made = dump_of({1});
  for (u16 i = 0; i < 2100; ++i) made.word(7).checksum(1);
  Words wanted(2100, 0);
  std::fill(wanted.begin() + 1999, wanted.end() - 1, u16{7});
  EXPECT_EQ(words_of(made), wanted);
  // No more words than the session has room for.
  const Bytes bytes = dump_of({1, 2}).words({1, 2, 3, 4, 5, 6}).bytes();
  EXPECT_EQ(rebuild(bytes, kPlainFamily, 4).words, (Words{1, 3, 5, 2}));
  EXPECT_EQ(rebuild(bytes, kPlainFamily, 0).words, Words{});
}

// --- Through a session file

TEST(DumpRebuild, TheChannelsOfASessionFile) {
  // Twice a round at 20 Hz, once at 10 Hz.
  Dump made = dump_of({4, 1, 4});
  made.words({10, 1, 11, 12, 2, 13}).checksum().words({14, 3, 15}).checksum(1).words({16, 4, 17}).checksum();
  wmp::File file;
  file.version = 500;
  file.family = 2;
  file.dump = made.bytes();
  const std::vector<u16> fast = {10, 11, 12, 13, 0, 0, 16, 17};
  file.logged = {plain_channel("Slow", {1, 2, 0, 4}, 2), plain_channel("Fast", fast, 3)};
  SoundSession opened(file);
  EXPECT_EQ(opened.values(0), (std::vector<float>{1, 2, 0, 4}));
  EXPECT_EQ(opened.values(1), (std::vector<float>{10, 11, 12, 13, 0, 0, 16, 17}));
  EXPECT_EQ(opened.folder().names(), (std::vector<std::string>{"session.bak", "session.wmp"}));

  // What the dump lacks reads as zero.
  file.logged = {plain_channel("A", {5, 6, 0, 0})};
  file.dump = dump_of({1}).words({5, 6}).bytes();
  EXPECT_EQ(SoundSession(file).values(0), (std::vector<float>{5, 6, 0, 0}));
  // Without a dump that can be used there is no session.
  Bytes beyond = wmp::build(file);
  set_u32(&beyond, wmp::configuration_at(500), 0xFFFFFFF0);
  EXPECT_EQ(OpenedSession(beyond).error(), 1001U);
  file.dump = dump_of({1}).set_byte(0, 0).words({5, 6}).bytes();
  OpenedSession no_channels(wmp::build(file));
  EXPECT_FALSE(no_channels.opened());
  EXPECT_EQ(no_channels.error(), 1001U);
  EXPECT_EQ(no_channels.session().tables.channels.size(), 0U);
}

}  // namespace
}  // namespace traguardo::test
