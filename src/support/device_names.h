// SPDX-License-Identifier: MIT
// Names of the loggers and expansions of the product family, by the device codes that files store.
#pragma once

#include <span>
#include <string>

#include "support/bytes.h"

namespace traguardo {

struct DeviceNameRow {
  u32 code;
  const wchar_t* name;
};

// Ascending by code. Code 0 is no device.
std::span<const DeviceNameRow> device_names();

class INomiDevices {
 public:
  virtual ~INomiDevices() = default;

  // Empty, with a line in the log, for a code without a row.
  static std::wstring GetNomeStrumento(u32 device_code);
};

}  // namespace traguardo
