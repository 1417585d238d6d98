// SPDX-License-Identifier: MIT
// Why a file could not be opened: what `open_file` tells in one number, in more words, for hosts that are built with
// the library's inside, as the command-line host is.
#pragma once

namespace traguardo {

enum class OpenFailure {
  kNone,
  kNoSuchFile,
  kNotReadable,  // no permission, no plain file, or the disk failed
  kUnknownKind,  // no reader for its ending
  kNoSession,    // read, but no session is in it
  kNoStore,      // no room or no place for what is kept while it is open
  kNoMemory,
};

// Of the last open_file of this thread; kNone after one that succeeded.
OpenFailure last_open_failure();
void set_last_open_failure(OpenFailure failure);

}  // namespace traguardo
