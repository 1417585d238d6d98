// SPDX-License-Identifier: MIT
// Files that this process is writing and that nobody may find if it dies in between.
//
// A fixed registry holds their paths, without a lock and without memory of its own at the time of death, so that a
// signal handler can remove them. A process that was killed outright removes nothing: what it left lies under a name
// that only this system makes, and the next one that writes the same file finds it there.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace traguardo::platform {

// Keeps a path in the registry for as long as it lives. Make it before the file; end it when the file is whole under
// its own name, or gone. An empty folder can be entered too; what was entered later goes first. Where the registry is
// full or memory is short the path is not entered.
class UnfinishedFile {
 public:
  UnfinishedFile() = default;
  explicit UnfinishedFile(const std::wstring& path);
  UnfinishedFile(UnfinishedFile&& other) noexcept;
  UnfinishedFile& operator=(UnfinishedFile&& other) noexcept;
  ~UnfinishedFile();

  void end() noexcept;

 private:
  static constexpr int kNotEntered = -1;
  int place_ = kNotEntered;
};

// Removes all files of the registry that this process, and none that it was forked from, entered. Async-signal-safe.
void remove_all_unfinished() noexcept;

// For programs that own their process, never for a library: from now on a signal that ends the process (SIGHUP, SIGINT,
// SIGQUIT, SIGPIPE, SIGTERM; the console's events on Windows) removes what is unfinished first and ends it with status
// 128 + its number. Signals that were ignored stay so. A file that gets too long is a failed write.
void remove_unfinished_when_killed();

// A file on its way to its name: written beside its place, brought there when it is whole.
class PartFile {
 public:
  PartFile() = default;
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;
  // What was not brought to its place goes.
  ~PartFile();

  // Removes what dead processes left of this target, and begins a file of its own beside it. False on failure, with
  // last_error().
  bool begin(const std::wstring& target);
  // All or nothing, between begin() and finish(): false, with last_error(), if not every byte was taken. For files that
  // nothing goes to through stream().
  bool write(const void* bytes, std::size_t count);
  // Null before begin() and behind finish().
  std::FILE* stream() const { return stream_; }
  // Everything is on its way to the disk: false, with last_error(), if it isn't.
  bool finish();
  // Whether finish() was called and take_place() may be.
  bool is_finished() const { return stream_ == nullptr && !path_.empty(); }
  // Behind finish(): the file replaces the target in one step, with the permissions of a target that exists. False on
  // failure, with last_error().
  bool take_place();

 private:
  bool begin_as(const std::wstring& path);
  bool write_bytes(const void* bytes, std::size_t count);
  void give_up();

  std::wstring target_;
  std::wstring path_;
  std::string path_bytes_;  // the same as the host's bytes, where the system takes those: removing it needs no memory
  UnfinishedFile mark_;
  std::FILE* stream_ = nullptr;
  std::intptr_t life_ = -1;  // tells others, until the rename is done, that somebody is at work
};

// A folder that nobody else works in and that goes with this object, with all that is in it.
class WorkFolder {
 public:
  WorkFolder() = default;
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;
  ~WorkFolder();

  // Removes what dead processes left in `place`, and makes one there. False on failure, with last_error().
  bool begin(const std::wstring& place);
  const std::wstring& path() const { return path_; }
  // What will be made in it, as a path below it: an outer folder before what is in it.
  void expect(const std::wstring& name);

 private:
  bool begin_as(const std::wstring& path);
  // Where `path` is a folder of a process that died, it goes.
  static void remove_if_dead(const std::wstring& path);

  std::wstring path_;
  std::vector<UnfinishedFile> marks_;
  std::intptr_t life_ = -1;  // tells others that somebody is at work
};

}  // namespace traguardo::platform
