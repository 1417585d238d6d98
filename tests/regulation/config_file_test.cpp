// SPDX-License-Identifier: MIT
#include "regulation/config_file.h"

#include <gtest/gtest.h>

#include "helpers/temp_folder.h"

namespace traguardo {
namespace {

std::string section_of(const std::string& text, const std::string& racer) {
  const ConfigFile file(text);
  const auto lines = file.racer_section(racer);
  return lines ? std::string(*lines) : "(none)";
}

TEST(ConfigFile, ChoosesTheSectionOfARacer) {
  const struct {
    const char* what;
    std::string text;
    const char* lines;
  } kCases[] = {
      {"plain", "{\nracer=Anna\nrpm=RPM\n}\n", "rpm=RPM\n"},
      {"case of the key", "{\nRaCeR=Anna\nx\n}", "x\n"},
      {"blank behind the name", "{\nracer=Anna \nx\n}", "(none)"},
      {"first of two with one name", "{\nracer=Anna\n1\n}\n{\nracer=Anna\n2\n}\n", "1\n"},
      {"unclosed at the end", "{\nracer=Anna\nx\ny", "x\ny"},
      {"unclosed before another", "{\nracer=Bea\nb\n{\nracer=Anna\na\n", "a\n"},
      {"only a key", "{\nracer=Anna", ""},
      {"empty", "{\nracer=Anna\n}\nx\n", ""},
      {"key not first", "{\n\nracer=Anna\nx\n}", "(none)"},
      {"blank behind the closing brace", "{\nracer=Anna\nx\n} \ny\n}", "x\n} \ny\n"},
      {"bytes", std::string("\0\xFF\n{\nracer=Anna\n\0x\n", 19), nullptr},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.what);
    const std::string expected = row.lines != nullptr ? row.lines : std::string("\0x\n", 3);
    EXPECT_EQ(section_of(row.text, "Anna"), expected);
  }
}

TEST(ConfigFile, AFileWithoutSectionsServesEveryRacer) {
  const ConfigFile plain("rpm=RPM\nracer=Bea\n");
  EXPECT_FALSE(plain.has_sections());
  EXPECT_EQ(plain.racer_lines("Anna"), "rpm=RPM\nracer=Bea\n");
  const ConfigFile sections("rpm=RPM\n{\n}\n");
  EXPECT_TRUE(sections.has_sections());
  EXPECT_FALSE(sections.racer_lines("Anna").has_value());
}

TEST(ConfigFile, KeysStandAtTheStartOfALineInAnyCase) {
  EXPECT_EQ(value_of("RpM= Engine Speed ", "rpm="), " Engine Speed ");
  EXPECT_EQ(value_of("rpm=", "rpm="), "");
  EXPECT_FALSE(value_of(" rpm=RPM", "rpm=").has_value());
  EXPECT_FALSE(value_of("rpm", "rpm=").has_value());
  EXPECT_FALSE(value_of("rpm =RPM", "rpm=").has_value());
}

TEST(ConfigFile, CarriageReturns) {
  std::string_view line;
  // A carriage return belongs to a line end only in front of a line feed.
  LineWalk returns("a\r\r\nb\r");
  ASSERT_TRUE(returns.next(&line));
  EXPECT_EQ(line, "a\r");
  ASSERT_TRUE(returns.next(&line));
  EXPECT_EQ(line, "b\r");
}

}  // namespace
}  // namespace traguardo
