// SPDX-License-Identifier: MIT
// The channel exporter: chosen channels of a run, read at a fixed rate, as comma-separated text beside the session
// file. Configured by Exporter.txt in the session's working folder.
#pragma once

#include <string_view>

#include "regulation/session_view.h"
#include "support/bytes.h"

namespace traguardo {

inline constexpr const wchar_t* kExporterConfigurationName = L"\\Exporter.txt";
inline constexpr const wchar_t* kExportSuffix = L".export.csv";

// The grid of the export, from all "frq=" lines of the file, in sections or not: 20 ms without one. A line without a
// number, or with a rate whose period isn't at least 1 ms, changes nothing.
u32 export_period_ms(std::string_view configuration);

// Writes the file anew for this run. False if the racer has no entry or names no channel of the session; the file then
// holds a message. A file that can't be opened or written doesn't count as a failure, and none is left then.
bool export_run(const SessionView& session, const SessionRun& run);

}  // namespace traguardo
