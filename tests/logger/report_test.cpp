// SPDX-License-Identifier: MIT
// The report of a damaged session that has something to show in every section, and of small ones for single rules. The
// texts in tests/data/report were worked out from the bytes of the session, offset by offset, apart from the reader.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <optional>
#include <random>

#include "helpers/gps_records.h"
#include "helpers/parsed_session.h"
#include "logger/mark_times.h"
#include "logger/report_text.h"

namespace traguardo {
namespace {

using test::Bytes;
using test::chunk;
using test::frame;
using test::frame_m;
using test::frame_s;
using test::gps_record;
using test::GpsFields;
using test::Lap;
using test::operator+;
using test::ParsedSession;
using test::tag;

constexpr u16 kSpeed = 1;
constexpr u16 kTemp = 2;
constexpr u16 kTempToo = 3;
constexpr u16 kRover = 4;
constexpr u16 kLaps = 12;
constexpr u16 kLong = 300;
constexpr u16 kAcquisition = 7;
constexpr u16 kGroup = 9;
constexpr u32 kGpsPacket = 26 | 3 << 7;
constexpr u32 kLapPacket = 26 | 1 << 7 | 3 << 15;
constexpr u32 kChunkOfS = 0;
constexpr u32 kChunkOfA = 3;

constexpr LoggerReportOptions kEverything{true, true, true, true};
constexpr LoggerReportOptions kRates{true, false, false, false};
constexpr LoggerReportOptions kLapMarks{false, true, false, false};
constexpr LoggerReportOptions kGpsStatistics{false, false, true, false};
constexpr LoggerReportOptions kGpsSamples{false, false, false, true};

Bytes ident(u32 device_code, u32 device_id, const Bytes& recovery = {}, const Bytes& firmware = {},
            const Bytes& hardware = {}) {
  Bytes out(64);
  store_u32(&out[8], device_code);
  store_u32(&out[12], device_id);
  std::copy(recovery.begin(), recovery.end(), out.begin() + 16);
  std::copy(firmware.begin(), firmware.end(), out.begin() + 20);
  std::copy(hardware.begin(), hardware.end(), out.begin() + 24);
  return out;
}

// Track 12 "Ring" with two of its six positions.
Bytes track_record() {
  Bytes out(96);
  const std::string name = "Ring";
  std::copy(name.begin(), name.end(), out.begin());
  store_u32(&out[32], 12);
  store_i32(&out[36], 456175000);
  store_i32(&out[40], 92812500);
  store_i32(&out[52], -15000000);
  store_u64(&out[88], 9223372036854775813U);
  return out;
}

Bytes gps(const GpsFields& fields) {
  const SGpsRecord record = gps_record(fields);
  return Bytes(record.bytes.begin(), record.bytes.end());
}

Lap mark(u16 lap, u32 time_ms, i32 lap_time_ms, u32 split_time_ms = 0, u8 split = 0) {
  Lap record;
  record.session = 1;
  record.split = split;
  record.lap = lap;
  record.lap_time_ms = lap_time_ms;
  record.split_time_ms = split_time_ms;
  record.time_ms = time_ms;
  return record;
}

Bytes header() {
  return tag("SRC", ident(1, 4711, {}, {1, 2, 3}, {10, 0, 11}) + ident(48, 0, {2, 10, 0})) +
         tag("iSLV", ident(77777, 5) + ident(2002, 9)) + tag("RCR", "A. Racer") + tag("VEH", "Car 7") +
         tag("CMP", "Winter cup") + tag("VTY", "Race") + tag("RACM", "Sprint") + tag("TRK ", track_record()) +
         tag("TRTY", "Closed") + tag("ENF", tag("MAN", "Acme") + tag("MOD", "E1")) + tag("ENF", Bytes{});
}

Bytes table() {
  return test::cnf({{kSpeed, "Speed", 4, 2, 0x10, 10000, 0, 1, 48, 3, 123456, 4},
                    {kTemp, "Temp", 4, 2, 0x10, 20000, 0, 2, 48, 4, 123456, 5},
                    {kTempToo, "Temp", 5, 1, 0x10, 0, 0, 77, 2002, 1, 4294967295U, 99},
                    {kRover, "Rover", 8, 56, kGpsPacket, 100000, 0, 5, 0, 0, 0, 8},
                    {kLaps, "Laps", 31, 20, kLapPacket, 0, 0, 6, 0, 0, 0, -1},
                    {kLong, "A name that fills all 32 letters", 4, 2, 0x10, 30000, 0, 101, 65535, 65535, 0, 26}},
                   test::acd(kAcquisition, 103, {kSpeed, 99, kTempToo}) + test::grp(kGroup, {kTempToo, kSpeed}));
}

// A reset, a bad fix, a good record, one from the future, one of the wrong size.
Bytes first_gps_records() {
  return tag("GPS", gps({.time_ms = 500, .time_of_week_ms = 100500})) +
         tag("GPS", gps({.time_ms = 400, .time_of_week_ms = 100400})) +
         tag("GPS", gps({.time_ms = 1000,
                         .time_of_week_ms = 101000,
                         .week = 2222,
                         .fix = 2,
                         .x_cm = 637813700,
                         .y_cm = 0,
                         .z_cm = 0,
                         .position_accuracy_cm = 99999,
                         .vx_cm_s = 300,
                         .vy_cm_s = 400,
                         .speed_accuracy_cm_s = 12345,
                         .dop = 9999,
                         .satellites = 3})) +
         tag("GPS", gps({.time_ms = 1200,
                         .time_of_week_ms = 101206,
                         .week = 2222,
                         .fix = 4,
                         .x_cm = 441036075,
                         .y_cm = 72074236,
                         .z_cm = 453581877,
                         .vz_cm_s = 1234})) +
         tag("GPS", gps({.time_ms = 9999, .time_of_week_ms = 102000})) + tag("GPS", Bytes(55));
}

Bytes frames() {
  const Bytes good = frame_s(2000, kSpeed, 5) + frame_m(3000, kTemp, {1, 2, 3}) +
                     frame('G', 4000, kGroup, Bytes{8, 9, 0}) + frame('A', 5000, kAcquisition, Bytes{9, 0, 8});
  const Bytes unknown = frame_s(6000, 77, 1) + frame_m(6000, 77, {1}) + frame('A', 6000, 78, Bytes{1}) +
                        frame('G', 6000, 79, Bytes{1}) + chunk(4, 1, 0, true, {1});
  return good + unknown;
}

// One entry at least in each list of chunk errors but that of a file that ends in a chunk.
Bytes chunks() {
  Bytes open_end = chunk(kChunkOfS, kSpeed, 0, true, {1, 2, 3});
  open_end.back() = 'x';
  return chunk(kChunkOfS, kSpeed, 0, true, {}) + open_end + chunk(kChunkOfS, kSpeed, 0, false, {0x58, 0x1B, 0, 0}) +
         chunk(kChunkOfS, kSpeed, 0, false, {1}) + chunk(kChunkOfS, kSpeed, 2, true, {6}) +
         chunk(kChunkOfS, kSpeed, 1, true, {1}) + chunk(kChunkOfS, kSpeed, 0, true, {0x58, 0x1B, 0, 0, 7, 0}) +
         chunk(kChunkOfS, 200, 0, true, {0x58, 0x1B, 0, 0, 7, 0}) +
         chunk(kChunkOfA, kAcquisition, 0, true, {0x58, 0x1B, 0, 0, 1});
}

// A repeated lap, a repeated split, a lap with a split (handed over twice), a record of the wrong size.
Bytes lap_marks() {
  return mark(1, 10000, 9900).tagged(2) + mark(1, 10000, 9900).tagged(2) + mark(1, 14000, 0, 4000, 1).tagged(2) +
         mark(1, 14001, 0, 4001, 1).tagged(2) + frame('S', 20000, kLaps, mark(2, 20000, 70010, 4000).record(3)) +
         tag("LAP", mark(3, 0, 0).record(1), 2);
}

// Behind the first minute: clocks that jump and that run back, and lap marks between GPS records.
Bytes late_frames() {
  const GpsFields beside{.time_ms = 61050,
                         .time_of_week_ms = 160000,
                         .week = 2222,
                         .x_cm = 441036075,
                         .y_cm = 72074236,
                         .z_cm = 453581877,
                         .position_accuracy_cm = 5,
                         .speed_accuracy_cm_s = 6,
                         .dop = 7,
                         .satellites = 12};
  GpsFields further{.time_ms = 61100,
                    .time_of_week_ms = 161100,
                    .week = 2223,
                    .x_cm = 441012520,
                    .y_cm = 72139537,
                    .z_cm = 453594315,
                    .position_accuracy_cm = 1,
                    .vx_cm_s = -300,
                    .vz_cm_s = -400,
                    .speed_accuracy_cm_s = 2,
                    .dop = 3,
                    .satellites = 10};
  Bytes out = frame_s(61000, kSpeed, 1) + frame_s(60000, kSpeed, 2) + frame_s(130000, kSpeed, 3) +
              frame('A', 130000, kAcquisition, Bytes{9, 0, 8}) + frame('G', 130000, kGroup, Bytes{8, 9, 0}) +
              frame('S', 130000, kRover, gps({.time_ms = 130000})) + frame('S', 61050, kRover, gps(beside)) +
              tag("GPS", gps(further)) + mark(3, 0, -5).tagged(1);
  further.time_ms = 61500;
  further.time_of_week_ms = 161503;
  further.vx_cm_s = 1;
  further.vy_cm_s = 1;
  further.vz_cm_s = 1;
  return out + tag("GPS", gps(further));
}

// The last frame begins where the walk still looks, and a chunk behind it is cut by the end of the file.
Bytes ending() {
  Bytes cut = chunk(kChunkOfS, kSpeed, 0, true, Bytes(8));
  cut.resize(10);
  return test::tail() + frame_s(62000, kSpeed, 4) + cut;
}

Bytes damaged_session() {
  return header() + table() + first_gps_records() + frames() + chunks() + lap_marks() + late_frames() + ending();
}

std::string without_carriage_returns(std::string text) {
  std::erase(text, '\r');
  return text;
}
std::string report_of(const ParsedSession& session) {
  return without_carriage_returns(session.folder().read("a.qlt.tw3.log"));
}
std::string expected_text(const std::string& name) {
  std::ifstream stream(std::string(TRAGUARDO_TEST_DATA) + "/report/" + name, std::ios::binary);
  EXPECT_TRUE(stream.is_open()) << name;
  return without_carriage_returns({std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()});
}
std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines(1);
  for (const char c : text) {
    if (c == '\n') {
      lines.emplace_back();
    } else {
      lines.back() += c;
    }
  }
  return lines;
}

TEST(Report, ShowsADamagedSessionToTheBlank) {
  struct Case {
    const char* file;
    LoggerReportOptions options;
  };
  const Case cases[] = {{"everything.txt", kEverything},
                        {"rates.txt", kRates},
                        {"laps.txt", kLapMarks},
                        {"gps_statistics.txt", kGpsStatistics},
                        {"gps_samples.txt", kGpsSamples}};
  for (const Case& c : cases) {
    ParsedSession session(damaged_session(), c.options);
    EXPECT_TRUE(session.good());
    EXPECT_EQ(report_of(session), expected_text(c.file)) << c.file;
  }
}

TEST(Report, EndsItsLinesAsThePlatformDoes) {
  ParsedSession session(tag("RCR", "x") + test::tail(), kGpsSamples);
  const std::string bytes = session.folder().read("a.qlt.tw3.log");
#ifdef _WIN32
  EXPECT_NE(bytes.find("Racer:        x\r\n"), std::string::npos);
#else
  EXPECT_EQ(bytes.find('\r'), std::string::npos);
#endif
}

// A place of a list that had no channel when the list was read has no row when there is one, as it takes no samples.
TEST(Report, ListsNoChannelAtAPlaceThatHadNone) {
  const Bytes lists = test::acd(6, 103, {1, 2}) + test::grp(5, {2, 1});
  ParsedSession session(test::cnf({{1, "first"}}, lists) + test::cnf({{1, "again"}, {2, "late"}}) +
                            frame('A', 20, 6, Bytes{2, 0}) + frame('G', 30, 5, Bytes{4, 0}) + test::tail(),
                        kGpsSamples);
  const std::string report = report_of(session);
  const std::string rows = report.substr(report.find("AcquisDescs"));
  EXPECT_EQ(rows.find("late"), std::string::npos) << rows;
  for (const std::string row : {"\nidx   6 / id   1 ", "\nidx   5 / id   1 "}) {
    EXPECT_NE(rows.find(row), std::string::npos) << rows;
  }
  EXPECT_EQ(session.samples("again").size(), 2U);
  EXPECT_TRUE(session.samples("late").empty());
}

// Without a setting it is left alone, else a longer one is replaced whole; where it can't be written, the open goes on.
TEST(Report, MeetsAnOlderOne) {
  const test::TempFolder folder;
  folder.write("a.qlt", damaged_session());
  const std::string older(100000, '?');
  const auto opens = [&folder](const LoggerReportOptions& options) {
    return CParserZep_2Gv4(folder.wide("a.qlt"), options).ParsaFile(nullptr);
  };
  folder.write("a.qlt.tw3.log", older);
  EXPECT_TRUE(opens({}));
  EXPECT_EQ(folder.read("a.qlt.tw3.log"), older);
  EXPECT_TRUE(opens(kGpsSamples));
  EXPECT_EQ(folder.read("a.qlt.tw3.log").find('?'), std::string::npos);
  // Also one that is the session itself by another name: that name goes to the report.
  std::filesystem::remove(folder.path() / "a.qlt.tw3.log");
  std::filesystem::create_hard_link(folder.path() / "a.qlt", folder.path() / "a.qlt.tw3.log");
  EXPECT_TRUE(opens(kGpsSamples));
  const Bytes session = damaged_session();
  EXPECT_EQ(folder.read("a.qlt"), std::string(session.begin(), session.end()));
  std::filesystem::remove(folder.path() / "a.qlt.tw3.log");
  std::filesystem::create_directory(folder.path() / "a.qlt.tw3.log");
  EXPECT_TRUE(opens(kEverything));
}

TEST(Report, StandsAlsoBesideAFileThatHoldsNoTag) {
  const std::string text =
      "\nECU information\n\nUser information\nRacer:        \nVehicle:      \nChampionship: \nVenue type:   \n"
      "Race Mode:    \n\nTrack information\nTrack name: \nTrack type: \n";
  ParsedSession session(Bytes(100, 'x'), kGpsSamples);
  EXPECT_FALSE(session.good());
  EXPECT_EQ(report_of(session), text);
  ParsedSession all(Bytes(100, 'x'), kEverything);
  // Rates without a channel, no frame errors (bytes that start nothing don't count as such), laps without a mark.
  EXPECT_EQ(report_of(all), text + "\n\nTot Hz: 0\n\n");
}

TEST(Report, GivesTheLabelToTheFirstIdentSeenOrNot) {
  ParsedSession session(tag("SRC", ident(0, 9) + ident(1, 9)) + tag("SRC", ident(77777, 3)) + test::tail(),
                        kGpsSamples);
  // In the order of their keys, 3 before 9.
  EXPECT_TRUE(
      report_of(session).starts_with("\nMAIN ident\nBad ident or unrecognized device\nData logger 1 -> ID 9\n"));
  ParsedSession unseen(tag("SRC", ident(0, 9) + ident(1, 9) + ident(77777, 0)) + test::tail(), kGpsSamples);
  EXPECT_TRUE(report_of(unseen).starts_with("\nData logger 1 -> ID 9\n\n\nBad ident or unrecognized device\nECU"));
}

TEST(Report, MarksTheDriftOfTheTwoClocks) {
  // By how much more the logger's clock went on than the receiver's, in ms.
  struct Case {
    i32 difference;
    const char* mark;
  };
  const Case cases[] = {{-3, " --"}, {-2, " =="}, {0, " =="}, {2, " =="}, {3, " ++"}};
  for (const Case& c : cases) {
    const u32 later = 5000 + static_cast<u32>(100 - c.difference);
    ParsedSession session(tag("GPS", gps({.time_ms = 1000, .time_of_week_ms = 5000})) +
                              tag("GPS", gps({.time_ms = 1100, .time_of_week_ms = later})) + test::tail(),
                          kGpsSamples);
    const std::vector<std::string> lines = lines_of(report_of(session));
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines[lines.size() - 2].substr(0, 3), c.mark) << c.difference;
  }
}

// Each place of a descriptor asks for a whole row with two bytes: such a report goes to the disk piece by piece.
TEST(Report, OfManyRowsIsWrittenInPiecesWithoutASeam) {
  constexpr std::size_t kPlaces = 10000;
  ParsedSession session(
      test::cnf({{kSpeed, "Speed"}}, test::grp(kGroup, std::vector<u16>(kPlaces, kSpeed))) + test::tail(), kGpsSamples);
  const std::vector<std::string> lines = lines_of(report_of(session));
  const auto title = std::find(lines.begin(), lines.end(), "Groups");
  ASSERT_GT(lines.end() - title, static_cast<std::ptrdiff_t>(kPlaces + 2));
  EXPECT_TRUE(title[1].starts_with("idx   9 / id   1 / "));
  EXPECT_EQ(std::count(title, lines.end(), title[1]), static_cast<std::ptrdiff_t>(kPlaces));
  EXPECT_EQ(title[kPlaces + 2], "ECU information");
}

TEST(ReportText, ShowsOfAStretchOfOffsetsTheFirst) {
  struct Case {
    std::vector<u64> elements;
    std::string text;
  };
  std::vector<u64> many;
  std::string listed;
  for (u64 i = 0; i < 101; ++i) many.push_back(100 + 2 * i);
  for (std::size_t i = 0; i < 100; ++i) listed += ReportText().listed_offset(many[i]).text();
  const Case cases[] = {
      {{}, ""},
      {{16, 17, 18, 40}, "errors 4  0x0000000010, 0x0000000028,\n"},
      {{0, 1, 5}, "errors 3  0x0000000005,\n"},
      {{5, 0, 7, 7}, "errors 4  0x0000000005, 0x0000000000, 0x0000000007, 0x0000000007,\n"},
      {{0x123456789ABCDEF}, "errors 1  0x123456789abcdef,\n"},
      {many, "errors 101 (first 100 here) " + listed + "\n"},
  };
  for (const Case& c : cases) EXPECT_EQ(ReportText().error_line("errors", c.elements).text(), c.text);
}

TEST(ReportText, FormsNumbers) {
  struct Case {
    std::string got;
    std::string want;
  };
  const Case cases[] = {
      {ReportText().Number(u8{7}, 3).Number(i16{-12}, 5).Number(u64{18446744073709551615U}).text(),
       "  7  -1218446744073709551615"},
      {ReportText().Digits(5, 2).Digits(-5, 3).Digits(123, 2).text(), "05-05123"},
      {ReportText().real(100.0, 4).real(0.1).real(1234567.0).real(33.33333333).text(), " 1000.11.23457e+0633.3333"},
      {ReportText().percentage(1, 3).percentage(0, 3).percentage(3, 3).text(), " [33.3333 pct] [0 pct] [100 pct]"},
      {ReportText().padded("ab", 4).padded("abcde", 4).text(), "ab  abcde"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.got, c.want);
}

TEST(MarkTimes, FindTheFirstOfTheFileInASpan) {
  std::mt19937 random(7);
  for (std::size_t count = 0; count < 40; ++count) {
    std::vector<u32> times;
    for (std::size_t i = 0; i < count; ++i) times.push_back(static_cast<u32>(random() % 50));
    const MarkTimes marks(times);
    for (u32 from = 0; from < 52; ++from) {
      for (u32 to = 0; to < 52; ++to) {
        std::optional<u32> want;
        for (const u32 time : times) {
          if (time < from || time > to) continue;
          want = time;
          break;
        }
        ASSERT_EQ(marks.first_in(from, to), want) << count << " marks, " << from << " to " << to;
      }
    }
  }
}

TEST(DebugTags, GoRawIntoTheirFiles) {
  const test::TempFolder folder;
  const Bytes session = tag("+ABC", Bytes{1, 0, '\n'}) + tag("RCR", "x") + tag("+AB", "no") + tag("+ABC", Bytes{}) +
                        tag("+ABC", Bytes{'\r', 255}) + test::tail();
  folder.write("a.qlt", session);
  std::filesystem::create_directory(folder.path() / "a.qlt.taken");
  folder.write("a.qlt.never", std::string("an older one"));
  CParserZep_2Gv4 reader(folder.wide("a.qlt"), {});
  reader.SetTagDiDebug({{"+OLD", ".old"}});
  // A tag that the reader knows is never caught; an empty suffix would name the session itself.
  reader.SetTagDiDebug({{"+ABC", ".abc"}, {"+X", ".never"}, {"RCR", ".known"}, {"+AB", ".taken"}, {"+Y", ""}});
  EXPECT_TRUE(reader.ParsaFile(nullptr));
  EXPECT_EQ(folder.read("a.qlt.abc"), std::string({1, 0, '\n', '\r', static_cast<char>(255)}));
  EXPECT_EQ(folder.read("a.qlt.never"), "");
  EXPECT_EQ(folder.read("a.qlt.known"), "");
  EXPECT_EQ(folder.read("a.qlt"), std::string(session.begin(), session.end()));
  EXPECT_EQ(folder.names(),
            (std::vector<std::string>{"a.qlt", "a.qlt.abc", "a.qlt.known", "a.qlt.never", "a.qlt.taken"}));
}

}  // namespace
}  // namespace traguardo
