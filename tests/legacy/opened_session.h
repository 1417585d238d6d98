// SPDX-License-Identifier: MIT
// A legacy session opened from bytes, with all that a CWMP borrows.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "helpers/temp_folder.h"
#include "helpers/wire.h"
#include "legacy/channel_conversion.h"
#include "legacy/derived/derived_channels.h"
#include "legacy/derived/reference_speed.h"
#include "legacy/file/table_repair.h"
#include "legacy/sensors/sensor_database.h"
#include "legacy/sensors/sensors.h"
#include "legacy/wmp.h"
#include "math/math_channel_manager.h"
#include "regulation/calculator.h"
#include "support/event_log.h"
#include "units/user_units_manager.h"

namespace traguardo::test {

inline constexpr u16 kBlockVersions[] = {600, 700};

enum class Load { kTablesOnly, kEverything };

class OpenedSession {
 public:
  explicit OpenedSession(const Bytes& bytes, Load load = Load::kEverything)
      : OpenedSession(bytes, "session.wmp", load) {}
  OpenedSession(const Bytes& bytes, const std::string& name, Load load) {
    folder_.write(name, bytes);
    open(name, load);
  }
  bool open(const std::string& name, Load load) {
    opened_ = reader_.ApriFile(folder_.wide(name), true, load == Load::kEverything, false, &error_, &options_, -1);
    return opened_;
  }

  bool opened() const { return opened_; }
  u32 error() const { return error_; }
  CWMP& reader() { return reader_; }
  WmpSession& session() { return reader_.session(); }
  const TempFolder& folder() const { return folder_; }

  std::vector<float> values(std::size_t index) {
    const std::span<float> found = session().store.values(index);
    return {found.begin(), found.end()};
  }

 private:
  TempFolder folder_;
  CDBSensori data_base_;
  CSensori sensors_{CUserUnitsOfMeasureMgr::GetInstance(), &data_base_};
  CalculationOptions options_;
  CGestMathChan math_{*CUserUnitsOfMeasureMgr::GetInstance(), folder_.path().wstring()};
  CWMP reader_{folder_.path().wstring(), &options_, &sensors_, &math_, -1};
  u32 error_ = 0;
  bool opened_ = false;
};

// A session that is expected to open.
class SoundSession : public OpenedSession {
 public:
  explicit SoundSession(const wmp::File& file, Load load = Load::kEverything) : OpenedSession(wmp::build(file), load) {
    EXPECT_TRUE(opened()) << error();
  }
};

// The log of the process, for the length of a test.
class LogFile {
 public:
  LogFile() { g_percorso_log = path_.c_str(); }
  ~LogFile() { g_percorso_log = nullptr; }
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  std::string text() const { return folder_.read_text("log"); }

 private:
  TempFolder folder_;
  std::wstring path_ = folder_.wide("log");
};

// The unit choices of the process, back to metric at the end of a test.
class ImperialUnits {
 public:
  ImperialUnits() { set(true); }
  ~ImperialUnits() { set(false); }
  ImperialUnits(const ImperialUnits&) = delete;
  ImperialUnits& operator=(const ImperialUnits&) = delete;

 private:
  static void set(bool imperial) {
    CUserUnitsOfMeasureMgr* units = CUserUnitsOfMeasureMgr::GetInstance();
    units->SetLengthSystem(imperial, nullptr);
    units->SetTemperatureSystem(imperial, nullptr);
    units->SetPressureSystem(imperial, nullptr);
  }
};

// A channel of plain words.
inline wmp::Channel plain_channel(const std::string& name, std::vector<u16> words, u16 rate = 5) {
  wmp::Channel channel;
  channel.name = name;
  channel.rate = rate;
  for (const u16 word : words) channel.values.push_back(static_cast<float>(word));
  channel.words = std::move(words);
  return channel;
}

// Two channels of 100 and 50 Hz over 100 ms.
inline wmp::File small_file(u16 version) {
  wmp::File file;
  file.version = version;
  file.duration_ms = 100;
  file.logged = {plain_channel("First", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 5),
                 plain_channel("Second", {11, 12, 13, 14, 15}, 4)};
  file.laps = {wmp::Lap{60}, wmp::Lap{40, 1, 2}};
  return file;
}

}  // namespace traguardo::test
