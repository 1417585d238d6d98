// The elapsed-time tables as files, and the sums of the default one and of those beside it, worked out from their
// sources.
#include "regulation/elapsed_time.h"

#include <gtest/gtest.h>

#include <limits>

#include "helpers/table_sums.h"
#include "regulation/elapsed_time_data.h"
#include "regulation/fake_session.h"
#include "support/app_folders.h"

namespace traguardo {
namespace {

using test::TempFolder;

TEST(ElapsedTime, WritesTheDefaultTableOnceWithItsFolders) {
  const TempFolder temp;
  const std::wstring folder = CAppFolders(test::folder_of(temp) + L"/").GetCartellaEtPrediction();
  const std::string name = "user/et_prediction/Default.etp";
  ensure_default_table(folder);
  const std::string text = temp.read(name);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 213);
  EXPECT_EQ(text.rfind("0\t58.750\t23.604\t0.000\n1\t60.536\t24.025\t0.017\n", 0), 0U);
  for (const char* row : {"\n50\t164.885\t33.841\t0.407\n", "\n100\t299.925\t40.245\t0.661\n",
                          "\n150\t453.217\t44.786\t0.842\n", "\n212\t661.963\t48.768\t1.000\n"}) {
    EXPECT_NE(text.find(row), std::string::npos) << row;
  }
  // What a user has changed stays.
  temp.write(name, std::string("mine\n"));
  ensure_default_table(folder);
  EXPECT_EQ(temp.read(name), "mine\n");
}

TEST(ElapsedTime, AFolderThatCannotBeMadeIsPassedOver) {
  const TempFolder temp;
  temp.write("user", std::string("a file in the folder's place"));
  const std::wstring folder = CAppFolders(test::folder_of(temp) + L"/").GetCartellaEtPrediction();
  ensure_default_table(folder);
  EXPECT_EQ(temp.names(), std::vector<std::string>{"user"});
  EXPECT_FALSE(read_table(folder, kDefaultTableName).has_value());
}

TEST(ElapsedTime, ReadsBackWhatItWrites) {
  const std::vector<ElapsedTimeRow> rows = rows_of_table(table_text(default_elapsed_times()));
  ASSERT_EQ(rows.size(), default_elapsed_times().size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].distance_ft, default_elapsed_times()[i].distance_ft) << i;
    EXPECT_EQ(rows[i].speed_mph, default_elapsed_times()[i].speed_mph) << i;
    EXPECT_EQ(rows[i].fraction, default_elapsed_times()[i].fraction) << i;
  }
}

TEST(ElapsedTime, DropsLinesWithoutFourColumns) {
  const std::vector<ElapsedTimeRow> rows =
      rows_of_table("0\t1.5\t2.5\t0\r\n1\t2\t3\n\nx\t1\t2\t3\n  7   8  9 1e999 and more\n2\t1\t2\tx");
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0].distance_ft, 1.5F);
  EXPECT_EQ(rows[0].speed_mph, 2.5F);
  EXPECT_EQ(rows[1].distance_ft, 8.0F);
  EXPECT_EQ(rows[1].fraction, std::numeric_limits<float>::infinity());
}

TEST(ElapsedTimeData, DefaultTableRises) {
  const auto table = default_elapsed_times();
  const double first = table.front().speed_mph;
  const double rise = table.back().speed_mph - first;
  for (std::size_t i = 0; i < table.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_NEAR(table[i].fraction, (table[i].speed_mph - first) / rise, 0.000501);
    if (i == 0) continue;
    // By a thousandth at least, so that the written texts rise, too.
    EXPECT_GT(table[i].distance_ft - table[i - 1].distance_ft, 0.0009f);
    EXPECT_GT(table[i].speed_mph - table[i - 1].speed_mph, 0.0009f);
  }
}

TEST(ElapsedTimeData, Sums) {
  EXPECT_EQ(table_sums(default_elapsed_times(),
                       [](TableDigest& d, const ElapsedTimeRow& r) {
                         d.real(r.distance_ft).real(r.speed_mph).real(r.fraction);
                       }),
            (TableSums{213, 0, 0x9d5c1704ae6fc9bb}));
  EXPECT_EQ(table_sums(strips(),
                       [](TableDigest& d, const StripRow& r) {
                         d.number(r.length).number(r.first).number(r.middle).number(r.last);
                         d.number(r.timed_from).number(r.timed_to);
                       }),
            (TableSums{4, 10970, 0x0c1d72722a80cc90}));
  EXPECT_EQ(table_sums(run_segments(),
                       [](TableDigest& d, const RunSegmentRow& r) {
                         d.number(r.target_ft).number(r.divisor).flag(r.predicted);
                       }),
            (TableSums{7, 26020, 0x9f754680105477a8}));
  EXPECT_EQ(table_sums(mode_segments(),
                       [](TableDigest& d, const ModeSegmentRow& r) {
                         d.number(r.mode).number(r.target_ft).flag(r.predicted);
                       }),
            (TableSums{18, 10845, 0x9783f3b0be671eca}));
}

}  // namespace
}  // namespace traguardo
