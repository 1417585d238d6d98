// SPDX-License-Identifier: MIT
#include "regulation/number_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

namespace traguardo {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(NumberText, ReadsFloatsAsTheCLibraryDoes) {
  const std::string zeros(400, '0');
  for (const std::string& text :
       {std::string("12.5"), std::string(" \t+3e2x"), std::string("-.5\r"), std::string("1,5"), std::string("1e"),
        std::string("0x1Ap1 "), std::string("inf"), std::string("-Infinity"), std::string("nan"), std::string("1e999"),
        std::string("1e99999999999999999999"), std::string("1e-999"), "1" + zeros, "0." + zeros + "1e500",
        "1" + zeros + "e-800", std::string(""), std::string("--5"), std::string("e5")}) {
    char* end = nullptr;
    const float wanted = std::strtof(text.c_str(), &end);
    std::size_t used = 99;
    const float found = float_from_text(text, &used);
    EXPECT_TRUE(found == wanted || (std::isnan(found) && std::isnan(wanted))) << text.substr(0, 40);
    EXPECT_EQ(used, static_cast<std::size_t>(end - text.c_str())) << text.substr(0, 40);
  }
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
