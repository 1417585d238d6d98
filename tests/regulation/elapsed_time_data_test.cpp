// The default elapsed-time table and the tables beside it. The sums are worked out from the tables' sources.
#include "regulation/elapsed_time_data.h"

#include <gtest/gtest.h>

#include "helpers/table_sums.h"

namespace traguardo {
namespace {

using D = TableDigest;

// The given rows stand in a test of the written table; all others only have to lie on a rising curve through them.
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
                       [](D& d, const ElapsedTimeRow& r) { d.real(r.distance_ft).real(r.speed_mph).real(r.fraction); }),
            (TableSums{213, 0, 0x9d5c1704ae6fc9bb}));
  EXPECT_EQ(table_sums(strips(),
                       [](D& d, const StripRow& r) {
                         d.number(r.length).number(r.first).number(r.middle).number(r.last);
                         d.number(r.timed_from).number(r.timed_to);
                       }),
            (TableSums{4, 10970, 0x0c1d72722a80cc90}));
  EXPECT_EQ(table_sums(run_segments(),
                       [](D& d, const RunSegmentRow& r) { d.number(r.target_ft).number(r.divisor).flag(r.predicted); }),
            (TableSums{7, 26020, 0x9f754680105477a8}));
  EXPECT_EQ(table_sums(mode_segments(),
                       [](D& d, const ModeSegmentRow& r) { d.number(r.mode).number(r.target_ft).flag(r.predicted); }),
            (TableSums{18, 10845, 0x9783f3b0be671eca}));
}

}  // namespace
}  // namespace traguardo
