// SPDX-License-Identifier: MIT
#include "units/fid.h"

namespace traguardo::fid {
namespace {

constexpr bool fits(u32 field, u32 pattern) {
  return pattern == 0 || field == pattern;
}

bool sides_fit(u32 word, u32 pattern) {
  if (is_numbered(pattern)) return is_numbered(word) && fits(number(word), number(pattern));
  return fits(left_right(word), left_right(pattern)) && fits(front_rear(word), front_rear(pattern)) &&
         fits(up_down(word), up_down(pattern));
}

}  // namespace

bool matches(u32 word, u32 pattern, bool strict) {
  if (pattern == 0) return false;
  if (!fits(quantity(word), quantity(pattern)) || !fits(object(word), object(pattern)) ||
      !fits(position(word), position(pattern))) {
    return false;
  }
  return !strict || (fits(in_out(word), in_out(pattern)) && sides_fit(word, pattern));
}

}  // namespace traguardo::fid
