// SPDX-License-Identifier: MIT
// The limiter, and its report.
#include "regulation/limiter.h"

#include <gtest/gtest.h>

#include "regulation/calculator.h"
#include "regulation/fake_session.h"

namespace traguardo {
namespace {

using test::FakeSession;
using test::TempFolder;

class LimiterSession : public ::testing::Test {
 protected:
  LimiterSession() { session_.folder = test::folder_of(temp_); }

  bool compute(std::size_t output) {
    RegulationCalculator calculator(&session_, CalculationOptions{}, kCalibrationOff, L"");
    return calculator.compute_limiter(output);
  }
  // A session whose engine speed has the rate of the output, 50 ms, over one run.
  std::size_t add_engine(const std::vector<float>& engine) {
    session_.add("Engine", 50, engine);
    const std::size_t output = session_.add("FMI_Limiter", 50, std::vector<float>(engine.size(), 0.0F));
    session_.run_list = {{1, 0, static_cast<u32>(engine.size() * 50)}};
    return output;
  }
  void configure(const std::string& lines) { temp_.write("FMI-limiter.txt", "{\nid=70012\n" + lines + "}\n"); }
  std::string report() const { return test::report_of(temp_, "FMI-output.txt"); }

  TempFolder temp_;
  FakeSession session_;
};

TEST(SecondsOverLimit, CrossingsByHand) {
  const struct {
    const char* what;
    std::vector<float> engine;
    std::string counts;  // '1' for each sample that does
  } kCases[] = {
      {"the window must fill first", {8900, 9100, 9100, 9100, 9100}, "00011"},
      {"a big jump isn't believed", {7000, 9100, 9100, 9100, 9100}, "00000"},
      {"a jump of the threshold is a big one", {7001, 9001, 9001, 9001}, "0000"},
      {"the start counts as a rise from 0", {9100, 9100, 9100, 9100}, "0000"},
      {"equal to the limit is not above it", {8900, 9100, 9100, 9100, 9000, 9100, 9100, 9100}, "00010001"},
      {"a jump above the limit changes nothing", {8900, 9100, 9000.5F, 12000, 12000}, "00011"},
  };
  const LimiterSettings settings{9000.0F, 3, 2000.0F};
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.what);
    SecondsOverLimit total(settings, 1000);
    float before = 0.0F;
    for (std::size_t i = 0; i < row.engine.size(); ++i) {
      const float now = total.step(row.engine[i]);
      EXPECT_EQ(now, before + (row.counts[i] == '1' ? 1.0F : 0.0F)) << i;
      before = now;
    }
  }
}

TEST_F(LimiterSession, ReportsTheSecondsOfARun) {
  constexpr float kAbove = 1250500.0F;
  const std::size_t output =
      add_engine({0, 1249500, kAbove, kAbove, kAbove, kAbove, kAbove, kAbove, kAbove, 1250000, 0});
  configure("comment=x\nlimiter=1250000\r\nPTS_number=3\nthreshold=2000.5\n");
  ASSERT_TRUE(compute(output));
  EXPECT_EQ(report(), test::expected_file("limiter_seconds.txt"));
  const std::vector<float>& total = session_.samples(output);
  EXPECT_EQ(total[3], 0.0F);
  EXPECT_EQ(total[4], 0.05F);
  EXPECT_EQ(total[10], total[8]);
  // The report grows with each computation.
  ASSERT_TRUE(compute(output));
  EXPECT_EQ(report(), test::expected_file("limiter_seconds.txt") + test::expected_file("limiter_seconds.txt"));
}

TEST_F(LimiterSession, WritesTheSectionOfANewLogger) {
  // Above the limit in memory, below the one that is written.
  const std::size_t output = add_engine(std::vector<float>(40, 9500.0F));
  session_.run_list = {{1, 0, 1000}, {2, 1000, 1000}};
  temp_.write("FMI-limiter.txt", std::string());
  EXPECT_TRUE(compute(output));
  EXPECT_EQ(report(), test::expected_file("limiter_new_logger.txt"));
  EXPECT_EQ(test::report_of(temp_, "FMI-limiter.txt"), test::expected_file("limiter_written_section.txt"));

  // Behind an unfinished file the section is one of its own, too.
  temp_.write("FMI-limiter.txt", std::string("{\nid=1\nlimiter=5"));
  EXPECT_TRUE(compute(output));
  EXPECT_EQ(test::report_of(temp_, "FMI-limiter.txt"),
            "{\nid=1\nlimiter=5" + test::expected_file("limiter_written_section.txt"));
  EXPECT_EQ(report(), test::expected_file("limiter_new_logger.txt") + test::expected_file("limiter_new_logger.txt"));
}

TEST_F(LimiterSession, ReportsWhatItCannotCompute) {
  const std::size_t output = add_engine(std::vector<float>(40, 9500.0F));
  const std::vector<float> zeros(40, 0.0F);
  configure("pts_number=2\n");
  EXPECT_TRUE(compute(output));
  EXPECT_EQ(report(), test::expected_file("limiter_bad_window.txt"));
  for (const char* number : {"4294967295", "-1", "1000000000000"}) {
    std::filesystem::remove(temp_.path() / "FMI-output.txt");
    configure(std::string("pts_number=") + number + "\n");
    EXPECT_TRUE(compute(output));
    EXPECT_EQ(report(), test::expected_file("limiter_no_memory.txt"));
  }
  std::filesystem::remove(temp_.path() / "FMI-output.txt");
  configure("");
  session_.channels[0].name = "engine";
  EXPECT_FALSE(compute(output));
  EXPECT_EQ(report(), test::expected_file("limiter_no_engine.txt"));
  EXPECT_EQ(session_.samples(output), zeros);
}

TEST_F(LimiterSession, FilesThatCannotBeWrittenChangeNothingElse) {
  const std::size_t output = add_engine({8900, 9500, 9500, 9500, 9500, 9500});
  EXPECT_FALSE(compute(output)) << "without its file nothing happens";
  EXPECT_TRUE(temp_.names().empty());
  std::filesystem::create_directory(temp_.path() / "FMI-output.txt");
  configure("pts_number=3\n");
  EXPECT_TRUE(compute(output));
  EXPECT_EQ(session_.samples(output),
            (std::vector<float>{0.0F, 0.0F, 0.0F, 0.05F, 0.05F + 0.05F, 0.05F + 0.05F + 0.05F}));
}

TEST_F(LimiterSession, RunsStandAtTheirPlaceInTheOutput) {
  // An engine speed of another rate, and a run that begins between two samples of the output.
  session_.add("Engine", 100, {0, 8900, 9500, 9500, 9500, 9500});
  session_.add("Engine", 10, std::vector<float>(100, 20000.0F));
  const std::size_t output = session_.add("FMI_Limiter", 50, std::vector<float>(12, 0.0F));
  session_.run_list = {{3, 120, 4294967295U}};
  configure("pts_number=3\n");
  EXPECT_TRUE(compute(output));
  // Sample j of the run stands at 120 + 50 j: 9020 starts above the limit, so that nothing is ever armed.
  EXPECT_EQ(session_.samples(output), std::vector<float>(12, 0.0F));
  session_.run_list = {{3, 110, 4294967295U}};
  EXPECT_TRUE(compute(output));
  // 8960, 9260, then 9500: the third sample above the limit is the first that counts, at 2 + 3.
  EXPECT_EQ(session_.samples(output)[4], 0.0F);
  EXPECT_EQ(session_.samples(output)[5], 0.05F);
}

}  // namespace
}  // namespace traguardo
