// SPDX-License-Identifier: MIT
#include "support/device_names.h"

#include <gtest/gtest.h>

#include <set>

#include "helpers/temp_folder.h"
#include "support/event_log.h"

namespace traguardo {
namespace {

TEST(DeviceNames, EveryCodeThatTheSystemTestsHasAName) {
  const std::set<u32> kCodes = {// Which derived channels a session gets.
                                48, 56, 59, 60, 18, 70, 317, 318,
                                // How a raw dump is laid out.
                                21, 33, 22, 23, 44, 24, 25, 41, 43, 46, 10001, 10002, 26, 30, 31, 32, 81, 82, 83, 9999,
                                27, 28, 29, 34, 35, 36, 37, 38, 42, 49, 50,
                                // The ends of the bands.
                                1, 71, 101, 112, 301, 401, 410, 610, 1052, 2002, 2104, 5000, 5007, 10103, 10201, 10301,
                                20001};
  EXPECT_EQ(device_names().size(), kCodes.size());
  for (const u32 code : kCodes) {
    const std::wstring name = INomiDevices::GetNomeStrumento(code);
    ASSERT_GE(name.size(), 2U) << code;
    // The code stands behind the kind of device.
    EXPECT_EQ(name.substr(name.rfind(L' ') + 1), std::to_wstring(code));
  }
  EXPECT_EQ(INomiDevices::GetNomeStrumento(48), L"Data logger 48");
}

TEST(DeviceNames, AnUnknownCodeIsALogLineAndNoName) {
  const test::TempFolder folder;
  const std::wstring path = folder.wide("names.log");
  g_percorso_log = path.c_str();
  for (const u32 code : {2U, 100U, 4294967295U}) EXPECT_EQ(INomiDevices::GetNomeStrumento(code), L"") << code;
  EXPECT_EQ(INomiDevices::GetNomeStrumento(48), L"Data logger 48");
  g_percorso_log = nullptr;

  const std::string log = folder.read("names.log");
  for (const char* code : {"(2)", "(100)", "(4294967295)"}) {
    EXPECT_NE(log.find(std::string("] ERROR = Unmanaged device code ") + code + " passed here!"), std::string::npos)
        << log;
  }
  EXPECT_EQ(log.rfind("INomiDevices::GetNomeStrumento [", 0), 0U) << log;
  EXPECT_EQ(log.find("(48)"), std::string::npos);
}

}  // namespace
}  // namespace traguardo
