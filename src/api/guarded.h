// SPDX-License-Identifier: MIT
// The wall around the exported functions: hosts are written in C and other languages, where an exception ends the
// process.
#pragma once

namespace traguardo {

// What `work` gives, or `failure` if it throws. Whatever failed, a later call may try again.
template <typename Result, typename Work>
Result guarded(Result failure, Work&& work) noexcept {
  try {
    return work();
  } catch (...) {
    return failure;
  }
}

}  // namespace traguardo
