// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <random>

#include "helpers/gps_records.h"
#include "helpers/parsed_session.h"
#include "support/platform/fault_injection.h"

namespace traguardo {
namespace {

using test::Bytes;
using test::Channel;
using test::cnf;
using test::frame;
using test::frame_m;
using test::frame_s;
using test::text_bytes;
using test::operator+;
using test::ParsedSession;
using test::StoredSample;
using test::tag;
using test::tail;
using test::u16_bytes;
using Samples = std::vector<StoredSample>;

constexpr u16 kA = 1;
constexpr u16 kB = 2;

std::vector<u64> offsets(const ErrorList& list) {
  return list.elements();
}

TEST(DataStream, DecodesEveryKindOfFrame) {
  const Bytes table = cnf({{kA, "a"}, {kB, "b", 5, 1}}, test::acd(7, 103, {kA, 99, kB}) + test::grp(9, {kB, kA}));
  ParsedSession session(table + frame_s(10, kA, 5) + frame_m(20, kA, {6, 7}) + frame('G', 50, 9, Bytes{3, 8, 0}) +
                        frame('A', 60, 7, Bytes{9, 0, 4}) + tail());
  ASSERT_TRUE(session.good());
  EXPECT_EQ(session.samples("a"), (Samples{{10000, 5}, {20000, 6}, {30000, 7}, {50000, 8}, {60000, 9}}));
  // The null place between them takes its step and no bytes.
  EXPECT_EQ(session.samples("b"), (Samples{{50000, 3}, {62000, 4}}));
  EXPECT_EQ(offsets(session.reader().errors_in_a()).size(), 1U);
  EXPECT_TRUE(session.reader().errors_in_file().empty());
}

TEST(DataStream, StepOfAnAcquisitionFollowsItsTimeBase) {
  struct Case {
    u16 base;
    u64 step;
  };
  for (const Case& c : {Case{100, 1'000'000}, Case{103, 1000}, Case{106, 1}, Case{101, 0}}) {
    ParsedSession session(cnf({{kA, "a"}, {kB, "b"}}, test::acd(7, c.base, {kA, kB})) +
                          frame('A', 5, 7, Bytes{1, 0, 2, 0}) + tail());
    EXPECT_EQ(session.samples("b"), (Samples{{5000 + c.step, 2}})) << c.base;
  }
}

TEST(DataStream, BadDescriptorsAreDiscardedAndTheFirstOfAnIndexStays) {
  const Bytes three_claimed = tag("ACD", Bytes{8, 0, 103, 0, 3, 0, 1, 0, 2, 0, 3});
  const Bytes none = tag("GRP", Bytes{4, 0, 0, 0});
  ParsedSession session(cnf({{kA, "a"}, {kB, "b"}}, three_claimed + none + test::grp(9, {kA}) + test::grp(9, {kB})) +
                        frame('A', 5, 8, Bytes{1, 0}) + frame('G', 6, 4, Bytes{}) + frame('G', 7, 9, Bytes{3, 0}) +
                        tail());
  EXPECT_EQ(session.samples("a"), (Samples{{7000, 3}}));
  EXPECT_TRUE(session.samples("b").empty());
  EXPECT_EQ(offsets(session.reader().errors_in_a()).size(), 1U);
  EXPECT_EQ(offsets(session.reader().errors_in_g()).size(), 1U);
}

// What each kind of damage costs, to the byte: every other sample is there.
TEST(DataStream, DamageCostsWhatItDamages) {
  const Bytes table = cnf({{kA, "a"}});
  const u64 start = table.size();
  struct Case {
    const char* name;
    Bytes between;
    std::size_t in_s, in_file;
  };
  const Case cases[] = {
      {"nothing", {}, 0, 0},
      {"garbage", text_bytes("abc"), 0, 0},
      {"wrong closing byte", test::frame_head('S', 20, kA) + Bytes{9, 0, ']'}, 1, 0},
      {"unknown index", frame_s(20, 77, 9), 1, 0},
      {"unknown letter", text_bytes("(X"), 0, 0},
      {"a tag that is none", text_bytes("<hABC"), 0, 0},
      {"half a frame", test::frame_head('S', 20, kA), 1, 0},
  };
  for (const Case& c : cases) {
    ParsedSession session(table + frame_s(10, kA, 1) + c.between + frame_s(30, kA, 3) + tail());
    EXPECT_EQ(session.samples("a"), (Samples{{10000, 1}, {30000, 3}})) << c.name;
    EXPECT_EQ(offsets(session.reader().errors_in_s()).size(), c.in_s) << c.name;
    for (const u64 offset : offsets(session.reader().errors_in_file())) {
      EXPECT_GE(offset, start + 11) << c.name;
      EXPECT_LT(offset, start + 11 + c.between.size()) << c.name;
    }
  }
}

// A byte that ends a run is listed when the run ends, and again when the walker comes back to it.
TEST(DataStream, ListsADamagedByteTwiceWhereItEndsARun) {
  const Bytes table = cnf({{kA, "a"}});
  const u64 at = table.size() + 11;
  ParsedSession session(table + frame_s(10, kA, 1) + text_bytes("xy") + frame_s(30, kA, 3) + tail());
  EXPECT_EQ(offsets(session.reader().errors_in_file()), (std::vector<u64>{at, at, at + 1}));
}

TEST(DataStream, ErrorListsCountBeyondAHundred) {
  ErrorList list;
  for (u64 i = 0; i < 150; ++i) list.Append(i);
  ASSERT_EQ(list.elements().size(), 101U);
  EXPECT_EQ(list.elements()[99], 99U);
  EXPECT_EQ(list.elements()[100], 50U);
  ErrorList at_once;
  at_once.Append(7, 99);
  at_once.Append(8, 51);
  ASSERT_EQ(at_once.elements().size(), 101U);
  EXPECT_EQ(at_once.elements()[98], 7U);
  EXPECT_EQ(at_once.elements()[99], 8U);
  EXPECT_EQ(at_once.elements()[100], 50U);
}

TEST(DataStream, ClockMayWalkByAMinuteButNotJump) {
  struct Case {
    const char* name;
    std::vector<u32> times_ms;
    std::vector<u64> stored_ms;
  };
  const Case cases[] = {
      {"59 s steps", {1, 60001, 119001, 178001}, {1, 60001, 119001, 178001}},
      {"61 s ahead after a minute", {1, 60001, 121002, 70000}, {1, 60001, 70000}},
      {"exactly a minute", {1, 60001, 120001}, {1, 60001, 120001}},
      {"within the first minute anything goes, and later data pays", {1, 3600000, 100, 3600001}, {1, 3600000, 3600001}},
      {"at exactly one minute no test yet", {60000, 200000}, {60000, 200000}},
  };
  for (const Case& c : cases) {
    Bytes bytes = cnf({{kA, "a"}});
    for (const u32 time : c.times_ms) bytes = bytes + frame_s(time, kA, 1);
    ParsedSession session(bytes + tail());
    std::vector<u64> stored;
    for (const StoredSample& sample : session.samples("a")) stored.push_back(sample.time / 1000);
    EXPECT_EQ(stored, c.stored_ms) << c.name;
  }
}

TEST(DataStream, OnlyTheTrailOfTwentyBytesIsNotReached) {
  const Bytes table = cnf({{kA, "a"}});
  // A run of frames goes to the end; one that begins behind a bad byte in the last 20 does not begin at all.
  ParsedSession run(table + frame_s(10, kA, 1) + frame_s(20, kA, 2));
  EXPECT_EQ(run.samples("a").size(), 2U);
  ParsedSession broken(table + frame_s(10, kA, 1) + text_bytes("x") + frame_s(20, kA, 2));
  EXPECT_EQ(broken.samples("a").size(), 1U);
  ParsedSession behind_tag(table + frame_s(20, kA, 2));
  EXPECT_EQ(behind_tag.samples("a").size(), 0U);
}

TEST(DataStream, TruncationAnywhereKeepsWhatStandsBefore) {
  Bytes whole = cnf({{kA, "a"}});
  const std::size_t table = whole.size();
  for (u32 i = 1; i <= 20; ++i) whole = whole + frame_s(10 * i, kA, static_cast<u16>(i));
  for (std::size_t size = table + 40; size < whole.size(); ++size) {
    ParsedSession session(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
    ASSERT_TRUE(session.good());
    ASSERT_EQ(session.samples("a").size(), (size - table) / 11) << size;
  }
}

TEST(DataStream, SamplesShorterThanTheirFormatReadZerosBehindTheirEnd) {
  constexpr u16 kBits = 3;
  ParsedSession session(cnf({{kA, "a", 3, 2}, {kB, "none", 5, 0}, {kBits, "bits", kSMPL_FMT_BITFIELD_8, 0}}) +
                        frame('S', 10, kA, Bytes{1, 2}) + frame('S', 10, kB, {}) + frame('S', 10, kBits, {}) + tail());
  EXPECT_EQ(session.samples("a"), (Samples{{10000, 513}}));
  EXPECT_EQ(session.samples("none"), (Samples{{10000, 0}}));
  EXPECT_EQ(session.samples("bits"), (Samples{{10000, 0}}));
}

// Eleven bytes may not ask for 65,535 samples again and again.
TEST(DataStream, PositionsCutBehindTheirFixTypeReadZerosToo) {
  constexpr u32 kGpsPacket = 26 | 3 << 7;
  constexpr u32 kKeptBytes = 20;
  const SGpsRecord whole = test::gps_record({.time_ms = 500, .position_accuracy_cm = 150});
  const Bytes cut(whole.bytes.begin(), whole.bytes.begin() + kKeptBytes);
  ParsedSession session(cnf({{kA, "Rover", 8, kKeptBytes, kGpsPacket}, {kB, "b"}}) + frame('S', 500, kA, cut) +
                        frame_m(600, kB, std::vector<u16>(40, 0x5555)) + tail());
  const IRkGpsTrace* trace = session.reader().GetTracciaGps("Rover");
  ASSERT_NE(trace, nullptr);
  std::vector<const SGpsRecord*> records;
  trace->GetGoodSamplePointers(records);
  ASSERT_EQ(records.size(), 1U);
  Bytes expected = cut;
  expected.resize(SGpsRecord::kSize);
  EXPECT_EQ(Bytes(records[0]->bytes.begin(), records[0]->bytes.end()), expected);
}

TEST(DataStream, SamplesWithoutBytesAreBelievedOnlyUpToTheFilesSize) {
  Bytes bytes = cnf({{kA, "a", 5, 0, 0x10, 1}});
  for (u32 i = 0; i < 1000; ++i) {
    bytes = bytes + frame('M', i * 66, kA, u16_bytes(65535));
  }
  ParsedSession session(bytes + tail());
  EXPECT_TRUE(session.good());
  EXPECT_LE(session.samples("a").size(), bytes.size() + 65535);
}

TEST(DataStream, MixedFilesOfRandomBytesEndAndLeaveNothingBehind) {
  std::mt19937 random(11);
  const Bytes head = cnf({{kA, "a"}, {kB, "b", 5, 1}}, test::acd(7, 103, {kA, kB}) + test::grp(9, {kB, kA}));
  Bytes healthy = head;
  for (u32 i = 0; i < 200; ++i) {
    healthy = healthy + frame_s(10 * i + 1, kA, 1) + frame_m(10 * i, kB, {1}) +
              frame('G', 10 * i + 2, 9, Bytes{1, 2, 3}) + test::chunk(0, kA, 0, true, Bytes{1, 0, 0, 0, 1, 0});
  }
  for (int round = 0; round < 60; ++round) {
    Bytes bytes = healthy;
    for (int i = 0; i < 1 + round * 3; ++i) {
      const std::size_t at = random() % bytes.size();
      const auto where = bytes.begin() + static_cast<std::ptrdiff_t>(at);
      switch (random() % 3) {
        case 0:
          *where = static_cast<u8>(random());
          break;
        case 1:
          bytes.erase(where);
          break;
        default:
          bytes.insert(where, static_cast<u8>(random()));
      }
    }
    ParsedSession session(bytes);
    session.close();
    EXPECT_EQ(session.folder().names(), std::vector<std::string>{"a.qlt"});
  }
}

// A folder in the place of a store: it can't be opened, whoever the user is.
TEST(DataStream, StoresGoWhereTheEnvironmentSaysAndNowhereIsAFailedOpen) {
  const test::TempFolder folder;
  folder.write("a.qlt", cnf({{kA, "a"}}) + frame_s(10, kA, 1) + tail());
  for (const auto& [place, good] : {std::pair{folder.file("nowhere"), false}, {folder.path().string(), true}}) {
    const test::EnvironmentVariable variable("TRAGUARDO_STORE_FOLDER", place);
    CParserZep_2Gv4 reader(folder.wide("a.qlt"), {});
    EXPECT_EQ(reader.ParsaFile(nullptr), good) << place;
    EXPECT_EQ(reader.failure() == ParseFailure::kStore, !good);
  }
}

// Another program cuts the session while it is read, or the disk fails.
TEST(DataStream, AFileThatCannotBeReadToItsEndIsAFailedOpen) {
  const test::TempFolder folder;
  Bytes bytes = cnf({{kA, "a"}});
  for (u32 i = 0; i < 60'000; ++i) {
    const Bytes frame = frame_s(10 * i, kA, 1);
    bytes.insert(bytes.end(), frame.begin(), frame.end());
  }
  for (const bool is_cut : {true, false}) {
    folder.write("a.qlt", bytes + tail());
    CParserZep_2Gv4 reader(folder.wide("a.qlt"), {});
    if (is_cut) {
      std::error_code refused;
      std::filesystem::resize_file(folder.path() / "a.qlt", 300'000, refused);
      // Some systems protect a file that is being read.
      if (refused) continue;
    } else {
      platform::let_fail_after(platform::Operation::kRead, 2);
    }
    EXPECT_FALSE(reader.ParsaFile(nullptr));
    EXPECT_EQ(reader.failure(), ParseFailure::kReading);
    EXPECT_TRUE(is_cut || platform::let_nothing_fail());
  }
  EXPECT_EQ(folder.names(), std::vector<std::string>{"a.qlt"});
}

}  // namespace
}  // namespace traguardo
