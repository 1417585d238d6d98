// SPDX-License-Identifier: MIT
#include "legacy/wmp_parser.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

#include "model/parsed_channel.h"
#include "opened_session.h"

namespace traguardo::test {
namespace {

struct Samples {
  std::vector<double> times;
  std::vector<double> values;
};

Samples samples_of(IRkChannel& channel) {
  const std::size_t count = static_cast<std::size_t>(channel.GetNumValori());
  Samples samples{std::vector<double>(count), std::vector<double>(count)};
  EXPECT_EQ(channel.GetValori(samples.times.data(), samples.values.data(), static_cast<int>(count)), count);
  return samples;
}

IRkChannel& channel_at(const CParserWMP& reader, std::size_t index) {
  return **std::next(reader.GetCanali().begin(), static_cast<std::ptrdiff_t>(index));
}

// A session file and its trace, and the reader on them.
class ReadSession {
 public:
  explicit ReadSession(const Bytes& bytes, const Bytes& trace = plain_jts(5)) {
    folder_.write("s.wmp", bytes);
    folder_.write("s.jts", trace);
  }
  CParserWMP& reader() { return reader_; }
  const TempFolder& folder() const { return folder_; }

 private:
  TempFolder folder_;
  CParserWMP reader_{folder_.wide("s.wmp")};
};

TEST(WmpReader, ChannelsReachTheHostWithEvenTimes) {
  wmp::File file = small_file(600);
  file.logged.push_back(plain_channel("Hidden", {1, 2}));
  file.logged[2].form = 253;
  file.logged.push_back(plain_channel("Empty", {}));
  file.logged.push_back(plain_channel("Last", {7, 8}, 0));
  file.logged[4].unit = "C";
  file.derived = {plain_channel("Twice", {}, 5)};
  file.derived[0].formula = "First * 2";
  ReadSession session(wmp::build(file));
  ASSERT_TRUE(session.reader().ParsaFile(nullptr));
  std::vector<std::pair<std::string, bool>> names;
  for (const auto& channel : session.reader().GetCanali()) {
    names.emplace_back(channel->GetNome(), dynamic_cast<const CParsedChannel&>(*channel).is_derived());
  }
  ASSERT_EQ(names, (std::vector<std::pair<std::string, bool>>{
                       {"First", false}, {"Second", false}, {"Last", false}, {"Twice", true}}));
  const Samples second = samples_of(channel_at(session.reader(), 1));
  EXPECT_EQ(second.values, (std::vector<double>{11, 12, 13, 14, 15}));
  ASSERT_EQ(second.times.size(), 5U);
  EXPECT_EQ(second.times[0], 0.0);
  EXPECT_EQ(second.times[3], 60000 * 1e-6);
  IRkChannel& last = channel_at(session.reader(), 2);
  EXPECT_EQ(last.GetUnita(), "\260C");
  EXPECT_EQ(last.GetFrequenza(), 0.0F);
  EXPECT_EQ(samples_of(last).times[1], 1.0);
}

TEST(WmpReader, IdentifiesTheLogger) {
  wmp::File file = small_file(600);
  file.device_code = 1234;
  file.device_id = 0x01020304;
  file.firmware = {0x12, 0x34, 0x5a};
  ReadSession session(wmp::build(file));
  ASSERT_TRUE(session.reader().ParsaFile(nullptr));
  const IdentMap& idents = session.reader().GetMainIdents();
  ASSERT_EQ(idents.size(), 1U);
  const std::vector<SIdentRecord>& records = idents.at(0x01020304);
  ASSERT_EQ(records.size(), 1U);
  const auto& bytes = records[0].bytes;
  EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 4), "idn\x01");
  EXPECT_EQ(load_u16(&bytes[4]), 56);
  EXPECT_EQ(records[0].device_code(), 1234U);
  // The digit a is 49 above 0.
  EXPECT_EQ(Bytes(bytes.begin() + 20, bytes.begin() + 24), (Bytes{12, 34, 99, 0}));
  // 1234 is 0xD2 and 0x04; the id sums to 10; 12 + 34 + 99.
  EXPECT_EQ(load_u16(&bytes[6]), 0xD2 + 4 + 10 + 145);
}

TEST(WmpReader, NeedsTheTraceBesideTheFile) {
  const TempFolder folder;
  folder.write("s.wmp", wmp::build(small_file(600)));
  CParserWMP alone(folder.wide("s.wmp"));
  EXPECT_FALSE(alone.ParsaFile(nullptr));
  // Not even the copy is made: the file was never looked at.
  EXPECT_FALSE(platform::file_exists(folder.wide("s.bak")));

  ReadSession short_trace(wmp::build(small_file(600)), plain_jts(2));
  EXPECT_FALSE(short_trace.reader().ParsaFile(nullptr));
  EXPECT_TRUE(short_trace.reader().GetCanali().empty());
}

TEST(WmpReader, ARefusedFileLeavesItsTrace) {
  Bytes damaged = wmp::build(small_file(600));
  damaged[100] = static_cast<u8>(damaged[100] + 1);
  for (const Bytes& bytes : {damaged, Bytes()}) {
    ReadSession session(bytes);
    ASSERT_TRUE(session.reader().ParsaFile(nullptr));
    EXPECT_TRUE(session.reader().GetCanali().empty());
    EXPECT_TRUE(session.reader().GetSessioni().empty());
    EXPECT_EQ(session.reader().GetNomePilota() + session.reader().GetNomeTipoVenue(), "");
    ASSERT_NE(session.reader().GetTracciaGps("GPS"), nullptr);
  }
  // The same where there is no session file at all.
  const TempFolder folder;
  folder.write("s.jts", plain_jts(5));
  CParserWMP reader(folder.wide("s.wmp"));
  EXPECT_TRUE(reader.ParsaFile(nullptr));
  EXPECT_NE(reader.GetTracciaGps("GPS"), nullptr);
}

TEST(WmpReader, AStoreThatCannotBeMadeIsAFailure) {
  ReadSession session(wmp::build(small_file(600)));
  const EnvironmentVariable nowhere("TRAGUARDO_STORE_FOLDER", session.folder().file("missing"));
  EXPECT_FALSE(session.reader().ParsaFile(nullptr));
  EXPECT_TRUE(session.reader().GetCanali().empty());
}

}  // namespace
}  // namespace traguardo::test
