// SPDX-License-Identifier: MIT
// The static tables of the formula language: what a character, a function name and an opcode stand for, and the
// messages.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "support/bytes.h"

namespace traguardo {

// Codes of tokens. The codes of separators, operators and functions stand in the tables below.
enum TokenCode : u8 {
  kTokenEnd = 1,
  kTokenComma = 2,
  kTokenOpen = 3,
  kTokenClose = 4,
  kTokenNumber = 17,
  kTokenAdd = 32,
  kTokenSubtract = 33,
  kTokenMultiply = 34,
  kTokenDivide = 35,
  kTokenPower = 36,
  kTokenConstant = 49,
  kTokenOtherSymbol = 50,  // Handled like 51; nothing registers it.
  kTokenChannel = 51,
  kTokenMathChannel = 52,
  kTokenFirstFunction = 64,
  kTokenLastFunction = 101,
  kTokenUnknown = 126,
  kTokenTableEnd = 127,  // closes the tables, and is what lookups give for "none"; never a token.
};

// Codes of instructions. A function's opcode is its token code less kFunctionToOpcode.
enum Opcode : u8 {
  kOpNumber = 0,
  kOpConstant = 1,
  kOpOtherSymbol = 2,
  kOpChannel = 3,
  kOpMathChannel = 4,
  kOpAdd = 5,
  kOpSubtract = 6,
  kOpMultiply = 7,
  kOpDivide = 8,
  kOpPower = 9,
  kOpSqrt = 10,
  kOpAbs = 20,
  kOpDeriv = 21,
  kOpInteg = 22,
  kOpLapInteg = 23,
  kOpMin = 24,
  kOpMed = 25,
  kOpMax = 26,
  kOpHighPass = 27,
  kOpLowPass = 28,
  kOpBandPass = 29,
  kOpBitAnd = 30,
  kOpBitOr = 31,
  kOpBitXor = 32,
  kOpTime = 34,
  kOpBikeAngle = 35,
  kOpGear = 36,
  kOpSlip = 37,
  kOpBikeAccLat = 38,
  kOpBikeCornRad = 39,
  kOpGreater = 40,
  kOpGreaterEqual = 41,
  kOpLower = 42,
  kOpLowerEqual = 43,
  kOpEqual = 44,
  kOpNotEqual = 45,
  kOpIf = 46,
  kOpAtan2 = 47,
};
inline constexpr u8 kFunctionToOpcode = 54;
inline constexpr std::size_t kOpcodeCount = 48;

// Bytes of an instruction, by opcode. Opcode 33 belongs to no function.
// clang-format off
inline constexpr std::array<u8, kOpcodeCount> kOpcodeLengths = {
    6,                             // 0: a number
    4, 4, 4, 4,                    // 1 to 4: a constant, a sample
    1, 1, 1, 1, 1,                 // 5 to 9: the operators
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2,  // 10 to 47: the functions
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2,
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2,
    2, 2, 2, 2, 2, 2, 2, 2,
};
// clang-format on

struct SCharacterRow {
  u8 code = 0;
  char character = 0;
};
struct SFunctionRow {
  u8 code = 0;
  u16 parameters = 0;
  std::string_view name;
  std::string_view text;  // What the parameters are, for a reader.
};
struct SMessageRow {
  i32 code = 0;
  std::string_view identifier;
  std::string_view text;  // padded with blanks to 62 characters.
};

inline constexpr std::string_view kMathMessageTable = "MSG_TABLE_MATH";

// Codes of that table. 111 is a code of the parser and has no row.
enum FormulaError : i32 {
  kFormulaOk = 0,
  kErrorUnknownSymbol = 100,
  kErrorMemory = 101,
  kErrorUnknownName = 102,
  kErrorBrackets = 103,
  kErrorParameterCount = 105,
  kErrorOpeningNeeded = 106,
  kErrorClosingNeeded = 107,
  kErrorElement = 108,
  kErrorCommaNeeded = 109,
  kErrorEmpty = 110,
  kErrorEndOfTokens = 111,
};

// Closing rows included.
std::span<const SCharacterRow> separator_rows();
std::span<const SCharacterRow> operator_rows();
std::span<const SFunctionRow> function_rows();
std::span<const SMessageRow> math_messages();

}  // namespace traguardo
