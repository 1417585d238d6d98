// SPDX-License-Identifier: MIT
#include "regulation/exporter.h"

#include <gtest/gtest.h>

#include "regulation/calculator.h"
#include "regulation/fake_session.h"
#include "support/platform/fault_injection.h"

namespace traguardo {
namespace {

using test::FakeSession;
using test::TempFolder;

class ExporterSession : public ::testing::Test {
 protected:
  ExporterSession() {
    session_.folder = test::folder_of(temp_);
    session_.add("Speed", 100, {0, 10, 20, 30}, "km/h");
    session_.add("Engine", 50, {0, 500, 1000, 1500, 2000, 2500, 2750, 3000}, "rpm");
    session_.run_list = {{1, 0, 100}, {2, 100, 325}};
  }

  bool run(const std::string& configuration) {
    temp_.write("Exporter.txt", configuration);
    RegulationCalculator calculator(&session_, CalculationOptions{}, kCalibrationOff, L"");
    return calculator.export_channels();
  }
  std::string output() const { return temp_.read("Imola.wmp.export.csv"); }
  std::wstring configuration_path() const { return platform::path_in_folder(session_.folder, L"Exporter.txt"); }

  TempFolder temp_;
  FakeSession session_;
};

TEST_F(ExporterSession, WritesTheLastRunOfTheSession) {
  EXPECT_TRUE(
      run("frq=1000\r\n{\r\nracer=Bea\r\nch=Nothing\r\nfrq=20\r\n}\r\n{\r\nRACER=Anna Rossi\r\nCH=Speed\r\nch=speed\r\n"
          "ch=Engine\r\nch=Speed\r\nfrq=0\r\nfrq=abc\r\n}"));
  EXPECT_EQ(output(), test::expected_file("export_table.txt"));
}

TEST_F(ExporterSession, AFileWithoutSectionsServesEveryRacer) {
  session_.racer_name = "Somebody else";
  EXPECT_TRUE(run("ch=Engine\nfrq=10"));
  EXPECT_EQ(output(), "Engine, \nrpm, \n1000, \n2000, \n2750, \n");
}

TEST_F(ExporterSession, SaysWhatIsMissing) {
  EXPECT_FALSE(run("{\nracer=Bea\nch=Speed\n}\n"));
  EXPECT_EQ(output(), test::expected_file("export_no_entry.txt", configuration_path()));
  for (const char* lines : {"ch=speed\nch=\n", ""}) {
    EXPECT_FALSE(run(std::string("{\nracer=Anna Rossi\n") + lines));
    EXPECT_EQ(output(), test::expected_file("export_no_channel.txt", configuration_path()));
  }
}

TEST_F(ExporterSession, ARunShorterThanAPeriodHasHeadingsOnly) {
  session_.run_list = {{1, 0, 19}};
  EXPECT_TRUE(run("ch=Speed\n"));
  EXPECT_EQ(output(), "Speed, \nkm/h, \n");
}

TEST_F(ExporterSession, WithoutItsFileOrARunNothingHappens) {
  RegulationCalculator calculator(&session_, CalculationOptions{}, kCalibrationOff, L"");
  EXPECT_FALSE(calculator.export_channels());
  EXPECT_TRUE(temp_.names().empty());
  session_.run_list.clear();
  EXPECT_TRUE(run("ch=Speed\n"));
  EXPECT_EQ(temp_.names(), std::vector<std::string>{"Exporter.txt"});
}

TEST_F(ExporterSession, AFileThatCannotBeOpenedIsASuccess) {
  std::filesystem::create_directory(temp_.path() / "Imola.wmp.export.csv");
  EXPECT_TRUE(run("ch=Speed\n"));
  EXPECT_FALSE(run("ch=speed\n"));
}

TEST_F(ExporterSession, ARunThatClaimsForEverEnds) {
  session_.run_list = {{1, 0, 4294967295U}};
  EXPECT_TRUE(run("frq=2\nch=Speed\n"));
  // Behind the 400 ms that are logged a minute is believed: two rows a second.
  const std::string text = output();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2 + 120);
}

TEST_F(ExporterSession, AnHourHasAllItsRows) {
  session_.run_list = {{1, 0, 3600000}};
  std::string lines = "frq=500\n";
  for (const char* name : {"A", "B", "C", "D", "E"}) {
    session_.add(name, 1000, std::vector<float>(3600, 7));
    lines += std::string("ch=") + name + "\n";
  }
  EXPECT_TRUE(run(lines));
  const std::string text = output();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2 + 1800000);
  EXPECT_TRUE(text.ends_with("\n7, 7, 7, 7, 7, \n"));
}

TEST_F(ExporterSession, AFullDiskLeavesAnEarlierTableAndNoHalfOne) {
  session_.run_list = {{1, 0, 100}};
  EXPECT_TRUE(run("frq=500\nch=Speed\n"));
  const std::string earlier = output();
  const std::vector<std::string> names = temp_.names();
  platform::let_disk_take(100000);
  session_.run_list = {{1, 0, 60000}};
  EXPECT_TRUE(run("frq=500\nch=Speed\n"));
  platform::let_disk_take_anything();
  EXPECT_EQ(output(), earlier);
  EXPECT_EQ(temp_.names(), names);
}

TEST(ExportPeriod, ByTheLastValidLine) {
  const std::pair<const char*, u32> kCases[] = {
      {"", 20},          {"frq=3", 333},         {"frq=1000", 1},       {"frq=10\n{\nracer=Bea\nfrq=5\n}\n", 200},
      {"FRQ=10\n", 100}, {"frq=10\nfrq=0", 100}, {"frq=10\nfrq=", 100}, {"frq=2001", 20},
      {"frq=2000", 1},   {"frq=-5", 20},         {" frq=10", 20},       {"frq=7.9", 143},
  };
  for (const auto& [text, period_ms] : kCases) EXPECT_EQ(export_period_ms(text), period_ms) << text;
}

}  // namespace
}  // namespace traguardo
