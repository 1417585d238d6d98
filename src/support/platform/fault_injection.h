// For tests alone: a disk that fills up at a chosen byte, on every platform. A sparse file system never fails by itself
// where a real one would.
#pragma once

#include "support/bytes.h"

namespace traguardo::platform {

// From now on the files of this process grow by so many bytes in all; what would go beyond fails as on a full disk.
void let_disk_take(u64 bytes);
void let_disk_take_anything();

}  // namespace traguardo::platform
