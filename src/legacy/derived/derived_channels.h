// SPDX-License-Identifier: MIT
// Channels without raw words: how a definition becomes a row of the channel table, and what computes its values.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "support/bytes.h"

namespace traguardo {

struct SMathChannel;
struct WmpSession;
struct WmpTables;

// Fills channel `index` by the computation kind of its record. False, and a channel of 0.0, if that can't be done. A
// kind that another one fills along with its own, as the boost limit fills its counters, keeps the values that it has.
bool compute_derived_channel(WmpSession& session, std::size_t index);

// Every enabled definition of the math manager becomes a channel.
void enter_math_channels(WmpSession& session);
// A new channel behind the last one; all derived channels are then computed, in table order. kind: 0 for a definition
// of the math manager. False, with nothing changed, if the table can't take it.
bool add_definition(WmpSession& session, const SMathChannel& definition, u16 kind);
// REQUIRES: a derived channel.
void update_channel(WmpSession& session, std::size_t index, const SMathChannel& definition);
// False for a logged channel. Formulas that name the channel keep their values until they are computed again.
bool delete_derived_channel(WmpSession& session, std::size_t index);
// The first derived channel of that name, case apart.
std::optional<std::size_t> find_derived_channel(const WmpTables& tables, std::string_view name);

}  // namespace traguardo
