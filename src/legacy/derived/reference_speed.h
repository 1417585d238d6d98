// SPDX-License-Identifier: MIT
// Which of a session's speeds the distances are made of.
#pragma once

#include "support/bytes.h"

namespace traguardo {

struct WmpSession;

// 'Y' the reference moves, 'd' one other candidate, 'D' several, 'G' the GPS speed was chosen, 'N' none. select: the
// candidate becomes the reference. Given operations: nothing calls the first two while a file is opened.
char find_reference_speed(WmpSession& session, bool select);
bool positions_are_accurate(const WmpSession& session);
// False, with the old reference in its place, for a channel that isn't a speed or doesn't move far enough.
bool set_reference_speed(WmpSession& session, i32 index);

}  // namespace traguardo
