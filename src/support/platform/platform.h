// The only door to the operating system. posix.cpp and win32.cpp implement it, common.cpp what is the same on both;
// nothing else in src/ includes a system header or asks which platform it runs on.
//
// Paths are wide strings. On Linux each character is one byte of the path (0 to 255), so that every path survives; on
// Windows they are what the system takes.
#pragma once

#include <ctime>
#include <memory>
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
// The executable of this process as the system spells it; empty if it can't be had.
std::wstring executable_path();

// --- Files -----------------------------------------------------------------------------------------------------------

enum class Access { kRead, kReadWrite };
enum class Share { kRead, kReadWrite };
enum class Creation { kMustExist, kOpenOrCreate, kCreateOrTruncate };

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
  explicit operator bool() const { return handle_ != kNone; }

  bool size(u64* bytes) const;
  bool resize(u64 bytes);
  // Makes the file at least this long and reserves its disk blocks, so that no later write to a mapping of it can meet
  // a full disk.
  bool reserve(u64 bytes);
  // Reads up to `count` bytes; the number read, short at the end of the file or on an error.
  std::size_t read_at(u64 offset, void* out, std::size_t count) const;
  // All or nothing: false if not every byte was written.
  bool write_at(u64 offset, const void* bytes, std::size_t count);
  bool flush();
  bool close();

 private:
  friend class Mapping;
  friend class Claim;
  bool reserve_blocks(u64 present, u64 bytes);
  bool write_bytes(u64 offset, const void* bytes, std::size_t count);

  static constexpr std::intptr_t kNone = -1;
  std::intptr_t handle_ = kNone;
};

// A name that one holder at a time has, in this process and in all others: an empty file, gone when it is given back.
class Claim {
 public:
  Claim() = default;
  Claim(Claim&& other) noexcept;
  Claim& operator=(Claim&& other) noexcept;
  ~Claim();

  // An empty Claim if somebody else has the name, or if the file can't be made.
  static Claim take(const std::wstring& path);
  explicit operator bool() const { return static_cast<bool>(file_); }
  void release();

 private:
  File file_;
  std::wstring path_;
};

// A mapped stretch of a file. Outlives the File that it was made from.
class Mapping {
 public:
  Mapping() = default;
  Mapping(Mapping&& other) noexcept;
  Mapping& operator=(Mapping&& other) noexcept;
  ~Mapping();

  // `offset` is a multiple of kAllocationGranularity. An empty Mapping on failure.
  static Mapping map(const File& file, u64 offset, std::size_t length, bool writable);
  // Tells the system that the bytes will be read once, from front to back.
  void expect_sequential_reading();
  u8* data() const { return data_; }
  std::size_t size() const { return size_; }
  explicit operator bool() const { return data_ != nullptr; }
  bool unmap();

 private:
  u8* data_ = nullptr;
  std::size_t size_ = 0;
};

bool file_exists(const std::wstring& path);
bool delete_file(const std::wstring& path);
// Replaces `to` if it exists.
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
bool write_whole_file(const std::wstring& path, std::string_view bytes);
// Appends in text mode: line feeds become the platform's line ends.
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
