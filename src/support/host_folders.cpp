// SPDX-License-Identifier: MIT
#include "support/host_folders.h"

#include <mutex>
#include <utility>

#include "support/platform/platform.h"

namespace traguardo {

namespace {

struct HomeFolder {
  std::mutex lock;
  std::wstring folder;
};

// Never destroyed: other threads may still open files while the process ends.
HomeFolder& chosen_home() {
  static HomeFolder* const made_once = new HomeFolder;
  return *made_once;
}

thread_local std::wstring t_store_folder;

}  // namespace

std::wstring home_folder() {
  std::wstring named = platform::path_from_environment("TRAGUARDO_HOME");
  if (!named.empty()) return named;
  const std::scoped_lock held(chosen_home().lock);
  return chosen_home().folder;
}

void choose_home_folder(std::wstring folder) {
  const std::scoped_lock held(chosen_home().lock);
  chosen_home().folder = std::move(folder);
}

std::wstring store_folder() {
  std::wstring named = platform::path_from_environment("TRAGUARDO_STORE_FOLDER");
  return named.empty() ? t_store_folder : named;
}

StoreFolderOfThread::StoreFolderOfThread(std::wstring folder) : before_(std::move(t_store_folder)) {
  t_store_folder = std::move(folder);
}

StoreFolderOfThread::~StoreFolderOfThread() {
  t_store_folder = std::move(before_);
}

}  // namespace traguardo
