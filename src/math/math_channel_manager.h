// SPDX-License-Identifier: MIT
// Computes channels of a session from their formulas: owner of the definitions and of tokenizer, parser and
// interpreter. The legacy reader makes one for the parse of one file; the command-line tool makes one to try a formula.
// One thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "math/interpreter.h"
#include "math/math_channel.h"
#include "math/math_channel_store.h"
#include "math/math_parser.h"
#include "math/session_view.h"
#include "math/tokenizer.h"

namespace traguardo {

class IUserUnitOfMeasureManager;

// What became of a formula.
struct FormulaOutcome {
  i32 code = kFormulaOk;
  // As Tokenize or Compile gives it: the number of tokens on success, a character for kErrorUnknownSymbol, else a
  // token.
  u16 position = 0;
  // Where in the formula that is, in characters: for a mark under the text.
  std::size_t character = 0;
  // Of the message table, without its padding.
  std::string message;

  explicit operator bool() const { return code == kFormulaOk; }
};

class CGestMathChan {
 public:
  // Borrows the units for its life. folder: that of the executable, without a trailing slash.
  CGestMathChan(const IUserUnitOfMeasureManager& units, std::wstring folder);
  CGestMathChan(const CGestMathChan&) = delete;
  CGestMathChan& operator=(const CGestMathChan&) = delete;

  // Fills the channel's samples from its formula. False, with the samples as they were, if the formula can't be used.
  bool ComputeChannel(IMathSession& session, std::size_t channel);
  // The same with a formula of the caller's and a word on what is wrong with it.
  FormulaOutcome compute_formula(std::string_view formula, IMathSession& session, std::size_t target);

  // The names of a session's channels and, where a list is given, those of its definitions become symbols.
  void RegisterSymbols(const IMathSession& session, const std::vector<SMathChannel>* definitions);

  std::size_t MathChannelCount() const { return channels_.size(); }
  // Null behind the end.
  const SMathChannel* GetMathChannel(std::size_t index) const;
  // The definition file, if there is one in the form of CMathChanIni; else the list stays as it is.
  bool LoadMathChannels() { return store_.read_definitions(CMathChanIni::kFileName); }
  bool LoadMathChannels(std::wstring_view name) { return store_.read_definitions(name); }
  bool save_math_channels(std::wstring_view name) const { return store_.write_definitions(name); }
  std::wstring GetDefaultFilePath() const { return store_.GetDefaultFilePath(); }
  CMathChanIni& Store() { return store_; }

  // Any of the three may be null. A code without a row gives the last one.
  static void GetMessage(i32 code, std::string* text, std::string* identifier, std::string* table);

 private:
  // What a symbol of the code reads. An input is a piece of its channel at a time; the whole channel where the pieces
  // hang together: where it is smoothed, and where the channel to compute reads itself and must see what stood there.
  struct Input {
    std::size_t source = 0;
    bool in_session = false;
    bool is_whole = false;
    std::vector<float> values;
  };
  using Inputs = std::vector<Input>;

  void keep_symbols(const IMathSession& session);
  bool compile(std::string_view formula, i32* error, u16* position);
  std::size_t character_of(i32 error, u16 position) const;
  Inputs load_inputs(IMathSession& session, std::size_t target);
  void run_passes(IMathSession& session, std::size_t target);
  static void load_piece(IMathSession& session, std::size_t target, std::size_t first, Inputs& inputs,
                         std::span<InputCursor> cursors);
  void run_pass(u16 pass, IMathSession& session, std::size_t target, Inputs& inputs);

  std::vector<SMathChannel> channels_;
  CTokenizer tokenizer_;
  CMathParser parser_;
  CInterpreter interpreter_;
  CMathChanIni store_;
  // The names that the tokenizer holds; 0: none that the next formula could share.
  u64 registered_version_ = 0;
  std::size_t registered_definitions_ = 0;
};

}  // namespace traguardo
