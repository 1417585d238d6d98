// SPDX-License-Identifier: MIT
#include "support/app_folders.h"

#include <new>

namespace traguardo {

namespace {

// By the order of CAppFolders::Folder.
constexpr const wchar_t* kBelowRoot[] = {
    L"",
    L"zep/",
    L"oem/",
    L"service/",
    L"user/",
    L"user/ini/",
    L"user/et_prediction/",
    L"user/data/",
    L"language/",
    L"temp/",
    L"temp/receive/",
    L"temp/send/",
    L"temp/import/",
    L"temp/export/",
    L"temp/uploads/",
    L"web_updates/",
    L"tracks_updates/",
    L"docs_updates/",
    L"ecuprots_updates/",
    L"ini/",
    L"data/",
    L"user/tracks/",
    L"zep_tracks/",
    L"zep_tracks_to_be_deleted/",
    L"temp/track_logos/",
    L"user/data_for_db/",
};

constexpr const wchar_t* kDeviceLeaves[] = {
    L"/",    L"/tx/",        L"/tx/tracks/", L"/tx/cfgs/",   L"/tx/splash/",   L"/tx/settings/",
    L"/rx/", L"/rx/tracks/", L"/rx/cfgs/",   L"/rx/splash/", L"/rx/settings/",
};

const std::wstring kNoFolder;

}  // namespace

CAppFolders::CAppFolders(const std::wstring& root) {
  static_assert(sizeof kBelowRoot / sizeof kBelowRoot[0] == kFolders);
  static_assert(sizeof kDeviceLeaves / sizeof kDeviceLeaves[0] == kLeaves);
  for (std::size_t i = 0; i < kFolders; ++i) {
    relative_[i] = kBelowRoot[i];
    absolute_[i] = root + relative_[i];
  }
}

const std::wstring& CAppFolders::device_folder(std::size_t leaf, u32 device_code, const std::wstring* name) {
  DeviceFolders& known = name == nullptr ? by_code_[leaf] : by_code_and_name_[leaf];
  const auto [entry, is_new] = known.try_emplace(device_code);
  if (is_new) {
    entry->second = absolute_[kTemp] + std::to_wstring(device_code);
    if (name != nullptr) entry->second += L"-" + *name;
    entry->second += kDeviceLeaves[leaf];
  }
  return entry->second;
}

const std::wstring& CAppFolders::content_folder(std::size_t first_leaf, i32 content, u32 device_code,
                                                const std::wstring* name) {
  if (content < kContenutoNessuno || content > kContenutoSettings) return kNoFolder;
  return device_folder(first_leaf + static_cast<std::size_t>(content), device_code, name);
}

const std::wstring& CAppFolders::GetCartellaDevice(u32 device_code) {
  return device_folder(0, device_code, nullptr);
}

const std::wstring& CAppFolders::GetCartellaDevice(u32 device_code, const std::wstring& name) {
  return device_folder(0, device_code, &name);
}

const std::wstring& CAppFolders::GetCartellaTx(u32 device_code, i32 content) {
  return content_folder(kTxLeaf, content, device_code, nullptr);
}

const std::wstring& CAppFolders::GetCartellaTx(u32 device_code, const std::wstring& name, i32 content) {
  return content_folder(kTxLeaf, content, device_code, &name);
}

const std::wstring& CAppFolders::GetCartellaRx(u32 device_code, i32 content) {
  return content_folder(kRxLeaf, content, device_code, nullptr);
}

const std::wstring& CAppFolders::GetCartellaRx(u32 device_code, const std::wstring& name, i32 content) {
  return content_folder(kRxLeaf, content, device_code, &name);
}

std::unique_ptr<IAppFolders> CreaAppFolders(const std::wstring& root) {
  return std::unique_ptr<IAppFolders>(new (std::nothrow) CAppFolders(root));
}

}  // namespace traguardo
