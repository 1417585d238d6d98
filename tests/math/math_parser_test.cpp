// SPDX-License-Identifier: MIT
#include "math/math_parser.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "math/tokenizer.h"

namespace traguardo {
namespace {

class FormulaCode : public testing::Test {
 protected:
  CTokenizer tokenizer_{254, "+-*/^(),. ", "_#", "+-*/^(),"};
  CMathParser parser_{tokenizer_};

  void SetUp() override {
    tokenizer_.AddConstant("K", 4.0F);
    tokenizer_.AddSymbol(kTokenOtherSymbol, "o", 0x0102);
    tokenizer_.AddSymbol(kTokenChannel, "c", 5);
    tokenizer_.AddSymbol(kTokenMathChannel, "m", 6);
    for (const char* name : {"a", "b"}) tokenizer_.AddSymbol(kTokenChannel, name, static_cast<u16>(name[0]));
  }
  void compile(const std::string& text) {
    i32 code = 0;
    u16 position = 0;
    u16 length = 0;
    ASSERT_TRUE(tokenizer_.Tokenize(text, &code, &position, &length)) << text << ' ' << code << ' ' << position;
    ASSERT_TRUE(parser_.Compile(&code, &position)) << text << ' ' << code << ' ' << position;
  }
  // One word per instruction: a, b and numbers by themselves, operators and functions by opcode.
  std::string postfix(const std::string& text) {
    compile(text);
    std::string words;
    parser_.Rewind();
    while (parser_.HasMore()) {
      const Instruction instruction = parser_.Next();
      if (!words.empty()) words += ' ';
      if (instruction.opcode() == kOpNumber) {
        words += std::to_string(static_cast<int>(instruction.number()));
      } else if (instruction.opcode() == kOpChannel) {
        words += static_cast<char>(instruction.index());
      } else {
        words += '#' + std::to_string(instruction.opcode());
      }
    }
    EXPECT_EQ(parser_.Next().bytes, nullptr);
    return words;
  }
};

TEST_F(FormulaCode, BytesOfEveryKindOfInstruction) {
  compile("max(K,o)+c*m-0.5");
  const std::vector<u8> expected = {
      1,  1, 0, 0,           // K
      2,  1, 2, 1,           // o
      26, 2,                 // max
      3,  1, 5, 0,           // c
      4,  1, 6, 0,           // m
      7,  5,                 // multiply, add
      0,  1, 0, 0, 0, 0x3F,  // 0.5
      6,                     // subtract
  };
  EXPECT_EQ(std::vector<u8>(parser_.Code().begin(), parser_.Code().end()), expected);
}

TEST_F(FormulaCode, PrecedenceAndAssociation) {
  const std::pair<const char*, const char*> cases[] = {
      {"-a^2", "a 2 #9 -1 #7"}, {"a--b*2", "a b 2 #7 -1 #7 #6"}, {"1 2", "1"}, {"a,b", "a"}, {"sin(a))(", "a #14"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(postfix(text), expected) << text;
}

TEST_F(FormulaCode, PassesAndSmoothingFollowTheFirstFunctionOfTheirKind) {
  struct Case {
    const char* text;
    u16 passes;
    bool smooths;
  };
  const Case cases[] = {
      {"a+b", 1, false},
      {"bike_angle(a,b)", 1, true},
      {"slip(a,b)+gear(a,b,1,6)", 2, true},
      {"gear(a,b,1,6)+slip(a,b)", 3, true},
      {"slip(gear(a,b,1,6),b)", 3, true},  // Code of an argument comes first.
  };
  for (const Case& c : cases) {
    compile(c.text);
    EXPECT_EQ(parser_.PassCount(), c.passes) << c.text;
    EXPECT_EQ(parser_.NeedsSmoothing(), c.smooths) << c.text;
  }
}

// What takes most code per character is a minus before every one-digit number.
TEST_F(FormulaCode, TheDensestFormulaFitsTheBuffer) {
  std::string densest;
  while (densest.size() < 250) densest += "-1+";
  compile(densest + "-1");
  EXPECT_EQ(parser_.Code().size(), 85U * 13 + 84);  // Two numbers and a multiply per term, an add between two.
}

}  // namespace
}  // namespace traguardo
