// SPDX-License-Identifier: MIT
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
  EXPECT_NE(text.find("\n212\t661.963\t48.768\t1.000\n"), std::string::npos);
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
  EXPECT_EQ(table_text(rows), table_text(default_elapsed_times()));
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

TEST(ElapsedTimeData, Sums) {
  EXPECT_EQ(table_sums(default_elapsed_times(),
                       [](TableDigest& d, const ElapsedTimeRow& r) {
                         d.real(r.distance_ft).real(r.speed_mph).real(r.fraction);
                       }),
            (TableSums{213, 0, 0x9d5c1704ae6fc9bb}));
}

}  // namespace
}  // namespace traguardo
