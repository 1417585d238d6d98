// What is the same on every system: who owns a handle, whole files, and the disk that tests let run full.

#include <algorithm>
#include <atomic>
#include <limits>
#include <utility>

#include "support/platform/detail.h"
#include "support/platform/fault_injection.h"

namespace traguardo::platform {

namespace {

constexpr u64 kAnything = std::numeric_limits<u64>::max();

thread_local u32 t_last_error = 0;
std::atomic<u64> g_disk_room{kAnything};

bool disk_takes(u64 growth) {
  u64 room = g_disk_room.load(std::memory_order_relaxed);
  do {
    if (room == kAnything) return true;
    if (growth > room) return detail::fail_with(detail::kDiskFull);
  } while (!g_disk_room.compare_exchange_weak(room, room - growth));
  return true;
}

}  // namespace

bool detail::fail_with(u32 code) {
  t_last_error = code;
  return false;
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

bool File::reserve(u64 bytes) {
  u64 present = 0;
  if (!size(&present)) return false;
  if (present >= bytes) return true;
  return disk_takes(bytes - present) && reserve_blocks(present, bytes);
}

bool File::write_at(u64 offset, const void* bytes, std::size_t count) {
  if (g_disk_room.load(std::memory_order_relaxed) != kAnything) {
    u64 present = 0;
    if (!size(&present)) return false;
    if (offset + count > present && !disk_takes(offset + count - present)) return false;
  }
  return write_bytes(offset, bytes, count);
}

// Nothing to do: what was written is seen by every later reader. Stores are temporary, so no crash of the machine needs
// to find them on the disk.
bool File::flush() {
  return true;
}

Claim::Claim(Claim&& other) noexcept : file_(std::move(other.file_)), path_(std::exchange(other.path_, {})) {}

Claim& Claim::operator=(Claim&& other) noexcept {
  if (this != &other) {
    release();
    file_ = std::move(other.file_);
    path_ = std::exchange(other.path_, {});
  }
  return *this;
}

Claim::~Claim() {
  release();
}

Mapping::Mapping(Mapping&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}

Mapping& Mapping::operator=(Mapping&& other) noexcept {
  if (this != &other) {
    unmap();
    data_ = std::exchange(other.data_, nullptr);
    size_ = std::exchange(other.size_, 0);
  }
  return *this;
}

Mapping::~Mapping() {
  unmap();
}

bool read_whole_file(const std::wstring& path, std::string* bytes, u64 limit) {
  const File file = File::open(path, Access::kRead, Share::kReadWrite, Creation::kMustExist);
  u64 size = 0;
  if (!file || !file.size(&size) || size > limit) return false;
  bytes->resize(static_cast<std::size_t>(size));
  bytes->resize(file.read_at(0, bytes->data(), bytes->size()));
  return true;
}

bool write_whole_file(const std::wstring& path, std::string_view bytes) {
  File file = File::open(path, Access::kReadWrite, Share::kRead, Creation::kCreateOrTruncate);
  return file && file.write_at(0, bytes.data(), bytes.size());
}

bool append_text(const std::wstring& path, std::string_view text) {
  File file = File::open(path, Access::kReadWrite, Share::kReadWrite, Creation::kOpenOrCreate);
  u64 size = 0;
  if (!file || !file.size(&size)) return false;
  const std::string lines = detail::with_line_ends(text);
  return file.write_at(size, lines.data(), lines.size());
}

}  // namespace traguardo::platform
