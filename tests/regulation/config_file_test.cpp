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
      {"carriage returns", "{\r\nracer=Anna\r\nrpm=RPM\r\n}\r\n", "rpm=RPM\r\n"},
      {"case of the key", "{\nRaCeR=Anna\nx\n}", "x\n"},
      {"case of the name", "{\nracer=anna\nx\n}", "(none)"},
      {"blank behind the name", "{\nracer=Anna \nx\n}", "(none)"},
      {"second of two", "{\nracer=Bea\nb\n}\n{\nracer=Anna\na\n}\n", "a\n"},
      {"first of two with one name", "{\nracer=Anna\n1\n}\n{\nracer=Anna\n2\n}\n", "1\n"},
      {"unclosed at the end", "{\nracer=Anna\nx\ny", "x\ny"},
      {"unclosed before another", "{\nracer=Bea\nb\n{\nracer=Anna\na\n", "a\n"},
      {"unclosed, followed by another", "{\nracer=Anna\na\n{\nracer=Bea\nb\n", "a\n"},
      {"only a key", "{\nracer=Anna", ""},
      {"only a key and its line end", "{\nracer=Anna\n", ""},
      {"empty", "{\nracer=Anna\n}\nx\n", ""},
      {"key not first", "{\n\nracer=Anna\nx\n}", "(none)"},
      {"key outside", "racer=Anna\nx\n", "(none)"},
      {"blank behind the brace", "{ \nracer=Anna\nx\n}", "(none)"},
      {"blank behind the closing brace", "{\nracer=Anna\nx\n} \ny\n}", "x\n} \ny\n"},
      {"no line end at all", "{racer=Anna}", "(none)"},
      {"nothing", "", "(none)"},
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

TEST(ConfigFile, LinesOfAnyLengthAndNumber) {
  const std::string long_line(10000000, 'x');
  LineWalk one(long_line);
  std::string_view line;
  ASSERT_TRUE(one.next(&line));
  EXPECT_EQ(line.size(), long_line.size());
  EXPECT_FALSE(one.next(&line));

  const std::string feeds(1000000, '\n');
  LineWalk many(feeds);
  std::size_t count = 0;
  while (many.next(&line)) count += line.empty() ? 1 : 0;
  EXPECT_EQ(count, feeds.size());
  // A carriage return belongs to a line end only in front of a line feed.
  LineWalk returns("a\r\r\nb\r");
  ASSERT_TRUE(returns.next(&line));
  EXPECT_EQ(line, "a\r");
  ASSERT_TRUE(returns.next(&line));
  EXPECT_EQ(line, "b\r");
}

TEST(ConfigFile, AMissingFileIsNoFile) {
  const test::TempFolder folder;
  EXPECT_FALSE(ConfigFile::read(folder.wide("none.txt")).has_value());
  folder.write("some.txt", std::string("ch=A\n"));
  const auto file = ConfigFile::read(folder.wide("some.txt"));
  ASSERT_TRUE(file.has_value());
  EXPECT_EQ(file->text(), "ch=A\n");
}

}  // namespace
}  // namespace traguardo
