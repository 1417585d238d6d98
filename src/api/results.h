// SPDX-License-Identifier: MIT
// Result codes of the exported functions, where they are more than a count.
#pragma once

namespace traguardo {

// open_file
inline constexpr int kOpenUnreadable = 0;
inline constexpr int kOpenNoReader = -2;
inline constexpr int kOpenNoParser = -3;
inline constexpr int kOpenNoView = -4;

// close_file_n
inline constexpr int kCloseNotOpen = -2;

// Every other function: the handle is not open, or nothing stands behind it. What fails inside a call (a read, the
// memory) gives the latter, too.
inline constexpr int kNoHandle = -1;
inline constexpr int kNoData = -2;
inline constexpr int kNoChannel = -3;
inline constexpr int kNoTrace = -3;
inline constexpr int kGpsSamplesNoChannel = -4;

// The lap functions have codes of their own.
inline constexpr int kLapNoSession = 0;
inline constexpr int kLapNoLap = -1;
inline constexpr int kLapNoChannel = -2;
inline constexpr int kLapGpsNothing = 1;  // no such derived channel, or before anything was built
inline constexpr int kLapRawGpsEmpty = -3;

// What a call gives that was handed a null pointer for its output.
inline constexpr int kNothingWritten = 0;

}  // namespace traguardo
