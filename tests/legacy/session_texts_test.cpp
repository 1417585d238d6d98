// SPDX-License-Identifier: MIT
#include "legacy/texts/session_texts.h"

#include <gtest/gtest.h>

#include <array>
#include <tuple>
#include <utility>

namespace traguardo::test {
namespace {

TEST(SessionDate, ReadsWhatTheLoggersWrote) {
  // Day, month 0 to 11, year since 1900, hour, minute, second.
  const std::pair<const char*, std::array<int, 6>> cases[] = {
      {"05-11-03 14:22:09", {5, 10, 103, 14, 22, 9}},
      {"31-12-89 23:59:59", {31, 11, 189, 23, 59, 59}},
      {"01-06-2004 10:00:00", {1, 5, 200, 10, 0, 0}},
      {"32-13-99 24:60:60", {31, 11, 99, 23, 59, 59}},
      {"", {1, 0, 100, 0, 0, 0}},
      {"17-4-10 9:30", {17, 3, 110, 9, 30, 0}},
      {"17/4/10 9:30:00", {17, 0, 100, 0, 0, 0}},
      {"  17- 4-10   9: 30:5 and more", {17, 3, 110, 9, 30, 5}},
      {"17--4-10 1:2:3", {17, 0, 110, 1, 2, 3}},
      {"99999999999999999999-1-10 1:2:3", {31, 0, 110, 1, 2, 3}},
  };
  for (const auto& [text, wanted] : cases) {
    const std::tm when = parse_session_date(text);
    const std::array<int, 6> found = {when.tm_mday, when.tm_mon, when.tm_year, when.tm_hour, when.tm_min, when.tm_sec};
    EXPECT_EQ(found, wanted) << text;
    EXPECT_EQ(std::tuple(when.tm_wday, when.tm_yday, when.tm_isdst), std::tuple(0, 0, 0)) << text;
  }
}

TEST(VenueType, HasATextForEachKnownCode) {
  const std::pair<u32, const char*> cases[] = {{0, "Generic testing"}, {41, "Dyno"}, {42, ""}, {0xFFFFFFFF, ""}};
  for (const auto& [code, text] : cases) EXPECT_EQ(venue_type_text(code), text) << code;
}

}  // namespace
}  // namespace traguardo::test
