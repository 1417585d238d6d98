// SPDX-License-Identifier: MIT
// Files with damage whose loss is known: what the reader's account says of it, and what can be had back.

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <filesystem>
#include <functional>
#include <random>
#include <tuple>

#include "helpers/gps_records.h"
#include "helpers/parsed_session.h"
#include "logger/losses.h"

namespace traguardo {
namespace {

using test::Bytes;
using test::cnf;
using test::frame;
using test::frame_m;
using test::frame_s;
using test::text_bytes;
using test::operator+;
using test::ParsedSession;
using test::tag;
using test::tail;
using test::u16_bytes;

constexpr u16 kChannels = 4;
constexpr u64 kFrame = 11;
constexpr u64 kBlock = 4096;
const Bytes kTable =
    cnf({{0, "c0"}, {1, "c1"}, {2, "c2"}, {3, "c3"}}, test::acd(7, 103, {2, 3}) + test::grp(9, {2, 3}));

// A sample of each channel every 10 ms.
Bytes frames_between(u32 from_ms, u32 to_ms) {
  Bytes frames;
  for (u32 time = from_ms; time < to_ms; time += 10) {
    for (u16 channel = 0; channel < kChannels; ++channel) {
      const Bytes one = frame_s(time, channel, static_cast<u16>(time * 7 + channel));
      frames.insert(frames.end(), one.begin(), one.end());
    }
  }
  return frames;
}

u64 sample_count(ParsedSession& session) {
  u64 count = 0;
  for (const auto& channel : session.reader().GetCanali()) count += channel->GetNumValori();
  return count;
}

// Times and the bits of values: not-a-number is a value like any other.
std::vector<std::pair<u64, u32>> bits(ParsedSession& session, const std::string& name) {
  std::vector<std::pair<u64, u32>> samples;
  for (const test::StoredSample& sample : session.samples(name)) {
    samples.emplace_back(sample.time, std::bit_cast<u32>(sample.value));
  }
  return samples;
}

u64 missing_count(ParsedSession& session) {
  u64 count = 0;
  for (const auto& channel : session.reader().GetCanali()) {
    count += missing_samples(static_cast<CParsedChannel*>(channel.get())).value_or(0);
  }
  return count;
}

TEST(Damage, AccountCoversTheLoss) {
  std::mt19937 random(5);
  const Bytes sound = kTable + frames_between(0, 20'000) + tail();
  const u64 all = 4 * 2000;
  ParsedSession whole(sound);
  EXPECT_EQ(std::tuple(sample_count(whole), missing_count(whole), whole.reader().losses().frames()),
            std::tuple(all, 0U, 0U));
  const u64 not_framed = whole.reader().losses().bytes;  // of the tail
  for (const std::string kind : {"removed", "zeroed", "inserted", "random"}) {
    for (int place = 0; place < 100; ++place) {
      SCOPED_TRACE(kind + " " + std::to_string(place));
      // Not at the ends: what was never seen to begin is not missed.
      const u64 first = kTable.size() + kFrame * kChannels;
      const u64 at = first + random() % (sound.size() - tail().size() - 2 * first - kBlock);
      Bytes block(kind == "removed" ? 0 : kBlock);
      if (kind == "inserted" || kind == "random") std::generate(block.begin(), block.end(), std::ref(random));
      const auto begin = sound.begin() + static_cast<std::ptrdiff_t>(at);
      const auto behind = begin + static_cast<std::ptrdiff_t>(kind == "inserted" ? 0 : kBlock);
      ParsedSession session(Bytes(sound.begin(), begin) + block + Bytes(behind, sound.end()));
      const Losses& losses = session.reader().losses();
      const u64 read = sample_count(session);
      const u64 damaged = kind == "inserted" ? 0 : kBlock / kFrame;
      EXPECT_LE(all - read, damaged + 16);
      EXPECT_EQ(missing_count(session), all - read);
      // Each byte is in a frame, in a tag, or lost.
      const u64 size = sound.size() - (kind == "inserted" ? 0 : kBlock) + block.size();
      EXPECT_EQ(losses.bytes - not_framed, size - sound.size() + kFrame * (all - read - losses.clocks));
    }
  }
}

TEST(Damage, UnevenChannelsLackNothing) {
  Bytes events;
  for (u32 i = 1; i < 400; ++i) events = events + frame_s(i * 37 + i * i % 29, 0, 1);
  ParsedSession session(kTable + events + tail());
  EXPECT_EQ(missing_samples(session.channel("c0")), std::nullopt);
}

Bytes gps_tag(u32 time_ms) {
  const SGpsRecord record = test::gps_record({.time_ms = time_ms});
  return tag("GPS", Bytes(record.bytes.begin(), record.bytes.end()));
}

// `wrong` stands between what lies in front of `at_ms` and the rest, in the place of the frames of that time.
struct WrongClock {
  const char* what;
  u32 at_ms;
  Bytes wrong;
  u64 frames;  // with a wrong clock
};

TEST(Damage, OneWrongClockCostsItsFrameWhereThatIsWanted) {
  const u32 end_ms = 130'000;
  const u64 all = kChannels * (end_ms / 10 - 1);  // but those in whose place it stands
  const Bytes far = frame_s(3'600'000, 0, 1);
  const WrongClock cases[] = {
      {"S", 5000, far, 1},
      {"one bit", 5000, frame_s(5000 ^ 1U << 16, 1, 1), 1},
      {"M", 5000, frame_m(900'000, 1, {1, 2, 3}), 1},
      {"A", 5000, frame('A', 900'000, 7, Bytes(4)), 1},
      {"G", 5000, frame('G', 900'000, 9, Bytes(4)), 1},
      {"chunked", 5000, test::chunk(0, 0, 0, true, Bytes{0, 0, 54, 0, 1, 0}), 1},
      {"first of the file", 0, far, 1},
      {"two", 5000, far + frame_s(7'200'000, 1, 1), 2},
      {"two apart", 5000, far + frames_between(5000, 5010) + frame_s(7'200'000, 1, 1), 2},
      {"GPS that sets the clock back", 125'000, gps_tag(62'000), 1},
  };
  for (const WrongClock& c : cases) {
    SCOPED_TRACE(c.what);
    const Bytes bytes = kTable + frames_between(0, c.at_ms) + c.wrong + frames_between(c.at_ms + 10, end_ms) + tail();
    ParsedSession as_ever(bytes);
    EXPECT_GT(as_ever.reader().losses().clocks, 1500U);
    ParsedSession recovered(bytes, {.measure_statistics = true}, nullptr, true);
    const CParserZep_2Gv4& reader = recovered.reader();
    EXPECT_EQ(sample_count(recovered), all + (std::string(c.what) == "two apart" ? kChannels : 0));
    EXPECT_EQ(reader.losses().clocks, c.frames);
  }
}

TEST(Damage, WhatIsNotContradictedStays) {
  const Bytes before = kTable + frames_between(0, 5000);
  const Bytes cases[] = {
      before + frames_between(400'000, 410'000) + tail(),                           // the clock went on
      before + frame_s(400'000, 0, 1) + frames_between(5000, 5240) + tail(),        // 96 frames are no 100
      before + frame_s(400'000, 0, 1) + frames_between(399'000, 405'000) + tail(),  // it is agreed with
      kTable + frames_between(0, 90'000) + frames_between(0, 20'000) + tail(),      // a logger that began again
  };
  for (const Bytes& bytes : cases) {
    ParsedSession as_ever(bytes);
    ParsedSession recovered(bytes, {}, nullptr, true);
    for (u16 channel = 0; channel < kChannels; ++channel) {
      const std::string name = "c" + std::to_string(channel);
      EXPECT_EQ(recovered.samples(name), as_ever.samples(name));
    }
    EXPECT_EQ(recovered.reader().losses().clocks, as_ever.reader().losses().clocks);
  }
}

TEST(Damage, StoredSessionsComeOutEqual) {
  int sessions = 0;
  int contradicted = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(TRAGUARDO_SESSIONS)) {
    if (entry.path().extension() != ".qlt") continue;
    SCOPED_TRACE(entry.path().filename());
    std::ifstream stream(entry.path(), std::ios::binary);
    const Bytes bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    ParsedSession as_ever(bytes);
    ParsedSession recovered(bytes, {}, nullptr, true);
    if (const u64 refused = as_ever.reader().losses().clocks; refused != recovered.reader().losses().clocks) {
      // A session of odd clocks.
      EXPECT_GE(refused, 100U);
      ++contradicted;
      continue;
    }
    ASSERT_EQ(recovered.channel_names(), as_ever.channel_names());
    for (const std::string& name : as_ever.channel_names()) EXPECT_EQ(bits(recovered, name), bits(as_ever, name));
    u64 limits[2][5] = {};
    int at = 0;
    for (ParsedSession* session : {&as_ever, &recovered}) {
      u64* limit = limits[at++];
      i16 week = 0;
      u32 time_of_week = 0;
      session->reader().GetLimitiTemporali(&limit[0], &limit[1], &week, &time_of_week, &limit[2]);
      limit[3] = time_of_week;
      for (const auto& [number, laps] : session->reader().GetSessioni()) {
        for (const auto& [lap_number, lap] : laps->laps) limit[4] = limit[4] * 31 + lap->start + 7 * lap->end;
      }
    }
    EXPECT_TRUE(std::equal(limits[0], limits[0] + 5, limits[1]));
    ++sessions;
  }
  EXPECT_GT(sessions, 50);
  EXPECT_LE(contradicted, 1);
}

}  // namespace
}  // namespace traguardo
