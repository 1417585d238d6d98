// SPDX-License-Identifier: MIT
// The writer of sessions, under short names.
#pragma once

#include "wire/dump.h"
#include "wire/jts.h"
#include "wire/qlt.h"
#include "wire/wmp.h"

namespace traguardo::test {

using namespace wire;
namespace wmp = wire::wmp;

inline Bytes chunk(std::uint32_t kind, std::uint32_t index, std::uint32_t number, bool last, const Bytes& data) {
  return Chunk{kind, index, number, last}.frame(data);
}

}  // namespace traguardo::test
