// SPDX-License-Identifier: MIT
#include "support/app_folders.h"

#include <gtest/gtest.h>

namespace traguardo {
namespace {

TEST(AppFolders, JoinsEveryFolderToItsRoot) {
  const CAppFolders folders(L"C:/nowhere/");
  const struct {
    const std::wstring& found;
    const wchar_t* expected;
  } kAbsolute[] = {
      {folders.GetCartellaRoot(), L"C:/nowhere/"},
      {folders.GetCartellaMaker(), L"C:/nowhere/zep/"},
      {folders.GetCartellaUploads(), L"C:/nowhere/temp/uploads/"},
      {folders.GetCartellaUserIni(), L"C:/nowhere/user/ini/"},
      {folders.GetCartellaEtPrediction(), L"C:/nowhere/user/et_prediction/"},
      {folders.GetCartellaUserData(), L"C:/nowhere/user/data/"},
      {folders.GetCartellaZepTracksToBeDeleted(), L"C:/nowhere/zep_tracks_to_be_deleted/"},
      {folders.GetCartellaDataForDb(), L"C:/nowhere/user/data_for_db/"},
      {folders.GetNomeUserIni(), L"user/ini/"},
      {folders.GetNomeEtPrediction(), L"user/et_prediction/"},
      {folders.GetNomeExport(), L"temp/export/"},
      {folders.GetNomeIni(), L"ini/"},
  };
  for (const auto& row : kAbsolute) EXPECT_EQ(row.found, row.expected);
}

TEST(AppFolders, MakesDeviceFoldersOfEveryForm) {
  CAppFolders folders(L"r/");
  EXPECT_EQ(folders.GetCartellaDevice(48), L"r/temp/48/");
  EXPECT_EQ(folders.GetCartellaDevice(48, L"Red"), L"r/temp/48-Red/");
  EXPECT_EQ(folders.GetCartellaDevice(4294967295U), L"r/temp/4294967295/");
  const struct {
    i32 content;
    const wchar_t* leaf;
  } kContents[] = {{kContenutoNessuno, L""},
                   {kContenutoTracks, L"tracks/"},
                   {kContenutoCfgs, L"cfgs/"},
                   {kContenutoSplash, L"splash/"},
                   {kContenutoSettings, L"settings/"}};
  for (const auto& row : kContents) {
    const std::wstring leaf = row.leaf;
    EXPECT_EQ(folders.GetCartellaTx(48, row.content), L"r/temp/48/tx/" + leaf);
    EXPECT_EQ(folders.GetCartellaTx(48, L"Red", row.content), L"r/temp/48-Red/tx/" + leaf);
    EXPECT_EQ(folders.GetCartellaRx(48, row.content), L"r/temp/48/rx/" + leaf);
    EXPECT_EQ(folders.GetCartellaRx(48, L"Red", row.content), L"r/temp/48-Red/rx/" + leaf);
  }
  for (const i32 unknown : {-1, 5}) {
    EXPECT_EQ(folders.GetCartellaTx(48, unknown), L"");
    EXPECT_EQ(folders.GetCartellaRx(48, L"Red", unknown), L"");
  }
}

TEST(AppFolders, KeepsTheFirstTextOfADevice) {
  CAppFolders folders(L"r/");
  const std::wstring& first = folders.GetCartellaDevice(7, L"Old");
  EXPECT_EQ(&folders.GetCartellaDevice(7, L"New"), &first);
  EXPECT_EQ(first, L"r/temp/7-Old/");
  // Each form has a memory of its own.
  EXPECT_EQ(folders.GetCartellaTx(7, L"New", kContenutoNessuno), L"r/temp/7-New/tx/");
  EXPECT_EQ(folders.GetCartellaDevice(7), L"r/temp/7/");
}

}  // namespace
}  // namespace traguardo
