// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>

#include "helpers/parsed_session.h"

namespace traguardo {
namespace {

using test::Bytes;
using test::text_bytes;
using test::operator+;
using test::ParsedSession;
using test::tag;

Bytes ident(u32 device_code, u32 device_id) {
  Bytes out(64);
  store_u32(&out[8], device_code);
  store_u32(&out[12], device_id);
  return out;
}

TEST(HeaderTags, FillTheSession) {
  ParsedSession session(tag("RCR", std::string("AB\0CD", 5)) + tag("VEH", "car") + tag("VEH", "later car") +
                        tag("CMP", "cup") + tag("VTY", "race") + tag("TRK ", "track") + tag("TRK", "no track") +
                        tag("RACM", "mode") + tag("PRFD", "profile") + tag("TRTY", "loop") + tag("rcr", "x") +
                        test::tail());
  ASSERT_TRUE(session.good());
  CParser& reader = session.reader();
  EXPECT_EQ(reader.GetNomePilota(), "AB");
  EXPECT_EQ(reader.GetNomeVeicolo(), "later car");
  EXPECT_EQ(reader.GetNomeCampionato(), "cup");
  EXPECT_EQ(reader.GetNomeTipoVenue(), "race");
  EXPECT_EQ(reader.GetNomeTracciato(), "track");
  EXPECT_EQ(reader.GetModoGara(), "mode");
  EXPECT_EQ(reader.GetTestoPrfd(), "profile");
  EXPECT_EQ(reader.GetTipoTracciato(), "loop");
  EXPECT_TRUE(reader.GetSessioni().empty());
}

TEST(HeaderTags, TrackIsANameBelow96BytesAndARecordFromThere) {
  for (const std::size_t size : {95U, 96U, 200U}) {
    Bytes payload(size);
    const std::string name = "Name";
    std::copy(name.begin(), name.end(), payload.begin());
    store_i32(&payload[36], 7);
    ParsedSession session(tag("TRK ", payload) + test::tail());
    EXPECT_EQ(session.reader().GetNomeTracciato(), "Name");
    EXPECT_EQ(load_i32(session.reader().GetRecordTracciato() + 36), size < 96 ? 0 : 7) << size;
  }
}

TEST(HeaderTags, DateAndTimeAreClampedFieldByField) {
  struct Case {
    const char* date;
    const char* time;
    std::array<int, 9> want;  // year, month, day, hour, minute, second, day of week and of year, no summer time
  };
  // Days of week and year from a calendar.
  const Case cases[] = {
      {"08/01/2018", "12:22:53", {118, 7, 1, 12, 22, 53, 3, 212}},
      {"13/40/2010", "25.61.99", {110, 11, 31, 23, 59, 59, 5, 364}},
      {"02/30/2000", "00:00:00", {100, 1, 29, 0, 0, 0, 2, 59}},
      {"02/30/1900", "12.34.56", {90, 1, 28, 12, 34, 56, 3, 58}},
      {"00/00/2023", "01:02:03x", {123, 0, 1, 1, 2, 3, 0, 0}},
  };
  for (const Case& c : cases) {
    ParsedSession session(tag("TMD", c.date) + tag("TMT", c.time) + test::tail());
    const std::tm& when = *session.reader().GetDataOra();
    EXPECT_EQ((std::array{when.tm_year, when.tm_mon, when.tm_mday, when.tm_hour, when.tm_min, when.tm_sec, when.tm_wday,
                          when.tm_yday, when.tm_isdst}),
              c.want)
        << c.date << ' ' << c.time;
  }
}

TEST(HeaderTags, TimesOfAnotherFormChangeNothing) {
  const Bytes good = tag("TMD", "03/04/2015") + tag("TMT", "05:06:07");
  ParsedSession session(good + tag("TMD", "3/04/2016") + tag("TMD", "03-04-2016") + tag("TMT", "12-34-56") +
                        tag("TMT", "1:2:3") + test::tail());
  EXPECT_EQ(session.reader().GetDataOra()->tm_year, 115);
  EXPECT_EQ(session.reader().GetDataOra()->tm_hour, 5);
}

TEST(HeaderTags, WithoutATimeTheMachinesOwnCounts) {
  const std::time_t before = std::time(nullptr);
  ParsedSession session(tag("RCR", "x") + test::tail());
  std::tm when = *session.reader().GetDataOra();
  when.tm_isdst = -1;
  const double distance = std::difftime(std::mktime(&when), before);
  EXPECT_GE(distance, -1.0);
  EXPECT_LE(distance, 60.0);
}

TEST(HeaderTags, IdentsStandUnderTheFirstRealDeviceId) {
  ParsedSession session(tag("SRC", ident(1, 0xFFFFFFFF) + ident(2, 20)) + tag("SRC", ident(3, 20)) +
                        tag("SRC", ident(4, 30)) + tag("SRC", Bytes(65)) + tag("SRC", Bytes{}) +
                        tag("iSLV", ident(5, 50)) + test::tail());
  const IdentMap& main = session.reader().GetMainIdents();
  ASSERT_EQ(main.size(), 3U);
  ASSERT_EQ(main.at(20).size(), 2U) << "of two lists under one key the earlier stays";
  EXPECT_EQ(main.at(20)[1].device_code(), 2U);
  EXPECT_EQ(main.at(30)[0].device_code(), 4U);
  EXPECT_TRUE(main.at(0xFFFFFFFF).empty());
  EXPECT_EQ(session.reader().GetNetIdents().at(50)[0].device_code(), 5U);
}

TEST(HeaderTags, FilesWithoutAnythingToReadFail) {
  EXPECT_FALSE(ParsedSession(Bytes{}).good());
  EXPECT_FALSE(ParsedSession(tag("RCR", Bytes{})).good()) << "20 bytes hold no tag";
  EXPECT_FALSE(ParsedSession(Bytes(1000, 'x')).good());
  EXPECT_TRUE(ParsedSession(tag("RCR", "x") + Bytes(20)).good());
  const test::TempFolder folder;
  CParserZep_2Gv4 missing(folder.wide("missing.qlt"), {});
  EXPECT_FALSE(missing.ParsaFile(nullptr));
  CParserZep_2Gv4 directory(platform::path_from_host_bytes(folder.path().string()), {});
  EXPECT_FALSE(directory.ParsaFile(nullptr));
}

class Sink : public IProgress {
 public:
  int Apri(bool* stop, int maximum, int) override {
    EXPECT_EQ(maximum, 100);
    *stop = stop_at_once;
    return 5;
  }
  void Chiudi(int handle, int result) override {
    EXPECT_EQ(handle, 5);
    results.push_back(result);
  }
  bool Avanza(int, int percent) override {
    percents.push_back(percent);
    return percent < stop_from;
  }
  bool stop_at_once = false;
  int stop_from = 1000;
  std::vector<int> results;
  std::vector<int> percents;
};

TEST(HeaderTags, ProgressIsToldAndMayStop) {
  const Bytes bytes =
      test::cnf({{1, "a"}}) + test::frame_s(10, 1, 1) + test::frame_s(20, 1, 1) + tag("RCR", Bytes(300)) + test::tail();
  Sink sink;
  EXPECT_TRUE(ParsedSession(bytes, {}, &sink).good());
  EXPECT_GE(sink.percents.size(), 3U) << "each tag and each stretch of frames";
  EXPECT_TRUE(std::is_sorted(sink.percents.begin(), sink.percents.end()));
  EXPECT_EQ(sink.results, std::vector<int>{1});
  Sink at_once;
  at_once.stop_at_once = true;
  EXPECT_FALSE(ParsedSession(bytes, {}, &at_once).good());
  Sink later;
  later.stop_from = 20;
  EXPECT_FALSE(ParsedSession(bytes, {}, &later).good());
  EXPECT_EQ(later.results.front(), 0);
}

}  // namespace
}  // namespace traguardo
