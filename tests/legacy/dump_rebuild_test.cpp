// Dumps of the logger's memory, taken apart: where each sample goes, and what damage costs.
#include "legacy/file/dump_rebuild.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "helpers/dump_builder.h"
#include "opened_session.h"

namespace traguardo::test {
namespace {

using dump::Bytes;
using dump::Dump;
using dump::Words;

constexpr i32 kPlainFamily = 0;
constexpr i32 kExtendedFamily = 7;
constexpr u64 kNoLimit = u64{1} << 30;

struct Rebuilt {
  bool succeeded = false;
  u32 error = 0;
  Words words;
  std::vector<DumpLap> laps;
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
  result.laps.assign(reader.laps().begin(), reader.laps().end());
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
  struct Case {
    const char* what;
    i32 family;
    Bytes schedule;
    Words stream;
    Words wanted;
  };
  const Case cases[] = {
      {"one channel", 0, {3}, {7, 8, 9}, {7, 8, 9}},
      {"ascending by channel, whatever the schedule's order", 0, {9, 2}, {1, 2, 3, 4}, {2, 4, 1, 3}},
      {"twice in a round", 0, {5, 2, 5, 9}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, {2, 6, 10, 1, 3, 5, 7, 9, 4, 8}},
      {"bytes that name no channel", 0, {5, 255, 24, 2, 31}, {1, 2, 3, 4}, {2, 4, 1, 3}},
      {"the first byte doesn't count", 0, {255, 4, 1}, {1, 2, 3, 4}, {2, 4, 1, 3}},
      {"extended channels behind primary ones", 7, {249, 32, 23}, {1, 2, 3, 4}, {3, 2, 1, 4}},
      {"family 7 skips 24 to 31 and 250 to 255", 7, {40, 24, 31, 250, 255}, {1, 2}, {1, 2}},
      {"other families know no extended channels", 0, {40, 1, 249}, {1, 2}, {1, 2}},
      {"nothing counts", 0, {}, {1, 2, 3}, {}},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.what);
    EXPECT_EQ(words_of(Dump(one.schedule).words(one.stream), one.family), one.wanted);
  }
}

TEST(DumpRebuild, ScheduleLengthFollowsTheFamily) {
  struct Case {
    const char* what;
    i32 family;
    u32 device;
    std::vector<std::size_t> places;  // where in the schedule channel 1, then 2, and so on stands
    Words wanted;                     // of the stream 1, 2, 3, 4
  };
  const Case cases[] = {
      {"500 entries", 5, 0, {0, 499, 500}, {1, 3, 2, 4}},
      {"500 entries, family 9", 9, 0, {0, 500}, {1, 2, 3, 4}},
      {"500 entries, family 10", 10, 0, {499, 500}, {1, 2, 3, 4}},
      {"1000 entries", 7, 0, {0, 999, 1000}, {1, 3, 2, 4}},
      {"4000 entries", 0, 0, {0, 3999}, {1, 3, 2, 4}},
      {"5000 where a channel stands behind them", 0, 0, {0, 4500}, {1, 3, 2, 4}},
      {"never more than 5000", 0, 0, {0, 4999}, {1, 3, 2, 4}},
      {"the layout of device 37 has room for 2000", 0, 37, {0, 1999, 2000}, {1, 3, 2, 4}},
      {"a device with a layout of its own kind", 0, 26, {0, 4500}, {1, 3, 2, 4}},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.what);
    Bytes schedule(dump::kScheduleRoom, 0xFF);
    for (std::size_t i = 0; i < one.places.size(); ++i) schedule[one.places[i]] = static_cast<u8>(i + 1);
    Dump made(schedule);
    made.set_device(one.device).words({1, 2, 3, 4});
    EXPECT_EQ(words_of(made, one.family), one.wanted);
  }
}

TEST(DumpRebuild, TheFormatWordPlacesTheStream) {
  EXPECT_EQ(words_of(Dump({1}).set_format(0x10300).words({1, 2})), (Words{1, 2}));
  EXPECT_EQ(words_of(Dump({1}).set_format(0x102FF).words({1, 2})), (Words{1, 2}));
  // A new stream read from the old place would begin in the set-up area.
  Bytes crossed = Dump({1}).set_format(0x10300).words({1, 2}).bytes();
  crossed[193] = 0;
  EXPECT_EQ(rebuild(crossed).words.size(), (65536U - 24576U) / 2 + 2);
}

TEST(DumpRebuild, RefusesADumpWithoutChannels) {
  struct Case {
    std::size_t flag;  // the only one that is set
    i32 family;
    bool succeeds;
  };
  // The last flags that count, and the first that don't.
  for (const Case& one :
       {Case{23, kPlainFamily, true}, Case{24, kPlainFamily, false}, Case{7696 + 63, kExtendedFamily, true},
        Case{7696 + 63, kPlainFamily, false}, Case{7696 + 64, kExtendedFamily, false}}) {
    SCOPED_TRACE(one.flag);
    const Rebuilt result = rebuild(Dump({1}).set_byte(0, 0).set_byte(one.flag, 9).words({1}).bytes(), one.family);
    EXPECT_EQ(result.succeeded, one.succeeds);
    EXPECT_EQ(result.error, one.succeeds ? 0U : 1001U);
  }
  EXPECT_EQ(rebuild(Bytes()).error, 1001U);
}

TEST(DumpRebuild, StreamsByHand) {
  struct Case {
    const char* what;
    Dump made;
    Words wanted;
  };
  Words lost_run(257, 0);
  lost_run.front() = 5;
  lost_run.back() = 6;
  const Case cases[] = {
      {"a channel without samples has no place", Dump({1, 2, 3}).set_byte(2, 1).words({10, 20}), {10, 20}},
      {"a wrong sum",
       Dump({1, 2}).words({1, 2}).checksum().words({3, 4, 5, 6}).checksum(1).words({7, 8}).checksum().words({9, 10}),
       {1, 0, 0, 7, 9, 2, 0, 0, 8, 10}},
      {"a block that ends within a round: the next one starts the schedule over",
       Dump({1, 2}).words({1, 2, 3}).checksum().words({4, 5}).checksum(),
       {0, 0, 4, 0, 5}},
      {"the same at a mark, which doesn't start the sum over",
       Dump({1, 2}).words({1, 2}).mark().words({3}).mark().words({4, 5}).checksum(),
       {1, 0, 4, 2, 5}},
      {"the last block ends without a word on it",
       Dump({1, 2}).words({1, 2}).checksum(1).words({3, 4, 5}),
       {0, 3, 5, 0, 4}},
      {"laps don't move the schedule",
       Dump({1, 2}).words({1}).lap_end(3).words({2, 3}).lap_record(5, 12, 61000).words({4, 5, 6}).checksum(),
       {1, 3, 5, 2, 4, 6}},
      {"the sum of a lap record damages the block in front of it",
       Dump({1, 2}).words({1}).lap_record(5, 12, 61000, 1).words({2, 3, 4}).checksum(),
       {0, 3, 2, 4}},
      {"words for others within a round, outside the sum",
       Dump({1, 2}).words({1}).foreign({0x9000, 0xFFFF, 0xD000}, false).words({2}).checksum().words({3, 4}).checksum(),
       {1, 3, 2, 4}},
      {"and in the sum", Dump({1, 2}).foreign({0x9000, 0xFFFF, 0xD000}, true).words({1, 2}).checksum(), {1, 2}},
      {"erased words are lost samples",
       Dump({1, 2}).words({5, 0xFFFF, 6, 0xFFFF, 0xFFFF, 7}).checksum().words({8, 9}).checksum(),
       {5, 6, 0, 8, 0, 0, 7, 9}},
      {"up to 255", Dump({1}).words({5}).repeat(255, 0xFFFF).words({6}).checksum(), lost_run},
      {"and 256 are the end", Dump({1}).words({5}).repeat(256, 0xFFFF).words({6, 7}), {5}},
      {"others of high byte 0xFF are samples", Dump({1}).words({0xFF00, 0xFFFE}), {0xFF00, 0xFFFE}},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.what);
    EXPECT_EQ(words_of(one.made), one.wanted);
  }
}

TEST(DumpRebuild, ReadingStopsBehindAnErasedTail) {
  // The lap record eats five of the 256 erased words at the end of the first 64 KiB, so that the stream itself goes on.
  Dump made({1});
  made.repeat(32768 - 300, 1).word(0xD205).repeat(256, 0xFFFF).repeat(43, 1).repeat(100, 1);
  EXPECT_EQ(words_of(made).size(), 32768U - 300 + 251 + 43);
  // The same a little further on lies across two pieces, and neither holds enough of it.
  Dump across({1});
  across.repeat(32768 - 100, 1).word(0xD205).repeat(256, 0xFFFF).repeat(100, 1);
  EXPECT_EQ(words_of(across).size(), 32768U - 100 + 251 + 100);
}

TEST(DumpRebuild, OnlySoManyDamagedBlocksAndWordsAreKnown) {
  // One sample a block, all damaged: the list's last place goes to the last of them.
  Dump made({1});
  for (u16 i = 0; i < 2100; ++i) made.word(7).checksum(1);
  Words wanted(2100, 0);
  std::fill(wanted.begin() + 1999, wanted.end() - 1, u16{7});
  EXPECT_EQ(words_of(made), wanted);
  // No more words than the session has room for.
  const Bytes bytes = Dump({1, 2}).words({1, 2, 3, 4, 5, 6}).bytes();
  EXPECT_EQ(rebuild(bytes, kPlainFamily, 4).words, (Words{1, 3, 5, 2}));
  EXPECT_EQ(rebuild(bytes, kPlainFamily, 0).words, Words{});
}

TEST(DumpRebuild, LapTimesAreHeldAgainstTheSamples) {
  // One sample a second.
  Dump made({1});
  made.repeat(10, 1).lap_record(2, 41, 8600);   // 8500 by the samples: believed
  made.repeat(10, 1).lap_record(20, 42, 9500);  // too far off, and of an unknown kind
  made.repeat(4, 1).lap_record(14, 43, 100);    // a split ends no lap
  made.repeat(6, 1).lap_end(1);
  made.repeat(3, 1);
  // Number, kind, time.
  using Laps = std::vector<std::tuple<u32, u32, u32>>;
  const auto laps_of = [](const Dump& dump) {
    Laps laps;
    for (const DumpLap& lap : rebuild(dump.bytes()).laps) laps.emplace_back(lap.number, lap.kind, lap.time_ms);
    return laps;
  };
  EXPECT_EQ(laps_of(made), (Laps{{41, 2, 8600}, {42, 10, 8500}, {43, 1, 8500}, {44, 0, 1500}}));
  // An old dump has a table of them.
  Dump old({1});
  old.set_format(0).set_dword(8192, 8300).set_dword(8196, 8700);
  old.repeat(10, 1).lap_end(1).repeat(10, 1).lap_end(1);
  const Laps from_table = laps_of(old);
  ASSERT_EQ(from_table.size(), 2U);
  EXPECT_EQ(std::pair(std::get<2>(from_table[0]), std::get<2>(from_table[1])), std::pair(8300U, 8700U));
}

// The plain way: the whole stream in memory, the schedule stepped byte by byte, each pass from front to back.
class PlainRebuild {
 public:
  PlainRebuild(Words stream, Bytes schedule, bool extended)
      : stream_(std::move(stream)), schedule_(std::move(schedule)), extended_(extended) {}

  Words words() {
    walk(false);
    walk(true);
    Words all;
    for (const auto& [channel, samples] : samples_) all.insert(all.end(), samples.begin(), samples.end());
    return all;
  }

 private:
  bool counts(u8 entry) const { return entry < 24 || (extended_ && entry >= 32 && entry <= 249); }
  void step_to_entry() {
    while (!counts(schedule_[place_])) place_ = (place_ + 1) % schedule_.size();
  }
  bool at_start() const {
    for (std::size_t i = 0; i < place_; ++i) {
      if (counts(schedule_[i])) return false;
    }
    return true;
  }
  void sample(u16 word, bool keep) {
    step_to_entry();
    const bool bad = std::find(bad_.begin(), bad_.end(), block_) != bad_.end();
    if (keep) samples_[schedule_[place_]].push_back(bad ? u16{0} : word);
    place_ = (place_ + 1) % schedule_.size();
    step_to_entry();
  }
  void end_block(bool sound, bool keep) {
    if (!sound && !keep) bad_.push_back(block_);
    ++block_;
  }
  static int bytes_sum(u16 word) { return (word & 0xFF) + (word >> 8); }

  void walk(bool keep) {
    place_ = 0;
    block_ = 1;
    int sum = 0;
    int foreign = 0;
    const auto fits = [&](u16 word) {
      const int wanted = word & 0xFF;
      return wanted == sum % 256 || wanted == (sum + foreign) % 256;
    };
    for (std::size_t i = 0; i < stream_.size(); ++i) {
      const u16 word = stream_[i];
      if (word == 0xFFFF) {
        std::size_t run = 0;
        while (run < 4096 && i + run < stream_.size() && stream_[i + run] == 0xFFFF) ++run;
        if (run > 255) return;
        // The words behind the first have been seen by then: they must not count as the start of a longer run.
        for (std::size_t k = 0; k < run; ++k) {
          sum += bytes_sum(0xFFFF);
          sample(0, keep);
        }
        i += run - 1;
        continue;
      }
      const int high = word >> 8;
      if (high == 0xD0) {
        end_block(fits(word) && at_start(), keep);
        place_ = 0;
        sum = foreign = 0;
        continue;
      }
      sum += bytes_sum(word);
      if (high == 0x90 && (word & 0xFF) == 0) {
        end_block(at_start(), keep);
        place_ = 0;
      } else if (high == 0xD1) {
        for (int k = 0; k < 3 && i + 1 < stream_.size(); ++k) foreign += bytes_sum(stream_[++i]);
      } else if (high == 0xD2) {
        for (int k = 0; k < 4 && i + 1 < stream_.size(); ++k) sum += bytes_sum(stream_[++i]);
        if (i + 1 >= stream_.size()) return;
        end_block(fits(stream_[++i]), keep);
        sum = foreign = 0;
      } else if (high != 0x90) {
        sample(word, keep);
      }
    }
  }

  Words stream_;
  Bytes schedule_;
  bool extended_;
  std::size_t place_ = 0;
  u32 block_ = 1;
  std::vector<u32> bad_;
  std::map<u8, Words> samples_;
};

Dump& add_random_piece(Dump& made, std::mt19937& random) {
  const auto word = [&random] { return static_cast<u16>(random()); };
  const auto error = [&random] { return random() % 4 == 0 ? u8{1} : u8{0}; };
  switch (random() % 16) {
    case 0:
      return made.mark();
    case 1:
    case 2:
    case 3:
      return made.checksum(error());
    case 4:
      return made.lap_end(static_cast<u8>(1 + random() % 20));
    case 5:
      return made.lap_record(static_cast<u8>(random() % 20), word() & 0x0FFF, static_cast<u32>(random()), error());
    case 6:
      return made.foreign({word(), 0xFFFF, 0x9000}, random() % 2 == 0);
    case 7:
      return made.repeat(random() % 300 < 298 ? random() % 6 : 250 + random() % 8, 0xFFFF);
    case 8:
      return made.word(word());
    default:
      return made.repeat(random() % 9, word() & 0x7FFF);
  }
}

TEST(DumpRebuild, AgreesWithThePlainWayOnRandomStreams) {
  std::mt19937 random(500);
  const Bytes schedules[] = {{1}, {255, 3, 1, 200, 3, 255}, {0, 32, 24, 5, 249, 250, 0}};
  for (int round = 0; round < 150; ++round) {
    SCOPED_TRACE(round);
    Bytes schedule = schedules[static_cast<std::size_t>(round) % 3];
    const bool extended = round % 2 == 0;
    Dump made(schedule);
    while (made.stream_words() < 2000) add_random_piece(made, random);
    const Bytes bytes = made.bytes();
    Words stream;
    for (std::size_t at = 65536; at + 1 < bytes.size(); at += 2) stream.push_back(load_u16(&bytes[at]));
    const Rebuilt result = rebuild(bytes, extended ? kExtendedFamily : kPlainFamily);
    ASSERT_TRUE(result.succeeded);
    EXPECT_EQ(result.words, PlainRebuild(stream, schedule, extended).words());
  }
}

TEST(DumpRebuild, RandomBytesYieldNoMoreThanTheyHold) {
  std::mt19937 random(71);
  constexpr i32 kFamilies[] = {0, 3, 4, 5, 7, 9, 10, 255};
  for (int round = 0; round < 24; ++round) {
    SCOPED_TRACE(round);
    Bytes bytes(random() % 400000);
    for (u8& byte : bytes) byte = static_cast<u8>(random());
    const Rebuilt result = rebuild(bytes, kFamilies[round % 8], 100000);
    EXPECT_LE(result.words.size(), std::min<std::size_t>(bytes.size() / 2, 100000));
  }
}

// --- Through a session file

TEST(DumpRebuild, TheChannelsOfASessionFile) {
  // Twice a round at 20 Hz, once at 10 Hz.
  Dump made({4, 1, 4});
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
  file.dump = Dump({1}).words({5, 6}).bytes();
  EXPECT_EQ(SoundSession(file).values(0), (std::vector<float>{5, 6, 0, 0}));
  // Without a dump that can be used there is no session.
  wmp::Bytes beyond = wmp::build(file);
  wmp::set_dword(&beyond, wmp::configuration_at(500), 0xFFFFFFF0);
  EXPECT_EQ(OpenedSession(beyond).error(), 1001U);
  file.dump = Dump({1}).set_byte(0, 0).words({5, 6}).bytes();
  OpenedSession no_channels(wmp::build(file));
  EXPECT_FALSE(no_channels.opened());
  EXPECT_EQ(no_channels.error(), 1001U);
  EXPECT_EQ(no_channels.session().tables.channels.size(), 0U);
}

}  // namespace
}  // namespace traguardo::test
