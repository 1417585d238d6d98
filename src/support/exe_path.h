// SPDX-License-Identifier: MIT
// Where the executable of the process lies, in every spelling that the system uses.
#pragma once

#include <memory>
#include <string>

namespace traguardo {

// All with '/' between folders, as wide text and as 8-bit text.
class IExePathName {
 public:
  virtual ~IExePathName() = default;
  virtual const std::wstring& GetPercorsoW() const = 0;
  virtual const std::string& GetPercorsoA() const = 0;
  virtual const std::wstring& GetNomeExeW() const = 0;
  virtual const std::string& GetNomeExeA() const = 0;
  // The folder, without the trailing slash.
  virtual const std::wstring& GetCartellaW() const = 0;
  virtual const std::string& GetCartellaA() const = 0;
  // The folder, with the trailing slash.
  virtual const std::wstring& GetCartellaSlashW() const = 0;
  virtual const std::string& GetCartellaSlashA() const = 0;
};

class CExePathName : public IExePathName {
 public:
  // lower_case: all eight texts in lower case. Where the path can't be had they stay empty, with a line in the log.
  explicit CExePathName(bool lower_case);
  // The same for a path given by the caller, as the system spells it.
  CExePathName(std::wstring path, bool lower_case);

  const std::wstring& GetPercorsoW() const override { return path_w_; }
  const std::string& GetPercorsoA() const override { return path_a_; }
  const std::wstring& GetNomeExeW() const override { return name_w_; }
  const std::string& GetNomeExeA() const override { return name_a_; }
  const std::wstring& GetCartellaW() const override { return folder_w_; }
  const std::string& GetCartellaA() const override { return folder_a_; }
  const std::wstring& GetCartellaSlashW() const override { return folder_slash_w_; }
  const std::string& GetCartellaSlashA() const override { return folder_slash_a_; }

 private:
  void zepGetDir(std::wstring path);

  std::wstring path_w_, name_w_, folder_w_, folder_slash_w_;
  std::string path_a_, name_a_, folder_a_, folder_slash_a_;
};

// Null if the memory can't be had.
std::unique_ptr<IExePathName> CreaExePathName(bool lower_case);

}  // namespace traguardo
