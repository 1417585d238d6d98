// SPDX-License-Identifier: MIT
// For tests alone: a disk that fills up at a chosen byte, and operations on files that fail once, on every platform. A
// sparse file system never fails by itself where a real one would.
#pragma once

#include "support/bytes.h"

namespace traguardo::platform {

// From now on the files of this process grow by so many bytes in all; what would go beyond fails as on a full disk.
void let_disk_take(u64 bytes);
void let_disk_take_anything();

// Locks are the business of systems where an open file doesn't lock itself.
enum class Operation { kOpen, kSize, kRead, kWrite, kResize, kRename, kDelete, kLock };
inline constexpr int kOperations = 8;

// The operation of that kind that comes after `successes` others fails, as if its device had; it alone.
void let_fail_after(Operation operation, u64 successes);
// Ends that. True if the operation came to fail.
bool let_nothing_fail();

}  // namespace traguardo::platform
