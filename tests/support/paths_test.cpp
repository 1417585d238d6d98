// SPDX-License-Identifier: MIT
// A backslash separates folders where the system says so, and is a character of a name elsewhere.
#include <gtest/gtest.h>

#include "helpers/temp_folder.h"
#include "support/exe_path.h"
#include "support/platform/platform.h"

namespace traguardo {
namespace {

TEST(Paths, AreTheirBytesWhereABackslashSeparatesNothing) {
  if (platform::is_separator(L'\\')) return;
  EXPECT_EQ(platform::folder_of(L"/a\\b/c\\d.wmp"), L"/a\\b/");
  const std::wstring absolute = platform::absolute_path(L"\\x.csv");
  EXPECT_TRUE(absolute.starts_with(L"/") && absolute.ends_with(L"/\\x.csv"));
  EXPECT_EQ(CExePathName(L"/a\\b/host", false).GetCartellaSlashW(), L"/a\\b/");
  // The other way round: behind a folder, such a name means one in that folder.
  EXPECT_EQ(platform::path_in_folder(L"/a", L"\\b"), L"/a/b");
  EXPECT_EQ(platform::path_in_folder(L"/a", L"\\\\b"), L"/a/\\b");
}

TEST(Paths, TheExecutablesFolderIsWhereTheEnvironmentSays) {
  const test::TempFolder folder;
  const test::EnvironmentVariable home("TRAGUARDO_HOME", folder.path().string());
  const CExePathName executable(false);
  EXPECT_TRUE(std::filesystem::equivalent(executable.GetCartellaW(), folder.path()));
  EXPECT_TRUE(executable.GetNomeExeW().starts_with(L"test_support"));
}

}  // namespace
}  // namespace traguardo
