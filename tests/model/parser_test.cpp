// SPDX-License-Identifier: MIT
#include "model/parser.h"

#include <gtest/gtest.h>

#include <limits>

#include "helpers/temp_folder.h"
#include "model/parsed_channel.h"
#include "model/super_parser.h"

namespace traguardo {
namespace {

using test::TempFolder;

constexpr u64 kAllOnes = std::numeric_limits<u64>::max();

// A reader whose contents a test puts together.
class Reader : public CParser {
 public:
  explicit Reader(std::wstring path) : CParser(std::move(path)) {}
  bool ParsaFile(IProgress*) override { return true; }

  CParsedChannel* AddChannel(const std::string& name, const std::vector<std::pair<u64, float>>& samples,
                             u64 period_us = 0) {
    auto channel = std::make_unique<CParsedChannel>(name, GetFileStore(), false);
    channel->SetPeriodo(period_us);
    for (const auto& [time, value] : samples) channel->AddValore(time, value);
    channel->ChiudiStore();
    channels_.push_back(std::move(channel));
    return static_cast<CParsedChannel*>(channels_.back().get());
  }
  SRkLap* AddLap(i32 session, i32 lap, u64 end, u64 duration) {
    SRkLap* added = GetGiro(session, lap);
    added->end = end;
    added->marker_time = end;
    added->duration = duration;
    return added;
  }
  using CParser::sessions;
};

class Parser : public ::testing::Test {
 protected:
  const TempFolder folder_;
  Reader reader_{folder_.wide("a.qlt")};
};

TEST_F(Parser, WithoutASessionAnswersWithItsOwnValues) {
  EXPECT_EQ(reader_.GetNomePilota(), "");
  EXPECT_EQ(reader_.GetDataOra()->tm_year, 0);
  EXPECT_EQ(reader_.GetRecordTracciato(), nullptr);
  EXPECT_TRUE(reader_.GetSessioni().empty());
  EXPECT_EQ(reader_.GetTracciaGpsMigliore(), nullptr);
  std::set<std::string> names;
  reader_.GetNomiTracceGps(&names);
  EXPECT_EQ(names, std::set<std::string>{"GPS"});
  u64 first = 0;
  u64 last = 1;
  u64 period = 1;
  i16 week = 1;
  u32 time_of_week = 1;
  reader_.GetLimitiTemporali(&first, &last, &week, &time_of_week, &period);
  EXPECT_EQ(first, kAllOnes);
  EXPECT_EQ(last, 0U);
}

TEST_F(Parser, TextsSetBeforeTheFirstLapStayWithItsSession) {
  reader_.SetNomePilota("R");
  EXPECT_TRUE(reader_.GetSessioni().empty()) << "the session stands outside the map until a lap comes";
  reader_.GetGiro(3, 1);
  reader_.SetNomeVeicolo("V");
  reader_.GetGiro(4, 1);
  ASSERT_EQ(reader_.GetSessioni().size(), 2U);
  EXPECT_EQ(reader_.GetSessioni().at(3)->racer, "R");
  EXPECT_EQ(reader_.GetSessioni().at(3)->vehicle, "V");
  EXPECT_EQ(reader_.GetSessioni().at(3)->session_number, 3);
  EXPECT_EQ(reader_.GetSessioni().at(4)->racer, "");
}

TEST_F(Parser, TrackRecordGivesNameAndReference) {
  std::array<u8, 200> record{};
  const std::string name = "A track whose name fills 32 byteXYZ";
  std::copy(name.begin(), name.end(), record.begin());
  store_i32(&record[36], 451234567);
  store_i32(&record[40], -91234567);
  reader_.SetRecordTracciato(record.data());
  EXPECT_EQ(reader_.GetNomeTracciato(), name.substr(0, 32));
  ASSERT_NE(reader_.GetRecordTracciato(), nullptr);
  EXPECT_EQ(load_i32(reader_.GetRecordTracciato() + 40), -91234567);
}

TEST_F(Parser, CountsLapsAndTakesTheLowestOfEqualBestLaps) {
  reader_.AddLap(0, 1, 100, 100);
  reader_.AddLap(0, 2, 190, 90);
  reader_.AddLap(0, 3, 280, 90);
  reader_.sessions()[0]->laps[4] = nullptr;
  const SRkSession& session = *reader_.GetSessioni().at(0);
  EXPECT_EQ(session.lap_count, 4U);
  EXPECT_EQ(session.best_lap, 2);
  EXPECT_EQ(session.best_lap_time, 90U);
  EXPECT_EQ(session.total_lap_time, 280U);
  EXPECT_NE(reader_.GetGiro(0, 4), nullptr) << "an entry without a record is filled on demand";
}

TEST_F(Parser, LapStartsAreChainedFromTheFirstTimeOfTheFile) {
  reader_.AddChannel("a", {{500, 1}, {9000, 1}});
  reader_.AddLap(0, 1, 3000, 1000);
  reader_.AddLap(0, 2, 5000, 1500);
  reader_.AddLap(1, 1, 8000, 2900);
  reader_.RicalcolaInizioGiri();
  EXPECT_EQ(reader_.GetGiro(0, 1)->start, 500U);
  EXPECT_EQ(reader_.GetGiro(0, 2)->start, 3000U);
  EXPECT_EQ(reader_.GetGiro(1, 1)->start, 5000U);
  EXPECT_EQ(reader_.GetGiro(0, 2)->duration, 1500U) << "the logger's figure stays";
}

TEST_F(Parser, MovesEverythingAndEndsTheLastLapAtTheGivenTime) {
  CParsedChannel* channel = reader_.AddChannel("a", {{1500, 1}});
  SRkLap* lap = reader_.AddLap(0, 1, 3000, 1000);
  lap->start = 2000;
  lap->splits[1] = std::make_unique<SRkSplit>();
  lap->splits[1]->start = 2100;
  SRkLap* last = reader_.AddLap(0, 2, 4000, 900);
  reader_.TraslaTempi(1500, 100, 77777);
  EXPECT_EQ(lap->start, 600U);
  EXPECT_EQ(lap->end, 1600U);
  EXPECT_EQ(lap->duration, 1000U);
  EXPECT_EQ(lap->splits[1]->start, 700U);
  EXPECT_EQ(last->end, 77777U);
  EXPECT_EQ(channel->GetNumValori(), 1U);
  EXPECT_EQ(channel->GetPrimoTempo(), 100U);
}

TEST(SuperParser, OneReaderStartsAtZeroWithSessionsFromOne) {
  const TempFolder folder;
  struct Case {
    u64 first, last, period, length;
  };
  const Case cases[] = {{1'500'000, 6'500'000, 10'000, 6'000'000},
                        {1'500'000, 6'500'000, 2'000'000, 6'000'000},
                        {0, 6'000'000, 2'000'000, 8'000'000},
                        {7, 7, 0, 1'000'000}};
  for (const Case& c : cases) {
    Reader reader(folder.wide("a.qlt"));
    CSuperParser view;
    reader.AddChannel("a", {{c.first, 1}}, c.period);
    if (c.last != c.first) reader.AddChannel("b", {{c.last, 2}});
    reader.AddLap(5, 1, c.last, c.last - c.first);
    ASSERT_TRUE(view.AggiungiParser({{0.0, &reader}}));
    EXPECT_EQ(view.GetCanali()[0]->GetA(), c.length);
    double time = -1;
    double value = -1;
    ASSERT_EQ(view.GetCanali()[0]->GetValori(&time, &value, 1), 1U);
    EXPECT_EQ(time, 0.0);
    EXPECT_EQ(view.GetCanali()[0]->GetValori(&time, &value, 2), 0U) << "the count must be exact";
    ASSERT_EQ(view.GetSessioni().size(), 1U);
    EXPECT_EQ(view.GetSessioni().begin()->first, 1);
  }
}

TEST(SuperParser, PutsReadersOneBehindTheOther) {
  const TempFolder folder;
  Reader first(folder.wide("a.qlt"));
  Reader second(folder.wide("b.qlt"));
  first.AddChannel("a", {{100, 1}, {200, 3}}, 100);
  first.AddLap(0, 1, 200, 100);
  second.AddChannel("a", {{700, 5}}, 100);
  second.AddChannel("b", {{700, 8}, {1'000'700, 10}});
  second.AddLap(0, 1, 1'000'700, 1'000'000);
  second.SetNomePilota("R");
  CSuperParser view;
  ASSERT_TRUE(view.AggiungiParser({{1.0, &first}, {2.0, &second}}));
  ASSERT_EQ(view.GetCanali().size(), 2U);
  CSuperChannel& a = *view.GetCanali()[0];
  CSuperChannel& b = *view.GetCanali()[1];
  // The first takes one second of the axis, the second two.
  EXPECT_EQ(a.GetA(), 3'000'000U);
  double times[3];
  double values[3];
  ASSERT_EQ(a.GetValori(times, values, 3), 3U);
  EXPECT_EQ(times[1], 100 * 1e-6);
  EXPECT_EQ(times[2], 1'000'000 * 1e-6);
  ASSERT_EQ(a.GetNumValoriRange(50, 1'000'001), 2U);
  ASSERT_EQ(a.GetValoriRange(50, 1'000'001, times, values, 2), 2U);
  EXPECT_EQ(values[1], 5.0);
  EXPECT_EQ(view.GetNomePilota(), "R");
  EXPECT_EQ(view.GetSessioni().size(), 2U);

  float* grid = nullptr;
  u32 count = 1;
  ASSERT_TRUE(b.GetValoriEvery(nullptr, 500'000, &grid, &count));
  ASSERT_EQ(count, 7U) << "six points of the axis and the one asked for";
  EXPECT_EQ(std::vector<float>(grid, grid + 7), (std::vector<float>{0, 0, 8, 9, 10, 10, 0}));
  platform::heap_free(nullptr, grid);
  EXPECT_FALSE(b.GetValoriEvery(nullptr, 0, &grid, &count));
}

TEST(SuperParser, TwoChannelsOfOneNameAreTwoPartsOfOne) {
  const TempFolder folder;
  Reader reader(folder.wide("a.qlt"));
  reader.AddChannel("a", {{0, 1}});
  reader.AddChannel("a", {{0, 2}, {5, 3}});
  CSuperParser view;
  view.AggiungiParser({{0.0, &reader}});
  ASSERT_EQ(view.GetCanali().size(), 1U);
  EXPECT_EQ(view.GetCanali()[0]->GetNumValori(), 3U);
}

TEST(SuperParser, WithoutAReaderAnswersEmpty) {
  CSuperParser view;
  EXPECT_FALSE(view.AggiungiParser({}));
  EXPECT_EQ(view.GetNomeVeicolo(), "");
  EXPECT_EQ(view.GetDataOra()->tm_year, 0);
  EXPECT_EQ(view.GetTracciaGpsMigliore(nullptr), nullptr);
}

}  // namespace
}  // namespace traguardo
