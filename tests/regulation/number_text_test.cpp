#include "regulation/number_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace traguardo {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(NumberText, ReadsFloatsAsTheCLibraryDoes) {
  const std::string zeros(400, '0');
  const struct {
    std::string text;
    float value;
    std::size_t used;
  } kCases[] = {
      {"12.5", 12.5F, 4},
      {" \t+3e2x", 300.0F, 6},
      {"-.5\r", -0.5F, 3},
      {"1,5", 1.0F, 1},
      {"1e", 1.0F, 1},
      {"0x1Ap1 ", 52.0F, 6},
      {"inf", kInfinity, 3},
      {"1e999", kInfinity, 5},
      {"1e99999999999999999999", kInfinity, 22},
      {"1e-999", 0.0F, 6},
      {"1" + zeros, kInfinity, 401},
      {"0." + zeros + "1e500", kInfinity, 407},
      {"1" + zeros + "e-800", 0.0F, 406},
      {"", 0.0F, 0},
      {"--5", 0.0F, 0},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.text.substr(0, 40));
    std::size_t used = 99;
    EXPECT_EQ(float_from_text(row.text, &used), row.value);
    EXPECT_EQ(used, row.used);
  }
  EXPECT_TRUE(std::isnan(float_from_text("nan")));
  EXPECT_TRUE(std::isnan(float_from_text(" -NAN")));
}

TEST(NumberText, ReadsWholeNumbersOf32Bits) {
  EXPECT_EQ(u32_from_text("4"), 4U);
  EXPECT_EQ(u32_from_text(" 12.9"), 12U);
  EXPECT_EQ(u32_from_text("+7x"), 7U);
  EXPECT_EQ(u32_from_text("-1"), 4294967295U);
  EXPECT_EQ(u32_from_text("4294967296"), 4294967295U);
  EXPECT_EQ(u32_from_text(std::string(1000, '9')), 4294967295U);
  EXPECT_EQ(u32_from_text("x4"), 0U);
  EXPECT_EQ(u32_from_text(""), 0U);
}

TEST(NumberText, PrintsSixSignificantDigits) {
  const struct {
    float value;
    const char* text;
  } kCases[] = {
      {9000.0F, "9000"},     {0.1F, "0.1"}, {1234567.0F, "1.23457e+06"}, {0.00001F, "1e-05"},  {-2.5F, "-2.5"},
      {100000.0F, "100000"}, {0.0F, "0"},   {kInfinity, "inf"},          {-kInfinity, "-inf"}, {333.33334F, "333.333"}};
  for (const auto& row : kCases) {
    std::string text;
    append_number(&text, row.value);
    EXPECT_EQ(text, row.text);
  }
  std::string text = "x";
  append_thousandths(&text, 58.75F);
  append_thousandths(&text, -std::numeric_limits<float>::max());
  EXPECT_EQ(text, "x58.750-340282346638528859811704183484516925440.000");
}

}  // namespace
}  // namespace traguardo
