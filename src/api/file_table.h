// SPDX-License-Identifier: MIT
// The table of open files. Any thread may ask it: the table has a lock for the moment of a look-up, each open file one
// of its own for as long as a call works on it, so that different files are opened and read side by side.
#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "api/gps_view.h"
#include "model/super_parser.h"

namespace traguardo {

// One open file.
struct SFileQLT {
  SFileQLT() = default;
  virtual ~SFileQLT() = default;
  // The samples of a raw and of a derived GPS channel within [from, to), microseconds: at most `count` of them are
  // written; gives their number.
  virtual int GetCampioniRawGiro(int channel, u64 from, u64 to, double* times, double* values, int count);
  virtual int GetCampioniGpsGiro(int channel, u64 from, u64 to, double* times, double* values, int count);

  std::string path;  // exactly as the host gave it
  // Declared in this order so that the reader goes before the view that borrows from it.
  std::unique_ptr<CSuperParser> view;
  std::unique_ptr<IRkParser> reader;
  // All laps of all sessions in the order of their numbers; an entry without a record is null.
  std::vector<const SRkLap*> laps;
  bool has_sessions = false;
  GpsView gps;  // what the GPS functions have worked out

  std::mutex lock;
  enum class State { kOpening, kOpen, kGone } state = State::kOpening;
};

// An open file in the hands of one call: nobody else touches it meanwhile.
class FileInUse {
 public:
  FileInUse() = default;
  explicit FileInUse(std::shared_ptr<SFileQLT> file) : file_(std::move(file)), held_(file_->lock) {}

  explicit operator bool() const { return file_ != nullptr; }
  SFileQLT* operator->() const { return file_.get(); }
  SFileQLT& operator*() const { return *file_; }

 private:
  std::shared_ptr<SFileQLT> file_;
  std::unique_lock<std::mutex> held_;  // given back before the file may go
};

// Empty for a handle that is not open.
FileInUse use_file(int handle);
// The same without a lock, for a host that has one thread; null for a handle that is not open.
SFileQLT* find_file(int handle);
// The lap under an index that counts through all laps of all sessions; a negative one selects the first.
enum class LapLookup { kFound, kNoSession, kNoLap };
LapLookup find_lap(const SFileQLT& file, int index, const SRkLap** lap);

// What the exported functions of the same names do; `progress` and `options`, those of CreaParser, may be null.
int open_file_with_progress(const char* path, IProgress* progress, const std::list<std::string>* options = nullptr);
int close_file(int handle);
int close_file(const char* path);

}  // namespace traguardo
