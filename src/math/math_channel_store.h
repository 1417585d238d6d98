// SPDX-License-Identifier: MIT
// The definition files of math channels: where they lie, and how they are read and written. A file is text, made of
// lines of a key, a blank and a value, each definition from a line "channel" to the next:
//
//   traguardo math channels 1        first line of every file; others are left alone
//   constant NAME VALUE              a constant for all formulas
//   channel NAME                     starts a definition; what isn't given has the value of a new one
//   unit, formula, description       texts
//   enabled, update, filter, class, frequency, decimals    whole numbers
//   flags, function                  two whole numbers
//   range                            display minimum and maximum
//
// Lines with an unknown key, empty lines and values that can't be read change nothing.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "math/math_channel.h"

namespace traguardo {

class CTokenizer;

class CMathChanIni {
 public:
  static constexpr std::wstring_view kFolderName = L"\\MATHCHANNELS";
  static constexpr std::wstring_view kFileName = L"ZEP_TWMATH_2.ZMC";
  static constexpr std::wstring_view kDefaultFileName = L"ZEP_TWMATH_DEF.ZMC";

  // Borrows list and tokenizer for its life. folder: without a trailing slash.
  CMathChanIni(std::vector<SMathChannel>& channels, CTokenizer& tokenizer, std::wstring folder);

  // Where a file lies, as the platform spells it.
  static std::wstring disk_path(const std::wstring& folder, std::wstring_view name);
  // Folder, kFolderName, a backslash and the name; with an empty name it stops behind kFolderName.
  std::wstring get_file_path(std::wstring_view name) const;
  std::wstring GetDefaultFilePath() const { return get_file_path(kDefaultFileName); }

  // The standard set: twelve definitions and nineteen constants, in place of what is there.
  void SetDefaults();

  // Definitions and constants of a file of kFolderName, in place of what is there. Without a file of that form nothing
  // changes, and that is no failure.
  bool read_definitions(std::wstring_view name);
  // False if the file can't be written.
  bool write_definitions(std::wstring_view name) const;

 private:
  std::vector<SMathChannel>& channels_;
  CTokenizer& tokenizer_;
  std::wstring folder_;
};

}  // namespace traguardo
