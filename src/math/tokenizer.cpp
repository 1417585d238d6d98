// SPDX-License-Identifier: MIT
#include "math/tokenizer.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <new>

namespace traguardo {
namespace {

constexpr std::size_t kMaximumEntries = 65536;

// Of the C locale, whatever the host has set.
bool is_letter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
bool is_space(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
bool has_top_bit(char c) {
  return (static_cast<u8>(c) & 0x80) != 0;
}

std::string_view trim(std::string_view text) {
  while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_space(text.back())) text.remove_suffix(1);
  return text;
}

u8 character_code(std::span<const SCharacterRow> rows, char character) {
  for (const SCharacterRow& row : rows) {
    if (row.code == kTokenTableEnd) break;
    if (row.character == character) return row.code;
  }
  return kTokenTableEnd;
}

template <typename Row>
Row row_at(std::span<const Row> rows, std::size_t index) {
  return index < rows.size() ? rows[index] : Row{};
}

// Digits and points to a float at once, not by way of a double; what stands behind a second point is ignored. Without
// an exponent a number too large has a digit other than 0 before its point, and a number too small has none.
bool read_number(std::string_view text, float* value) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), *value, std::chars_format::fixed);
  if (result.ec == std::errc::invalid_argument) return false;
  if (result.ec == std::errc::result_out_of_range) {
    const std::string_view whole = text.substr(0, text.find('.'));
    const bool large = whole.find_first_not_of('0') != std::string_view::npos;
    *value = large ? std::numeric_limits<float>::infinity() : 0.0F;
  }
  return true;
}

bool fail(i32 code, std::size_t place, i32* error, u16* position) {
  *error = code;
  *position = static_cast<u16>(place);
  return false;
}

}  // namespace

CTokenizer::Name::Name(std::string_view full) {
  full = full.substr(0, std::min(full.find('\0'), kMaximumNameLength));
  std::ranges::copy(full, text);
  length = static_cast<u8>(full.size());
  const std::string_view bare = trim(full);
  trimmed_start = bare.empty() ? u8{0} : static_cast<u8>(bare.data() - full.data());
  trimmed_length = static_cast<u8>(bare.size());
}

CTokenizer::CTokenizer(u16 maximum_length, std::string_view punctuation, std::string_view name_characters,
                       std::string_view terminators)
    : maximum_length_(std::min(maximum_length, kMaximumLength)),
      punctuation_(punctuation),
      name_characters_(name_characters),
      terminators_(terminators) {}

void CTokenizer::AddConstant(std::string_view name, float value) {
  if (constants_.size() < kMaximumEntries) constants_.push_back({Name(name), value});
}

void CTokenizer::AddSymbol(u8 code, std::string_view name, u16 index) {
  if (symbols_.size() >= 2 * kMaximumEntries) return;
  symbols_.push_back({Name(name), code, index});
  // Of equal names the first counts.
  symbols_by_name_.emplace(symbols_.back().stored.trimmed(), symbols_.size() - 1);
}

bool CTokenizer::Tokenize(std::string_view text, i32* error, u16* position, u16* length) {
  tokens_.clear();
  expression_.assign(text.substr(0, std::min<std::size_t>(text.find('\0'), maximum_length_)));
  *length = 1;
  if (!CheckCharacters(error, position) || !scan(error, position, length)) return false;
  if (!check_names_and_brackets(error, position) || !check_parameter_counts(error, position)) return false;
  *error = kFormulaOk;
  *position = static_cast<u16>(tokens_.size());
  return true;
}

bool CTokenizer::CheckCharacters(i32* error, u16* position) const {
  for (std::size_t i = 0; i < expression_.size(); ++i) {
    const char c = expression_[i];
    if (is_letter(c) || is_digit(c) || has_top_bit(c) || punctuation_.find(c) != std::string::npos ||
        name_characters_.find(c) != std::string::npos) {
      continue;
    }
    return fail(kErrorUnknownSymbol, i, error, position);
  }
  return true;
}

bool CTokenizer::scan(i32* error, u16* position, u16* length) {
  for (std::size_t cursor = 0;;) {
    const char c = at(cursor);
    u8 code = SeparatorCode(c);
    if (code == kTokenTableEnd) code = OperatorCode(c);
    if (code != kTokenTableEnd) {
      emit(code, cursor, cursor);
      if (code == kTokenEnd) return true;
      ++cursor;
    } else if (is_digit(c) || c == '.') {
      if (!scan_number(&cursor, error, position, length)) return false;
    } else if (starts_name(c)) {
      scan_name(&cursor);
    } else {
      ++cursor;
    }
  }
}

bool CTokenizer::scan_number(std::size_t* cursor, i32* error, u16* position, u16* length) {
  const std::size_t start = *cursor;
  while (is_digit(at(*cursor)) || at(*cursor) == '.') ++*cursor;
  const std::string_view text = std::string_view(expression_).substr(start, *cursor - start);
  float value = 0.0F;
  if (!read_number(text, &value)) {
    *length = static_cast<u16>(text.size());
    return fail(kErrorUnknownSymbol, start, error, position);
  }
  emit(kTokenNumber, start, *cursor - 1, 0, 0, value);
  return true;
}

// Blanks and points don't end a name: "Linear Acc." is one.
void CTokenizer::scan_name(std::size_t* cursor) {
  const std::size_t start = *cursor;
  do {
    ++*cursor;
  } while (at(*cursor) != '\0' && terminators_.find(at(*cursor)) == std::string::npos);
  const std::string_view name = trim(std::string_view(expression_).substr(start, *cursor - start));
  const std::size_t end = start + std::max<std::size_t>(name.size(), 1) - 1;

  u16 index = 0;
  u16 parameters = 0;
  u8 code = FindConstant(name, &index);
  if (code == kTokenTableEnd) code = FindSymbol(name, &index);
  if (code == kTokenTableEnd) code = FindFunction(name, &parameters);
  if (code == kTokenTableEnd) code = kTokenUnknown;
  emit(code, start, end, index, parameters, 0.0F);
}

bool CTokenizer::check_names_and_brackets(i32* error, u16* position) const {
  std::size_t open = 0;
  std::size_t closed = 0;
  for (std::size_t i = 0; i < tokens_.size(); ++i) {
    const u8 code = tokens_[i].code;
    if (code == kTokenUnknown) return fail(kErrorUnknownName, i, error, position);
    if (code == kTokenOpen) ++open;
    if (code == kTokenClose) ++closed;
  }
  return open == closed || fail(kErrorBrackets, tokens_.size() - 1, error, position);
}

bool CTokenizer::check_parameter_counts(i32* error, u16* position) const {
  for (std::size_t i = 0; i < tokens_.size(); ++i) {
    if (IsFunctionCode(tokens_[i].code) && !parameters_fit(i)) return fail(kErrorParameterCount, i, error, position);
  }
  return true;
}

// A count of commas at depth 1 and of all other tokens, whatever they are: commas at other depths and the end token
// too.
bool CTokenizer::parameters_fit(std::size_t function_index) const {
  i32 depth = 0;
  i32 commas = 0;
  i32 others = 0;
  for (std::size_t i = function_index + 1; i < tokens_.size(); ++i) {
    const u8 code = tokens_[i].code;
    if (code == kTokenOpen) {
      ++depth;
    } else if (code == kTokenClose) {
      --depth;
    } else if (code == kTokenComma && depth == 1) {
      ++commas;
    } else {
      ++others;
    }
    if (depth == 0) break;
  }
  const u16 parameters = tokens_[function_index].parameters;
  if (parameters == 0) return commas == 0 && others == 0;
  return commas == parameters - 1 && others >= 1;
}

bool CTokenizer::starts_name(char character) const {
  return is_letter(character) || has_top_bit(character) || name_characters_.find(character) != std::string::npos;
}

void CTokenizer::emit(u8 code, std::size_t start, std::size_t end, u16 symbol, u16 parameters, float value) {
  tokens_.push_back({code, static_cast<u16>(start), static_cast<u16>(end), symbol, parameters, value});
}

const SMathToken* CTokenizer::GetToken(std::size_t index, bool bounded) const {
  (void)bounded;  // An index behind the end never yields a token here; reading behind the list serves nobody.
  return index < tokens_.size() ? &tokens_[index] : nullptr;
}

u8 CTokenizer::FindConstant(std::string_view name, u16* index) const {
  name = trim(name);
  for (std::size_t i = 0; i < constants_.size(); ++i) {
    if (constants_[i].stored.trimmed() != name) continue;
    *index = static_cast<u16>(i);
    return kTokenConstant;
  }
  return kTokenTableEnd;
}

u8 CTokenizer::FindSymbol(std::string_view name, u16* index) const {
  name = trim(name);
  const auto found = symbols_by_name_.find(std::string(name));
  if (found == symbols_by_name_.end()) return kTokenTableEnd;
  const Symbol& symbol = symbols_[found->second];
  *index = symbol.index;
  return symbol.code;
}

u8 CTokenizer::FindFunction(std::string_view name, u16* parameters) const {
  name = trim(name);
  for (const SFunctionRow& row : function_rows()) {
    if (row.code == kTokenTableEnd) break;
    if (row.name != name) continue;
    *parameters = row.parameters;
    return row.code;
  }
  return kTokenTableEnd;
}

u8 CTokenizer::SeparatorCode(char character) const {
  return character_code(separator_rows(), character);
}
u8 CTokenizer::OperatorCode(char character) const {
  return character_code(operator_rows(), character);
}
SCharacterRow CTokenizer::separator_row(std::size_t index) const {
  return row_at(separator_rows(), index);
}
SCharacterRow CTokenizer::operator_row(std::size_t index) const {
  return row_at(operator_rows(), index);
}
SFunctionRow CTokenizer::function_row(std::size_t index) const {
  return row_at(function_rows(), index);
}

bool CTokenizer::GetFunctionDoc(u8 code, std::string* text) const {
  for (const SFunctionRow& row : function_rows()) {
    if (row.code != code || row.code == kTokenTableEnd) continue;
    *text = row.text;
    return true;
  }
  return false;
}

}  // namespace traguardo
