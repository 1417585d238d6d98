// SPDX-License-Identifier: MIT
// CWMP, the given face of the reader of the .wmp family: opens one file, has it read, and computes everything. What it
// holds is a WmpSession.
#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "legacy/file/wmp_file.h"
#include "legacy/wmp_session.h"
#include "math/filters.h"

namespace traguardo {

struct CalculationOptions;

class CWMP : private CFileWMP, public CFiltri {
 public:
  // All borrowed, for the life of the object. folder: the application's, without a trailing slash. mode: of the
  // regulation calculators, -1 off.
  CWMP(std::wstring folder, const CalculationOptions* options, CSensori* sensors, CGestMathChan* math, i32 mode);

  // Reads the whole file and computes everything. tables_first: one run over the tables before the samples are read;
  // load_samples: false stops behind the header; raw_only: values are the raw words. False with a code of
  // wmp_messages() or wmp_dump_messages() in `error` if the file is refused; the tables are then empty. A file that
  // can't be read, and a session that the memory can't hold, throw.
  bool ApriFile(const std::wstring& path, bool tables_first, bool load_samples, bool raw_only, u32* error,
                const CalculationOptions* options, i32 mode);

  // The given names of the version readers. There is one walk for all versions, so that they are one operation: head,
  // tables and, unless tables_only, samples of a file of the version that ApriFile has seen. False with a code in
  // `error`.
  bool ReadWampFileVers320(const std::wstring& path, bool tables_only, u32* error);
  bool ReadWampFileVers400(const std::wstring& path, bool tables_only, u32* error);
  bool ReadWampFileVers500(const std::wstring& path, bool tables_only, u32* error);
  bool ReadWampFileVers550(const std::wstring& path, bool tables_only, u32* error);
  bool ReadWampFileVers600(const std::wstring& path, bool tables_only, u32* error);
  bool ReadWampFileVers700(const std::wstring& path, bool tables_only, u32* error);

  // Whether ApriFile leaves a copy of the file beside it, as it does unless it is told otherwise.
  void set_copies(bool copies) { copies_ = copies; }

  // As convert_channel().
  bool ConvertiCanale(std::size_t index, bool raw_only);
  // As assure_channel().
  void AssicuraPresenzaCanaleMatematico(u16 kind, bool compute_now);

  const WmpSession& session() const { return session_; }
  WmpSession& session() { return session_; }
  // The five pairs and one more of the header's text; fields that it lacks stay 0, all are held to their ranges.
  std::tm date_and_time() const;

 private:
  bool read_head(const std::wstring& path, u32* error);
  bool read_file(const std::wstring& path, bool tables_only, u32* error);
  bool refuse();
  void convert_everything(bool raw_only);
  void log_missing_samples() const;

  WmpSession session_;
  // Of the file, whatever version its tables take on.
  const WmpVersionRow* file_version_ = nullptr;
  const CalculationOptions* options_;
  i32 mode_;
  bool copies_ = true;
};

}  // namespace traguardo
