// SPDX-License-Identifier: MIT
// The only door to the operating system. posix.cpp and win32.cpp implement it, common.cpp what is the same on both;
// nothing else in src/ includes a system header or asks which platform it runs on.
//
// Paths are wide strings. On Linux each character is one byte of the path (0 to 255), so that every path survives; on
// Windows they are what the system takes.
#pragma once

#include <ctime>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "support/bytes.h"

namespace traguardo::platform {

// A window of a file may start at multiples of this only. Equal on every platform, so that one file yields the same
// samples everywhere.
inline constexpr u32 kAllocationGranularity = 65536;

// --- Paths -----------------------------------------------------------------------------------------------------------

// A path as the host gave it. Linux: its bytes as they are. Windows: UTF-8 where the bytes are valid UTF-8, else the
// active code page.
std::wstring path_from_host_bytes(std::string_view bytes);
// The way back: path_from_host_bytes(host_bytes_from_path(p)) is p for every p that came from there.
std::string host_bytes_from_path(std::wstring_view path);
// `name` in `folder`, with one separator between them. A leading backslash or slash of the name, and a trailing one of
// the folder, stand for that separator.
std::wstring path_in_folder(std::wstring_view folder, std::wstring_view name);
// The same place as seen from any working folder.
std::wstring absolute_path(const std::wstring& path);
// The folder that a path lies in, with its separator; empty for a bare name.
std::wstring folder_of(std::wstring_view path);
// What separates the parts of a path: a backslash is a character of names on Linux.
bool is_separator(wchar_t c);
// The executable of this process as the system spells it; empty if it can't be had.
std::wstring executable_path();
// A variable of the environment that holds a path; empty if it isn't set.
std::wstring path_from_environment(const char* name);

// --- Files -----------------------------------------------------------------------------------------------------------

enum class Access { kRead, kReadWrite };
enum class Share { kRead, kReadWrite };
enum class Creation {
  kMustExist,
  kOpenOrCreate,
  kCreateOrTruncate,
  kMustBeNew,  // fails where anything has the name, a link that leads nowhere too
};

// A read that the system refused, or that met an end where the file had more before: thrown where a caller far up can
// do nothing but give up.
class ReadFailure : public std::exception {
 public:
  const char* what() const noexcept override { return "a file could not be read"; }
};

// The system's code of the last operation of this header that failed on this thread, for the log.
u32 last_error();

// One open file. Moves, closes itself. Operations give false on failure and leave last_error().
class File {
 public:
  File() = default;
  File(File&& other) noexcept;
  File& operator=(File&& other) noexcept;
  ~File();

  static File open(const std::wstring& path, Access access, Share share, Creation creation);
  // A file to read and write that nobody else can find by a name, and that is gone with its handle, however this
  // process ends. Where the system knows no such files it has a fresh name in that folder for as long as it lives.
  static File create_unnamed(const std::wstring& folder);
  explicit operator bool() const { return handle_ != kNone; }

  bool size(u64* bytes) const;
  bool resize(u64 bytes);
  // Reads up to `count` bytes; the number read, short at the end of the file or on an error.
  std::size_t read_at(u64 offset, void* out, std::size_t count) const;
  // Reads exactly `count` bytes. Throws ReadFailure if they can't be had.
  void read_all_at(u64 offset, void* out, std::size_t count) const;
  // All or nothing: false if not every byte was written.
  bool write_at(u64 offset, const void* bytes, std::size_t count);
  bool close();

 private:
  std::size_t read_bytes(u64 offset, void* out, std::size_t count) const;
  bool write_bytes(u64 offset, const void* bytes, std::size_t count);

  static constexpr std::intptr_t kNone = -1;
  std::intptr_t handle_ = kNone;
};

bool file_exists(const std::wstring& path);
// Whether both lead to one file or folder that is there: by what the system knows, through links of any kind.
bool is_same_file(const std::wstring& a, const std::wstring& b);
bool delete_file(const std::wstring& path);
// Replaces `to` if it exists, in one step as write_whole_file does; where that is a link, the link and not what it
// leads to.
bool copy_file(const std::wstring& from, const std::wstring& to);
// Replaces `to`, in one step where the file system can.
bool rename_file(const std::wstring& from, const std::wstring& to);
// Makes a folder and its missing parents; true if it exists afterwards.
bool create_folders(const std::wstring& folder);
// The names of the plain files of a folder that end in `suffix` ("" for all), case of ASCII letters apart, in the order
// in which the system delivers them.
std::vector<std::wstring> list_files(const std::wstring& folder, std::wstring_view suffix);

// Whole files, for texts and configurations. read_whole_file gives false for a missing or unreadable file and for one
// above `limit` bytes.
bool read_whole_file(const std::wstring& path, std::string* bytes, u64 limit);
// Replaces what has that name in one step, when the new file is whole: an earlier one stays until then, and what the
// name was linked to stays for good.
bool write_whole_file(const std::wstring& path, std::string_view bytes);
// The same in text mode: line feeds become the platform's line ends.
bool write_text(const std::wstring& path, std::string_view text);
// Appends in text mode, to what a link of that name leads to.
bool append_text(const std::wstring& path, std::string_view text);

// --- Time and identity -----------------------------------------------------------------------------------------------

// Broken-down local time; false if it can't be had.
bool local_time(std::time_t when, std::tm* out);
// A text that no other running process of this machine has and that differs from call to call; fit for a file name.
std::string unique_token();

// --- Memory that a caller frees --------------------------------------------------------------------------------------

// A heap that the caller names; null is the process's own. Blocks go back to the heap that they came from.
using HeapHandle = void*;
void* heap_allocate(HeapHandle heap, std::size_t bytes) noexcept;
void heap_free(HeapHandle heap, void* block) noexcept;

}  // namespace traguardo::platform
