// SPDX-License-Identifier: MIT
// The channels that the reader adds by itself, for the device that wrote the file and for the configuration files in
// the application folder.
#pragma once

#include "support/bytes.h"

namespace traguardo {

struct WmpSession;

// Makes sure that the table holds the channel of that kind; a missing input is a log line and no channel.
void assure_channel(WmpSession& session, u16 kind, bool compute_now);
// The channels of the device, then those of the configuration files in the application folder, then the exporter.
void assure_device_channels(WmpSession& session);

}  // namespace traguardo
