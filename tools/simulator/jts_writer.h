// SPDX-License-Identifier: MIT
// The GPS trace of an older logger, which lies in a file of its own beside the session.
#pragma once

#include <span>

#include "simulator/wire.h"

namespace traguardo::simulator {

// solutions: GpsReceiver::kRecordSize bytes each.
Bytes jts_file(std::span<const Byte> solutions);

}  // namespace traguardo::simulator
