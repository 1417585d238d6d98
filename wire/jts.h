// SPDX-License-Identifier: MIT
// The GPS trace of an older logger, which lies in a file of its own beside the session.
#pragma once

#include <optional>
#include <span>

#include "wire/bytes.h"

namespace traguardo::wire {

// solutions: GpsSolution::kSize bytes each. stated: the number in the header, if it isn't theirs.
Bytes jts(std::span<const Byte> solutions, std::optional<std::uint32_t> stated = {});

// A trace of `records` good solutions, one a second, each a little further on.
Bytes plain_jts(std::uint32_t records, std::optional<std::uint32_t> stated = {});

}  // namespace traguardo::wire
