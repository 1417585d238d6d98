// SPDX-License-Identifier: MIT
// Laps as people name them: by number, as a range, or the best.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "session.h"

namespace traguardo::tool {

// Empty for a text that a lap can be named by: "4", "3-7", "best".
std::string reason_not_a_lap_choice(const std::string& text);

// Those that such a text names. Throws Failure for laps that the session doesn't have.
std::vector<Lap> chosen_laps(const Session& session, const std::string& text);
// The same for a text that must stand for one lap; empty: the best one.
Lap chosen_lap(const Session& session, const std::string& text);
// Every lap. Throws Failure for a session without any.
std::vector<Lap> all_laps(const Session& session);

// The shortest of the laps that were driven to their end; nothing if there is none.
std::optional<Lap> best_lap(const std::vector<Lap>& laps);
// Without unfinished laps and those beyond 107 % of the best.
std::vector<Lap> clean_laps(const std::vector<Lap>& laps);

}  // namespace traguardo::tool
