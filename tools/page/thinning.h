// SPDX-License-Identifier: MIT
// What to do with channels that don't fit into a page whole: they keep minima and maxima of stretches.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "encoding.h"

namespace traguardo::tool {

// Encodes them. With a bound, those that take most get ever longer stretches, until all of them take no more.
void encode_within(std::vector<EncodedChannel>* channels, std::optional<std::size_t> most_bytes);

}  // namespace traguardo::tool
