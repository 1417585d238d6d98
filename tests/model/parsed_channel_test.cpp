// SPDX-License-Identifier: MIT
#include "model/parsed_channel.h"

#include <gtest/gtest.h>

#include <random>

#include "helpers/temp_folder.h"

namespace traguardo {
namespace {

using test::TempFolder;

struct Sample {
  u64 time;
  float value;
  bool operator==(const Sample&) const = default;
};

std::vector<Sample> records_of(CParsedChannel* channel) {
  std::vector<SChannelRecord> records(static_cast<std::size_t>(channel->GetNumValori()));
  EXPECT_EQ(channel->GetRecord(records.data(), records.size()), records.size());
  std::vector<Sample> samples;
  for (const SChannelRecord& record : records) samples.push_back({record.time(), record.value()});
  return samples;
}

class ParsedChannel : public ::testing::Test {
 protected:
  CParsedChannel make(bool keep_constant = false) { return {"Speed", &file_, keep_constant}; }
  const TempFolder folder_;
  StoreFile file_{folder_.wide("a.qlt")};
};

TEST_F(ParsedChannel, OfNoSamplesAnswersWithFixedValues) {
  CParsedChannel channel = make();
  ASSERT_TRUE(channel.IsStoreValido());
  EXPECT_TRUE(channel.ChiudiStore());
  EXPECT_EQ(channel.GetNumValori(), 0U);
  EXPECT_EQ(channel.GetPrimoTempo(), 0U);
  EXPECT_EQ(channel.GetUltimoTempo(), 1U);
  EXPECT_EQ(channel.GetMinimo(), -1.0F);
  EXPECT_EQ(channel.GetMassimo(), 1.0F);
  EXPECT_EQ(channel.GetValori(nullptr, nullptr, 0), 0U);
}

TEST_F(ParsedChannel, RefusesTimesThatDoNotRiseAndMergesOnlyWhenAsked) {
  struct Step {
    u64 time;
    float value;
    CParsedChannel::Esito keeping, plain;
  };
  const Step steps[] = {
      {1000, 5, CParsedChannel::kStored, CParsedChannel::kStored},
      {1000, 5, CParsedChannel::kRefused, CParsedChannel::kRefused},
      {900, 6, CParsedChannel::kRefused, CParsedChannel::kRefused},
      {2000, 5, CParsedChannel::kStored, CParsedChannel::kStored},
      {3000, 5, CParsedChannel::kMerged, CParsedChannel::kStored},
      {4000, 5, CParsedChannel::kMerged, CParsedChannel::kStored},
      {4000, 9, CParsedChannel::kRefused, CParsedChannel::kRefused},
      {5000, 6, CParsedChannel::kStored, CParsedChannel::kStored},
  };
  for (const bool keep : {true, false}) {
    CParsedChannel channel = make(keep);
    for (const Step& step : steps) {
      EXPECT_EQ(channel.AddValore(step.time, step.value), keep ? step.keeping : step.plain) << step.time;
    }
    channel.ChiudiStore();
    const std::vector<Sample> want = keep ? std::vector<Sample>{{1000, 5}, {4000, 5}, {5000, 6}}
                                          : std::vector<Sample>{{1000, 5}, {2000, 5}, {3000, 5}, {4000, 5}, {5000, 6}};
    EXPECT_EQ(records_of(&channel), want);
    EXPECT_EQ(channel.GetMinimo(), 5.0F);
    EXPECT_EQ(channel.GetMassimo(), 6.0F);
  }
}

TEST_F(ParsedChannel, FirstRecordBehindAWindowIsNeitherRefusedNorMerged) {
  CParsedChannel channel = make(true);
  for (u64 i = 0; i < 65536; ++i) {
    ASSERT_EQ(channel.AddValore(i + 10, static_cast<float>(i % 2)), CParsedChannel::kStored);
  }
  EXPECT_EQ(channel.AddValore(5, 3), CParsedChannel::kStored);
  EXPECT_EQ(channel.AddValore(5, 3), CParsedChannel::kRefused);
  channel.ChiudiStore();
  EXPECT_EQ(channel.GetNumValori(), 65537U);
  // Times no longer ascend: a range stops at the first sample not below its end, and starts over behind the edge.
  EXPECT_EQ(channel.GetNumValoriRange(0, 12), 2U);
  EXPECT_EQ(channel.GetNumValoriRange(0, 100000), 65537U);
  EXPECT_EQ(channel.GetNumValoriRange(65540, 100000), 6U);
  std::vector<double> times(6);
  std::vector<double> values(6);
  EXPECT_EQ(channel.GetValoriRange(65540, 100000, times.data(), values.data(), 6), 6U);
  EXPECT_EQ(times[0], 65540 * 1e-6);
}

TEST_F(ParsedChannel, HandsOutSecondsAndDoubles) {
  CParsedChannel channel = make();
  channel.AddValore(1, 0.1F);
  channel.AddValore(14000, -2.5F);
  channel.ChiudiStore();
  double times[3] = {-1, -1, -1};
  double values[3] = {-1, -1, -1};
  EXPECT_EQ(channel.GetValori(times, values, 1), 0U);
  EXPECT_EQ(times[0], -1) << "too small an array stays untouched";
  EXPECT_EQ(channel.GetValori(times, values, 3), 2U) << "a larger one is fine";
  EXPECT_EQ(times[0], 1 * 1e-6);
  EXPECT_EQ(times[1], 14000 * 1e-6);
  EXPECT_EQ(values[0], static_cast<double>(0.1F));
  EXPECT_EQ(times[2], -1);
}

TEST_F(ParsedChannel, RangeBySearchGivesWhatAWalkGives) {
  std::mt19937 random(7);
  CParsedChannel channel = make();
  std::vector<u64> stored;
  u64 time = 0;
  for (int i = 0; i < 20000; ++i) {
    time += 1 + random() % 50;
    channel.AddValore(time, static_cast<float>(i));
    stored.push_back(time);
  }
  channel.ChiudiStore();
  for (int i = 0; i < 200; ++i) {
    const u64 from = random() % (time + 100);
    const u64 to = random() % (time + 100);
    u64 want = 0;
    u64 first = 0;
    for (const u64 t : stored) {
      if (t >= to) break;
      if (t < from) continue;
      if (want++ == 0) first = t;
    }
    ASSERT_EQ(channel.GetNumValoriRange(from, to), want) << from << " to " << to;
    std::vector<double> times(want + 1, -1);
    std::vector<double> values(want + 1);
    ASSERT_EQ(channel.GetValoriRange(from, to, times.data(), values.data(), static_cast<int>(want)), want);
    if (want > 0) {
      ASSERT_EQ(times[0], static_cast<double>(first) * 1e-6);
    }
    ASSERT_EQ(times[want], -1) << "nothing behind the count";
  }
}

// Each way zeroes its points itself, and no other.
TEST_F(ParsedChannel, LeavesZerosOnAGridThatItHasNothingFor) {
  CParsedChannel empty = make();
  CParsedChannel earlier = make();
  earlier.AddValore(5, 1.0F);
  using Way = bool (CParsedChannel::*)(u64, u64, u64, float*, u32, u32);
  for (CParsedChannel* channel : {&empty, &earlier}) {
    for (const Way way : {&CParsedChannel::GetValoriEveryLineare, &CParsedChannel::GetValoriEveryHold}) {
      std::vector<float> grid(5, 7.0F);
      EXPECT_TRUE((channel->*way)(10, 100, 130, grid.data(), 1, 4));
      EXPECT_EQ(grid, (std::vector<float>{7, 0, 0, 0, 7}));
    }
  }
}

TEST_F(ParsedChannel, ResamplesOnAGrid) {
  struct Case {
    const char* name;
    u64 step, from, to;
    bool hold;
    std::vector<float> want;
  };
  // Samples: 100 -> 1, 200 -> 3, 400 -> 7.
  const Case cases[] = {
      {"linear", 50, 100, 400, false, {1, 2, 3, 4, 5, 6}},
      {"starts early: the first value repeats", 50, 0, 200, false, {1, 1, 1, 2}},
      {"runs past the end: the last computed value repeats", 100, 300, 800, false, {5, 7, 7, 7, 7}},
      {"begins behind the last record: zeros", 100, 500, 800, false, {0, 0, 0}},
      {"hold", 50, 100, 450, true, {1, 1, 1, 3, 3, 3, 3}},
      {"step 0", 0, 100, 400, false, {0, 0, 0}},
  };
  CParsedChannel channel = make();
  channel.AddValore(100, 1);
  channel.AddValore(200, 3);
  channel.AddValore(400, 7);
  channel.ChiudiStore();
  for (const Case& c : cases) {
    std::vector<float> buffer(c.want.size() + 2, 42.0F);
    channel.SetTieniUltimoValore(c.hold);
    EXPECT_TRUE(channel.GetValoriEvery(c.step, c.from, c.to, buffer.data(), 1, static_cast<u32>(c.want.size())));
    EXPECT_EQ(std::vector<float>(buffer.begin() + 1, buffer.end() - 1), c.want) << c.name;
    EXPECT_EQ(buffer.front(), 42.0F) << c.name;
    EXPECT_EQ(buffer.back(), 42.0F) << c.name;
  }
}

TEST_F(ParsedChannel, MovesInTime) {
  CParsedChannel channel = make();
  channel.AddValore(1500, 1);
  channel.AddValore(2500, 2);
  channel.ChiudiStore();
  channel.TraslaTempi(1500, 0);
  EXPECT_EQ(records_of(&channel), (std::vector<Sample>{{0, 1}, {1000, 2}}));
  EXPECT_EQ(channel.GetPrimoTempo(), 0U);
  EXPECT_EQ(channel.GetUltimoTempo(), 1000U);
  EXPECT_EQ(channel.GetNumValoriRange(0, 1000), 1U);
  // Beyond zero the axis wraps, and a search can no longer be trusted with it.
  channel.TraslaTempi(500, 0);
  EXPECT_EQ(records_of(&channel)[0].time, static_cast<u64>(-500));
  EXPECT_EQ(channel.GetNumValoriRange(0, 1000), 0U) << "the walk ends at the wrapped first sample";
}

TEST_F(ParsedChannel, TakesBlocksWithoutATestOfOrder) {
  CParsedChannel channel = make();
  const float values[] = {1, 2, 3};
  EXPECT_TRUE(channel.AddValori(0, 10, 3, values));
  EXPECT_TRUE(channel.AddValori(0, 10, 0, values));
  channel.ChiudiStore();
  EXPECT_EQ(channel.GetNumValori(), 3U);
  EXPECT_EQ(channel.GetUltimoTempo(), 30U) << "one step past the last sample";
}

}  // namespace
}  // namespace traguardo
