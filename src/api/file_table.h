// The table of open files, process-wide and without a lock: a host makes all calls from one thread, or one at a time.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "api/gps_view.h"
#include "model/super_parser.h"

namespace traguardo {

// One open file.
struct SFileQLT {
  SFileQLT() = default;
  SFileQLT(SFileQLT&&) = default;
  SFileQLT& operator=(SFileQLT&&) = default;
  virtual ~SFileQLT() = default;
  // The samples of a raw and of a derived GPS channel within [from, to), microseconds: at most `count` of them are
  // written; gives their number.
  virtual int GetCampioniRawGiro(int channel, u64 from, u64 to, double* times, double* values, int count);
  virtual int GetCampioniGpsGiro(int channel, u64 from, u64 to, double* times, double* values, int count);

  std::string path;  // exactly as the host gave it
  // Declared in this order so that the reader goes before the view that borrows from it.
  std::unique_ptr<CSuperParser> view;
  std::unique_ptr<IRkParser> reader;
  GpsView gps;  // what the GPS functions have worked out
};

std::map<i32, SFileQLT>& open_files();
// Null for a handle that is not open.
SFileQLT* find_file(int handle);
// The lap under an index that counts through all laps of all sessions; a negative one selects the first.
enum class LapLookup { kFound, kNoSession, kNoLap };
LapLookup find_lap(const SFileQLT& file, int index, const SRkLap** lap);

// What the exported functions of the same names do; `progress` may be null.
int open_file_with_progress(const char* path, IProgress* progress);
int close_file(int handle);

}  // namespace traguardo
