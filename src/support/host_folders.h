// SPDX-License-Identifier: MIT
// Folders that a host has a say in. What the environment names comes first, for every host; a host that is built with
// the library's inside chooses others without touching the environment, which isn't safe beside other threads.
#pragma once

#include <string>

namespace traguardo {

// Where configuration files lie: TRAGUARDO_HOME, else what choose_home_folder said; empty for the executable's folder.
std::wstring home_folder();
// For the whole process.
void choose_home_folder(std::wstring folder);

// Where samples go while a session is open: TRAGUARDO_STORE_FOLDER, else what this thread opens with; empty for the
// session's folder.
std::wstring store_folder();

// The store folder of what this thread opens, for as long as it lives.
class StoreFolderOfThread {
 public:
  explicit StoreFolderOfThread(std::wstring folder);
  StoreFolderOfThread(const StoreFolderOfThread&) = delete;
  StoreFolderOfThread& operator=(const StoreFolderOfThread&) = delete;
  ~StoreFolderOfThread();

 private:
  std::wstring before_;
};

}  // namespace traguardo
