// SPDX-License-Identifier: MIT
// Sessions of older loggers: a .wmp file of any version, and the .jts file of its GPS trace beside it.
#pragma once

#include <string>

#include "simulator/circuit.h"
#include "simulator/simulator.h"

namespace traguardo::simulator {

// REQUIRES: the options that all kinds of session share are in their ranges. Throws tool::Failure where the rest asks
// for what the version can't hold, where `path` doesn't end in .wmp, or where a file can't be written.
SimulationSummary write_wmp_session(const SimulationOptions& options, const Circuit& circuit, const std::string& path);

}  // namespace traguardo::simulator
