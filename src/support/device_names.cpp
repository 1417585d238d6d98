// SPDX-License-Identifier: MIT
#include "support/device_names.h"

#include <algorithm>

#include "support/event_log.h"

namespace traguardo {

std::wstring INomiDevices::GetNomeStrumento(u32 device_code) {
  const std::span<const DeviceNameRow> names = device_names();
  const auto row = std::lower_bound(names.begin(), names.end(), device_code,
                                    [](const DeviceNameRow& entry, u32 code) { return entry.code < code; });
  if (row != names.end() && row->code == device_code) return row->name;
  TRAGUARDO_LOG("INomiDevices::GetNomeStrumento", "%s [%d] ERROR = Unmanaged device code (%u) passed here!\n",
                device_code);
  return {};
}

}  // namespace traguardo
