// SPDX-License-Identifier: MIT
// Which channel says how fast the car is, and so how far it came.
#pragma once

#include <string>

#include "session.h"

namespace traguardo::tool {

// The first channel that the reader knows for a speed, else the first one in a unit of speed, else the receiver's, each
// in the unit of the file; or the one that somebody named. Throws Failure where there is none: `option` names another.
Channel speed_channel(Session& session, const std::string& wanted, const char* option);

// Metres per second in a unit of speed; 0 for other units.
double metres_per_second(const std::string& unit);

}  // namespace traguardo::tool
