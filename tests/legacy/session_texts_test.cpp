#include "legacy/session_texts.h"

#include <gtest/gtest.h>

#include <array>

namespace traguardo::test {
namespace {

TEST(SessionDate, ReadsWhatTheLoggersWrote) {
  struct Case {
    const char* text;
    // Day, month 0 to 11, year since 1900, hour, minute, second.
    std::array<int, 6> wanted;
  };
  const Case cases[] = {
      {"05-11-03 14:22:09", {5, 10, 103, 14, 22, 9}},
      {"1-1-96 0:0:0", {1, 0, 96, 0, 0, 0}},
      {"31-12-89 23:59:59", {31, 11, 189, 23, 59, 59}},
      {"01-06-2004 10:00:00", {1, 5, 200, 10, 0, 0}},
      {"32-13-99 24:60:60", {31, 11, 99, 23, 59, 59}},
      {"0-0-0 0:0:0", {1, 0, 100, 0, 0, 0}},
      {"", {1, 0, 100, 0, 0, 0}},
      {"17", {17, 0, 100, 0, 0, 0}},
      {"17-4", {17, 3, 100, 0, 0, 0}},
      {"17-4-10", {17, 3, 110, 0, 0, 0}},
      {"17-4-10 9:30", {17, 3, 110, 9, 30, 0}},
      {"17/4/10 9:30:00", {17, 0, 100, 0, 0, 0}},
      {"  17- 4-10   9: 30:5 and more", {17, 3, 110, 9, 30, 5}},
      {"17-4-109:30:00", {17, 3, 109, 0, 0, 0}},
      {"17--4-10 1:2:3", {17, 0, 110, 1, 2, 3}},
      {"99999999999999999999-1-10 1:2:3", {31, 0, 110, 1, 2, 3}},
      {"garbage", {1, 0, 100, 0, 0, 0}},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.text);
    const std::tm when = parse_session_date(one.text);
    const std::array<int, 6> found = {when.tm_mday, when.tm_mon, when.tm_year, when.tm_hour, when.tm_min, when.tm_sec};
    EXPECT_EQ(found, one.wanted);
    EXPECT_EQ(when.tm_wday, 0);
    EXPECT_EQ(when.tm_yday, 0);
    EXPECT_EQ(when.tm_isdst, 0);
  }
}

TEST(VenueType, HasATextForEachKnownCode) {
  EXPECT_EQ(venue_type_text(0), "Generic testing");
  EXPECT_EQ(venue_type_text(21), "Test ");
  EXPECT_EQ(venue_type_text(41), "Dyno");
  EXPECT_EQ(venue_type_text(42), "");
  EXPECT_EQ(venue_type_text(0xFFFFFFFF), "");
}

TEST(RunTexts, DefaultsByPlace) {
  EXPECT_EQ(run_default_text(RunSection::kRun, 67, 12), "Run 12");
  EXPECT_EQ(run_default_text(RunSection::kRun, 107, 12), "Insert here your run comments.");
  EXPECT_EQ(run_default_text(RunSection::kTimeSlip, 107, 1), "Insert here your time slip comments.");
  EXPECT_EQ(run_default_text(RunSection::kRun, 66, 1), "");
}

}  // namespace
}  // namespace traguardo::test
