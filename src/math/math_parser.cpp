// SPDX-License-Identifier: MIT
#include "math/math_parser.h"

#include <algorithm>

#include "math/tokenizer.h"

namespace traguardo {
namespace {

constexpr u8 kFlagFloat = 1;
constexpr u8 kNoToken = 0;

}  // namespace

bool CMathParser::Compile(i32* error, u16* position) {
  token_count_ = tokenizer_.TokenCount();
  position_ = 0;
  length_ = 0;
  cursor_ = 0;
  error_ = kFormulaOk;
  // The end alone is an empty formula.
  const bool compiled = token_count_ < 2 ? fail(kErrorEmpty) : parse_additive();
  *error = error_;
  *position = static_cast<u16>(compiled ? token_count_ : position_);
  return compiled;
}

u16 CMathParser::PassCount() const {
  for (std::size_t at = 0; at < length_; at += kOpcodeLengths[code_[at]]) {
    if (code_[at] >= kOpcodeCount) break;
    if (code_[at] == kOpGear) return 3;
    if (code_[at] == kOpSlip) return 2;
  }
  return 1;
}

bool CMathParser::NeedsSmoothing() const {
  for (std::size_t at = 0; at < length_; at += kOpcodeLengths[code_[at]]) {
    if (code_[at] >= kOpcodeCount) break;
    if (code_[at] >= kOpBikeAngle && code_[at] <= kOpBikeCornRad) return true;
  }
  return false;
}

// Terms, added and subtracted from left to right.
bool CMathParser::parse_additive() {
  if (!parse_signed_term()) return false;
  while (current() == kTokenAdd || current() == kTokenSubtract) {
    const u8 opcode = current() == kTokenAdd ? kOpAdd : kOpSubtract;
    ++position_;
    if (!parse_signed_term() || !emit_operator(opcode)) return false;
  }
  return true;
}

// The minus counts for the whole term behind it: -a^2 is -(a^2), and -a*b is -(a*b).
bool CMathParser::parse_signed_term() {
  const bool negative = current() == kTokenSubtract;
  if (negative) ++position_;
  if (!parse_multiplicative()) return false;
  return !negative || (emit_number(-1.0F) && emit_operator(kOpMultiply));
}

bool CMathParser::parse_multiplicative() {
  if (!parse_power()) return false;
  while (current() == kTokenMultiply || current() == kTokenDivide) {
    const u8 opcode = current() == kTokenMultiply ? kOpMultiply : kOpDivide;
    ++position_;
    if (!parse_power() || !emit_operator(opcode)) return false;
  }
  return true;
}

// From left to right like the others: 2^3^2 is (2^3)^2.
bool CMathParser::parse_power() {
  if (!parse_primary()) return false;
  while (current() == kTokenPower) {
    ++position_;
    if (!parse_primary() || !emit_operator(kOpPower)) return false;
  }
  return true;
}

bool CMathParser::parse_primary() {
  const SMathToken* token = tokenizer_.GetToken(position_, true);
  if (token == nullptr) return fail(kErrorEndOfTokens);
  switch (token->code) {
    case kTokenOpen:
      return parse_bracket();
    case kTokenNumber:
      ++position_;
      return emit_number(token->value);
    case kTokenConstant:
    case kTokenOtherSymbol:
    case kTokenChannel:
    case kTokenMathChannel:
      ++position_;
      return emit_symbol(static_cast<u8>(token->code - kTokenConstant + kOpConstant), token->symbol);
    default:
      return tokenizer_.IsFunctionCode(token->code) ? parse_function(*token) : fail(kErrorElement);
  }
}

bool CMathParser::parse_bracket() {
  ++position_;
  return parse_additive() && expect(kTokenClose, kErrorClosingNeeded);
}

bool CMathParser::parse_function(const SMathToken& function) {
  ++position_;
  if (!expect(kTokenOpen, kErrorOpeningNeeded)) return false;
  for (u16 i = 0; i < function.parameters; ++i) {
    if (i > 0 && !expect(kTokenComma, kErrorCommaNeeded)) return false;
    if (!parse_additive()) return false;
  }
  if (!expect(kTokenClose, kErrorClosingNeeded)) return false;
  const u8 call[] = {static_cast<u8>(function.code - kFunctionToOpcode), static_cast<u8>(function.parameters)};
  return emit(call);
}

u8 CMathParser::current() const {
  const SMathToken* token = tokenizer_.GetToken(position_, true);
  return token == nullptr ? kNoToken : token->code;
}

bool CMathParser::expect(u8 code, i32 error) {
  if (current() == kNoToken) return fail(kErrorEndOfTokens);
  if (current() != code) return fail(error);
  ++position_;
  return true;
}

bool CMathParser::fail(i32 error) {
  error_ = error;
  return false;
}

// The longest code that a formula of the tokenizer's length can give is about 1,200 bytes; the test guards the buffer.
bool CMathParser::emit(std::span<const u8> bytes) {
  if (bytes.size() > code_.size() - length_) return fail(kErrorMemory);
  std::ranges::copy(bytes, code_.begin() + static_cast<std::ptrdiff_t>(length_));
  length_ += bytes.size();
  return true;
}

bool CMathParser::emit_number(float value) {
  u8 bytes[6] = {kOpNumber, kFlagFloat};
  store_f32(bytes + 2, value);
  return emit(bytes);
}

bool CMathParser::emit_symbol(u8 opcode, u16 index) {
  u8 bytes[4] = {opcode, kFlagFloat};
  store_u16(bytes + 2, index);
  return emit(bytes);
}

}  // namespace traguardo
