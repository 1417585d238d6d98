// SPDX-License-Identifier: MIT
// What is the same on every system: who owns a handle, whole files, and the disk that tests let run full.

#include <algorithm>
#include <atomic>
#include <limits>
#include <utility>

#include "support/platform/detail.h"
#include "support/platform/fault_injection.h"
#include "support/platform/unfinished_files.h"

namespace traguardo::platform {

namespace {

constexpr u64 kAnything = std::numeric_limits<u64>::max();

thread_local u32 t_last_error = 0;
std::atomic<u64> g_disk_room{kAnything};
std::atomic<int> g_failing{-1};
std::atomic<u64> g_successes_left{0};

}  // namespace

bool detail::fail_with(u32 code) {
  t_last_error = code;
  return false;
}

bool detail::disk_takes(u64 growth) {
  u64 room = g_disk_room.load(std::memory_order_relaxed);
  do {
    if (room == kAnything) return true;
    if (growth > room) return fail_with(kDiskFull);
  } while (!g_disk_room.compare_exchange_weak(room, room - growth));
  return true;
}

bool detail::may_go_on(Operation operation) {
  if (g_failing.load(std::memory_order_relaxed) != static_cast<int>(operation)) return true;
  if (g_successes_left.fetch_sub(1) != 0) return true;
  g_failing = -1;
  return fail_with(kIoError);
}

bool detail::ends_with_ignoring_case(std::wstring_view text, std::wstring_view suffix) {
  const auto lower = [](wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c; };
  if (text.size() < suffix.size()) return false;
  text.remove_prefix(text.size() - suffix.size());
  return std::equal(text.begin(), text.end(), suffix.begin(),
                    [&](wchar_t a, wchar_t b) { return lower(a) == lower(b); });
}

u32 last_error() {
  return t_last_error;
}

void let_disk_take(u64 bytes) {
  g_disk_room = bytes;
}

void let_disk_take_anything() {
  g_disk_room = kAnything;
}

void let_fail_after(Operation operation, u64 successes) {
  g_successes_left = successes;
  g_failing = static_cast<int>(operation);
}

bool let_nothing_fail() {
  return g_failing.exchange(-1) == -1;
}

std::wstring folder_of(std::wstring_view path) {
  std::size_t end = path.size();
  while (end > 0 && !is_separator(path[end - 1])) --end;
  return std::wstring(path.substr(0, end));
}

File::File(File&& other) noexcept : handle_(std::exchange(other.handle_, kNone)) {}

File& File::operator=(File&& other) noexcept {
  if (this != &other) {
    close();
    handle_ = std::exchange(other.handle_, kNone);
  }
  return *this;
}

File::~File() {
  close();
}

std::size_t File::read_at(u64 offset, void* out, std::size_t count) const {
  return detail::may_go_on(Operation::kRead) ? read_bytes(offset, out, count) : 0;
}

void File::read_all_at(u64 offset, void* out, std::size_t count) const {
  if (read_at(offset, out, count) != count) throw ReadFailure();
}

bool File::write_at(u64 offset, const void* bytes, std::size_t count) {
  if (!detail::may_go_on(Operation::kWrite)) return false;
  if (g_disk_room.load(std::memory_order_relaxed) != kAnything) {
    u64 present = 0;
    if (!size(&present)) return false;
    if (offset + count > present && !detail::disk_takes(offset + count - present)) return false;
  }
  return write_bytes(offset, bytes, count);
}

bool read_whole_file(const std::wstring& path, std::string* bytes, u64 limit) {
  const File file = File::open(path, Access::kRead, Share::kReadWrite, Creation::kMustExist);
  u64 size = 0;
  if (!file || !file.size(&size) || size > limit) return false;
  bytes->resize(static_cast<std::size_t>(size));
  return file.read_at(0, bytes->data(), bytes->size()) == bytes->size();
}

bool write_whole_file(const std::wstring& path, std::string_view bytes) {
  PartFile file;
  return file.begin(path) && file.write(bytes.data(), bytes.size()) && file.finish() && file.take_place();
}

bool write_text(const std::wstring& path, std::string_view text) {
  return write_whole_file(path, detail::with_line_ends(text));
}

bool copy_file(const std::wstring& from, const std::wstring& to) {
  const File source = File::open(from, Access::kRead, Share::kRead, Creation::kMustExist);
  u64 size = 0;
  PartFile target;
  if (!source || !source.size(&size) || !target.begin(to)) return false;
  std::string piece(1U << 16, '\0');
  for (u64 done = 0; done < size; done += piece.size()) {
    piece.resize(static_cast<std::size_t>(std::min<u64>(piece.size(), size - done)));
    if (source.read_at(done, piece.data(), piece.size()) != piece.size()) return false;
    if (!target.write(piece.data(), piece.size())) return false;
  }
  return target.finish() && target.take_place();
}

bool append_text(const std::wstring& path, std::string_view text) {
  File file = File::open(path, Access::kReadWrite, Share::kReadWrite, Creation::kOpenOrCreate);
  u64 size = 0;
  if (!file || !file.size(&size)) return false;
  const std::string lines = detail::with_line_ends(text);
  return file.write_at(size, lines.data(), lines.size());
}

}  // namespace traguardo::platform
