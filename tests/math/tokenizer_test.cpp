// SPDX-License-Identifier: MIT
#include "math/tokenizer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <tuple>

#include "math/math_parser.h"

namespace traguardo {
namespace {

class FormulaText : public testing::Test {
 protected:
  CTokenizer tokenizer_{254, "+-*/^(),. ", "_#", "+-*/^(),"};
  CMathParser parser_{tokenizer_};
  i32 code_ = -1;
  u16 position_ = 9999;
  u16 length_ = 9999;

  void SetUp() override {
    tokenizer_.AddSymbol(kTokenChannel, "Speed #1", 0);
    tokenizer_.AddSymbol(kTokenChannel, " Linear Acc. ", 1);
  }
  bool tokenize(std::string_view text) { return tokenizer_.Tokenize(text, &code_, &position_, &length_); }
  bool compile(std::string_view text) { return tokenize(text) && parser_.Compile(&code_, &position_); }
};

struct FailingText {
  const char* text;
  i32 code;
  u16 position;
};

TEST_F(FormulaText, WhatIsWrongAndWhereItStands) {
  const FailingText cases[] = {
      // Characters: the position is one of the text.
      {"1\t+2", 100, 1},
      {"Speed #1;2", 100, 8},
      {".", 100, 0},
      {"1+.", 100, 2},
      // Names: the position is a token from here on.
      {"1e5", 102, 1},
      {"2*Speed", 102, 2},
      {"sqrt 2", 102, 0},
      {"sqrt()+foo", 102, 4},
      // Brackets: the end token's index.
      {"(1", 103, 2},
      {"1)", 103, 2},
      // Parameter counts: the function's index.
      {"sqrt()", 105, 0},
      {"time(1)", 105, 0},
      {"max((1,2))", 105, 0},
      {"1+max(1,sqrt())", 105, 6},
      {"max)1(", 105, 0},
      // Syntax.
      {"", 110, 0},
      {"sin", 106, 1},
      {"(1 2)", 107, 2},
      {"max((1,2),3)", 107, 4},
      {"2*-3", 108, 2},
      {")1(", 108, 0},
      {"1+", 108, 2},
      {"1---1", 108, 3},
      {"max(1,)", 108, 4},
      {"1,2)(", 0, 0},  // A complete expression stands before the comma.
      {"max(1(2),3)", 109, 3},
  };
  for (const FailingText& c : cases) {
    SCOPED_TRACE(testing::Message() << '"' << c.text << '"');
    if (c.code == 0) {
      EXPECT_TRUE(compile(c.text));
      continue;
    }
    EXPECT_FALSE(compile(c.text));
    EXPECT_EQ(code_, c.code);
    EXPECT_EQ(position_, c.position);
  }
}

TEST_F(FormulaText, NumbersGoToASingleFloatAtOnce) {
  const std::pair<std::string, float> cases[] = {
      {"1.2.3", 1.2F},
      {"7.", 7.0F},
      // Halfway between two floats, and a hair above: by way of a double the hair is lost and the tie goes to even.
      {"1.00000005960464477539062500000", 1.0F},
      {"1.00000005960464477539062500001", 1.00000012F},
      {std::string(60, '9'), INFINITY},
      {std::string(60, '0') + ".5", 0.5F},
  };
  for (const auto& [text, value] : cases) {
    SCOPED_TRACE(text);
    ASSERT_TRUE(tokenize(text));
    EXPECT_EQ(tokenizer_.GetToken(0, true)->value, value);
  }
}

TEST_F(FormulaText, ConstantsHideSymbolsAndSymbolsHideFunctions) {
  const auto first_code = [this] {
    EXPECT_TRUE(tokenize("sin"));
    return tokenizer_.GetToken(0, true)->code;
  };
  EXPECT_EQ(first_code(), 68);
  tokenizer_.AddSymbol(kTokenMathChannel, "sin", 7);
  EXPECT_EQ(first_code(), 52);
  EXPECT_EQ(tokenizer_.GetToken(0, true)->symbol, 7);
  tokenizer_.AddConstant("other", 1.0F);
  tokenizer_.AddConstant("sin", 2.0F);
  EXPECT_EQ(first_code(), 49);
  EXPECT_EQ(tokenizer_.GetToken(0, true)->symbol, 1);
  tokenizer_.ClearConstants();
  tokenizer_.ClearSymbols();
  EXPECT_EQ(first_code(), 68);
}

TEST_F(FormulaText, NamesAreCutAndTrimmedAndEndAtAnOperator) {
  tokenizer_.AddSymbol(kTokenChannel, "a name of more than 32 characters", 2);
  tokenizer_.AddSymbol(kTokenChannel, "In/Out", 3);
  EXPECT_TRUE(tokenize("a name of more than 32 character"));
  EXPECT_FALSE(tokenize("a name of more than 32 characters"));
  EXPECT_FALSE(tokenize("In/Out"));
  EXPECT_EQ(position_, 0);
}

TEST_F(FormulaText, LongTextsAreCutBeforeTheyAreRead) {
  std::string text;
  for (int i = 0; i < 150; ++i) text += "1+";
  EXPECT_FALSE(compile(text));  // 254 characters end in a plus.
  EXPECT_EQ(code_, 108);
  EXPECT_EQ(position_, 254);
  text[254] = '\t';
  EXPECT_FALSE(compile(text));
  EXPECT_EQ(code_, 108);
  EXPECT_TRUE(compile(std::string_view("1\0$", 3)));
}

}  // namespace
}  // namespace traguardo
