// SPDX-License-Identifier: MIT
// Tokens to postfix code: recursive descent on three levels, one instruction of one to six bytes for every operand,
// operator and function.
#pragma once

#include <array>
#include <span>

#include "math/math_tables.h"
#include "support/bytes.h"

namespace traguardo {

class CTokenizer;
struct SMathToken;

// An instruction in the code: opcode first, then what its length leaves.
//   number    opcode, flag (1: a float), the value in 4 bytes
//   symbol    opcode, flag 1, index in 2 bytes
//   operator  opcode
//   function  opcode, parameter count
struct Instruction {
  const u8* bytes;

  u8 opcode() const { return bytes[0]; }
  bool holds_float() const { return bytes[1] != 0; }
  float number() const { return holds_float() ? load_f32(bytes + 2) : static_cast<float>(load_u32(bytes + 2)); }
  u16 index() const { return load_u16(bytes + 2); }
};

class CMathParser {
 public:
  static constexpr std::size_t kCodeCapacity = 2048;

  // Borrows the tokenizer for its life.
  explicit CMathParser(const CTokenizer& tokenizer) : tokenizer_(tokenizer) {}

  // Of the tokenizer's tokens. On success the code is 0 and the position the number of tokens; on failure the position
  // is the index of a token. Tokens behind a complete expression are not looked at.
  bool Compile(i32* error, u16* position);

  void Rewind() { cursor_ = 0; }
  bool HasMore() const { return cursor_ < length_; }
  // The instruction at the cursor, which moves behind it. Its `bytes` are null where that would pass the end, and at a
  // byte that is no opcode.
  Instruction Next() {
    const u8 opcode = cursor_ < length_ ? code_[cursor_] : u8{0xFF};
    if (opcode >= kOpcodeCount || kOpcodeLengths[opcode] > length_ - cursor_) return {nullptr};
    last_ = cursor_;
    cursor_ += kOpcodeLengths[opcode];
    return {code_.data() + last_};
  }
  // REQUIRES: Next() gave a symbol. Its index becomes this one.
  void set_index(u16 index) { store_u16(code_.data() + last_ + 2, index); }
  // How many passes over the samples the code asks for: 3 for a `gear`, 2 for a `slip`, whichever comes first; else 1.
  u16 PassCount() const;
  // Whether a function stands in the code that wants its inputs smoothed.
  bool NeedsSmoothing() const;
  std::span<const u8> Code() const { return {code_.data(), length_}; }

 private:
  bool parse_additive();
  bool parse_signed_term();
  bool parse_multiplicative();
  bool parse_power();
  bool parse_primary();
  bool parse_bracket();
  bool parse_function(const SMathToken& function);
  // The code of the token at the position, kNoToken behind the list.
  u8 current() const;
  bool expect(u8 code, i32 error);
  bool fail(i32 error);
  bool emit(std::span<const u8> bytes);
  bool emit_operator(u8 opcode) { return emit({&opcode, 1}); }
  bool emit_number(float value);
  bool emit_symbol(u8 opcode, u16 index);

  const CTokenizer& tokenizer_;
  std::size_t position_ = 0;
  std::size_t token_count_ = 0;
  i32 error_ = 0;
  std::array<u8, kCodeCapacity> code_{};
  std::size_t length_ = 0;
  std::size_t cursor_ = 0;
  std::size_t last_ = 0;  // Where the instruction of the last Next() stands.
};

}  // namespace traguardo
