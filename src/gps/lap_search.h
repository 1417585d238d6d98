// SPDX-License-Identifier: MIT
// The samples of a lap within a sequence of times: two searches that start at a hint.
//
// `Times` is a sequence by index: size() and time_at(index), both u64. They go by single steps, so that a sequence that
// doesn't ascend has a defined result and costs at most its length. A sequence that can say so by ascends() is searched
// by halves instead, with the same result.
#pragma once

#include <algorithm>

#include "support/bytes.h"

namespace traguardo {

namespace detail {

template <typename Times>
bool known_to_ascend(const Times& times) {
  if constexpr (requires { times.ascends(); }) {
    return times.ascends();
  } else {
    return false;
  }
}

template <typename Times>
u64 first_not_below(const Times& times, u64 t) {
  u64 low = 0;
  u64 high = times.size();
  while (low < high) {
    const u64 middle = low + (high - low) / 2;
    if (times.time_at(middle) < t) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

// Where t would be if the times were even. The divisor is the grid's step in microseconds also for times in
// milliseconds: kept, the result of a search in times that don't ascend depends on where it starts.
template <typename Times>
u64 search_hint(const Times& times, u64 t, u64 gps_step) {
  const u64 first = times.time_at(0);
  return t < first ? 0 : std::min((t - first) / gps_step, times.size() - 1);
}

// From i down to 0 or up to the last index, until `met` holds.
template <typename Times, typename Condition>
u64 step_from(const Times& times, u64 t, u64 i, Condition met) {
  if (t < times.time_at(i)) {
    while (i > 0 && !met(i)) --i;
  } else {
    while (i < times.size() - 1 && !met(i)) ++i;
  }
  return i;
}

}  // namespace detail

// REQUIRES (both): times isn't empty; gps_step is not 0.

// The hint where its time is t; else the index i with time[i - 1] < t <= time[i], or the end at which a search stops.
template <typename Times>
u64 TrovaPrimo(const Times& times, u64 t, u64 gps_step) {
  const u64 hint = detail::search_hint(times, t, gps_step);
  if (times.time_at(hint) == t) return hint;
  if (detail::known_to_ascend(times)) return std::min(detail::first_not_below(times, t), times.size() - 1);
  return detail::step_from(times, t, hint,
                           [&times, t](u64 i) { return i > 0 && times.time_at(i - 1) < t && t <= times.time_at(i); });
}

// The hint where its time is t; else the index i with time[i] < t <= time[i + 1], or the end at which a search stops.
template <typename Times>
u64 TrovaUltimo(const Times& times, u64 t, u64 gps_step) {
  const u64 hint = detail::search_hint(times, t, gps_step);
  if (times.time_at(hint) == t) return hint;
  if (detail::known_to_ascend(times)) return std::max<u64>(detail::first_not_below(times, t), 1) - 1;
  return detail::step_from(times, t, hint, [&times, t](u64 i) {
    return i < times.size() - 1 && times.time_at(i) < t && t <= times.time_at(i + 1);
  });
}

struct LapSlice {
  u64 first = 0;
  u64 count = 0;
};

// The samples of [from, to) in the unit of `times`. The last one before `to` belongs to it only if the hint is a sample
// exactly at `to`: kept, hosts count on the number of samples.
template <typename Times>
LapSlice lap_slice(const Times& times, u64 from, u64 to, u64 gps_step) {
  if (times.size() == 0 || times.time_at(0) >= to || times.time_at(times.size() - 1) < from) return {};
  const u64 first = TrovaPrimo(times, from, gps_step);
  const u64 last = TrovaUltimo(times, to, gps_step);
  if (first >= last) return {};
  return {first, last - first};
}

}  // namespace traguardo
