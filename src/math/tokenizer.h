// SPDX-License-Identifier: MIT
// math/ holds the formula language by which legacy files compute channels from channels, and the numeric filters and
// fits. It includes support, units and model; the legacy reader and the regulation calculators call it, and the
// command-line tool tries formulas with it. A session is seen through the abstract view of session_view.h alone.
//
// A formula goes tokenizer.h (text to tokens, names resolved) -> math_parser.h (tokens to postfix code) ->
// interpreter.h (code to a value, once per sample); math_channel_manager.h drives the three over a session.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "math/math_tables.h"
#include "support/bytes.h"

namespace traguardo {

struct SMathToken {
  u8 code = 0;
  u16 start = 0;  // First and last character in the text.
  u16 end = 0;
  u16 symbol = 0;      // Of a constant: its place in the list. Of a symbol: the index that it was registered with.
  u16 parameters = 0;  // Of a function.
  float value = 0.0F;  // Of a number.
};

class CTokenizer {
 public:
  // Longer expressions are cut without an error. The parser's code buffer and the interpreter's stack hold every
  // formula of this length, so a longer one can't be asked for.
  static constexpr u16 kMaximumLength = 254;
  static constexpr std::size_t kMaximumNameLength = 32;

  // maximum_length: at most kMaximumLength. punctuation: what a text may hold beside letters, digits and characters
  // with the top bit set. name_characters: what may start and continue a name beside those. terminators: what ends a
  // name.
  CTokenizer(u16 maximum_length, std::string_view punctuation, std::string_view name_characters,
             std::string_view terminators);

  // Names are cut at kMaximumNameLength; blanks around them don't matter. A list takes 65,536 entries, the rest is
  // left.
  void AddConstant(std::string_view name, float value);
  void ClearConstants() { constants_.clear(); }
  void AddSymbol(u8 code, std::string_view name, u16 index);
  void ClearSymbols() {
    symbols_.clear();
    symbols_by_name_.clear();
  }
  float constant_value(u16 index) const { return index < constants_.size() ? constants_[index].value : 0.0F; }
  std::size_t constant_count() const { return constants_.size(); }
  std::string_view constant_name(u16 index) const { return index < constants_.size() ? constants_[index].name() : ""; }

  // The text up to its first NUL. On success the code is 0 and the position the number of tokens. On failure the
  // position is that of a character for kErrorUnknownSymbol and the index of a token for all others. The length is that
  // of the bad number, else 1.
  bool Tokenize(std::string_view text, i32* error, u16* position, u16* length);
  void ClearTokens() { tokens_.clear(); }
  // The check of the characters alone, on the text of the last Tokenize.
  bool CheckCharacters(i32* error, u16* position) const;
  // Null behind the end. `bounded` false is for callers that know the index to be good.
  const SMathToken* GetToken(std::size_t index, bool bounded) const;
  std::size_t TokenCount() const { return tokens_.size(); }
  // The text that the tokens were cut from.
  std::string_view expression() const { return expression_; }

  // The codes of names and characters, kTokenTableEnd for none.
  u8 FindConstant(std::string_view name, u16* index) const;
  u8 FindSymbol(std::string_view name, u16* index) const;
  u8 FindFunction(std::string_view name, u16* parameters) const;
  u8 SeparatorCode(char character) const;
  u8 OperatorCode(char character) const;
  // Rows of the tables, closing rows included; an index beyond gives a row with no content.
  SCharacterRow separator_row(std::size_t index) const;
  SCharacterRow operator_row(std::size_t index) const;
  SFunctionRow function_row(std::size_t index) const;
  bool GetFunctionDoc(u8 code, std::string* text) const;
  bool IsFunctionCode(u8 code) const { return code >= kTokenFirstFunction && code <= kTokenLastFunction; }

 private:
  // A name in place, so that registering a channel takes no memory of its own.
  struct Name {
    char text[kMaximumNameLength + 1] = {};
    u8 length = 0;
    u8 trimmed_start = 0;
    u8 trimmed_length = 0;

    explicit Name(std::string_view full);
    std::string_view trimmed() const { return {text + trimmed_start, trimmed_length}; }
  };
  struct Constant {
    Name stored;
    float value;
    std::string_view name() const { return {stored.text, stored.length}; }
  };
  struct Symbol {
    Name stored;
    u8 code;
    u16 index;
  };

  bool scan(i32* error, u16* position, u16* length);
  bool scan_number(std::size_t* cursor, i32* error, u16* position, u16* length);
  void scan_name(std::size_t* cursor);
  bool check_names_and_brackets(i32* error, u16* position) const;
  bool check_parameter_counts(i32* error, u16* position) const;
  bool parameters_fit(std::size_t function_index) const;
  char at(std::size_t position) const { return position < expression_.size() ? expression_[position] : '\0'; }
  bool starts_name(char character) const;
  void emit(u8 code, std::size_t start, std::size_t end) { emit(code, start, end, 0, 0, 0.0F); }
  void emit(u8 code, std::size_t start, std::size_t end, u16 symbol, u16 parameters, float value);

  u16 maximum_length_;
  std::string punctuation_;
  std::string name_characters_;
  std::string terminators_;
  std::vector<Constant> constants_;
  std::vector<Symbol> symbols_;
  std::unordered_map<std::string, std::size_t> symbols_by_name_;
  std::vector<SMathToken> tokens_;
  std::string expression_;
};

}  // namespace traguardo
