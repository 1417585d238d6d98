// SPDX-License-Identifier: MIT
#include "logger/lz77.h"

#include <zlib.h>

#include <array>
#include <new>

#include "support/platform/unfinished_files.h"

namespace traguardo {

namespace {

using platform::Access;
using platform::Creation;
using platform::File;
using platform::Share;

constexpr std::size_t kBufferSize = 16384;
// Offsets in a session are 32-bit numbers.
constexpr u64 kLargestSession = u64{1} << 32;
// Tells zlib which interface this code was written against; it compares the first digit.
constexpr const char* kZlibVersion = "1.2.8";

class Inflater {
 public:
  Inflater() : result_(inflateInit_(&stream_, kZlibVersion, static_cast<int>(sizeof stream_))) {}
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  ~Inflater() {
    if (result_ == Z_OK) inflateEnd(&stream_);
  }
  int result() const { return result_; }
  z_stream* operator->() { return &stream_; }
  int Inflate(int flush) { return inflate(&stream_, flush); }

 private:
  z_stream stream_{};
  int result_;
};

File open_source(const std::wstring& path) {
  return File::open(path, Access::kRead, Share::kRead, Creation::kMustExist);
}

// Nothing has the name: 0. What it is can't be told: more than any expansion yields, so that it stays.
u64 size_of(const std::wstring& path) {
  if (!platform::file_exists(path)) return 0;
  const File file = open_source(path);
  u64 size = 0;
  return file && file.size(&size) ? size : ~u64{0};
}

}  // namespace

Expansion expand(const File& source, const std::function<bool(const u8*, std::size_t)>& take) {
  Inflater inflater;
  if (inflater.result() != Z_OK) return Expansion::kNoMemory;
  std::array<u8, kBufferSize> input;
  std::array<u8, kBufferSize> output;
  u64 size = 0;
  if (!source.size(&size)) return Expansion::kUnreadable;
  u64 read = 0;
  u64 yielded = 0;
  int result = Z_OK;
  while (result != Z_STREAM_END) {
    const std::size_t got = source.read_at(read, input.data(), input.size());
    read += got;
    if (got < input.size() && read < size) return Expansion::kUnreadable;
    if (got == 0) break;
    const int flush = got < input.size() ? Z_FINISH : Z_NO_FLUSH;
    inflater->next_in = input.data();
    inflater->avail_in = static_cast<uInt>(got);
    do {
      inflater->next_out = output.data();
      inflater->avail_out = static_cast<uInt>(output.size());
      result = inflater.Inflate(flush);
      if (result == Z_MEM_ERROR) return Expansion::kNoMemory;
      // What came out in front of damage is worth having.
      const std::size_t produced = output.size() - inflater->avail_out;
      if (produced != 0 && !take(output.data(), produced)) return Expansion::kNotTaken;
      yielded += produced;
      if (yielded >= kLargestSession) return Expansion::kWhole;
      if (result == Z_NEED_DICT || result == Z_DATA_ERROR) return Expansion::kDamaged;
    } while (inflater->avail_out == 0);
  }
  return result == Z_STREAM_END ? Expansion::kWhole : Expansion::kDamaged;
}

Expansion CLz77::expand_to(const std::wstring& source_path, const std::wstring& target_path) {
  const File source = open_source(source_path);
  if (!source) return Expansion::kNoSource;
  platform::PartFile fresh;
  if (!fresh.begin(target_path)) return Expansion::kNoPlace;
  u64 written = 0;
  const Expansion result = expand(source, [&](const u8* bytes, std::size_t count) {
    written += count;
    return fresh.write(bytes, count);
  });
  if (result != Expansion::kWhole && result != Expansion::kDamaged) return result;
  if (!fresh.finish()) return Expansion::kNotTaken;
  const u64 present = size_of(target_path);
  if (result == Expansion::kDamaged && written <= present) return result;
  if (fresh.take_place()) return result;
  // Where a system lets nobody replace a file that is being read, that file is this one's twin.
  return written == present ? result : Expansion::kNoPlace;
}

i32 CLz77::Decomprimi(const char* source, const char* target) {
  switch (expand_to(platform::path_from_host_bytes(source), platform::path_from_host_bytes(target))) {
    case Expansion::kDamaged:
      return Z_DATA_ERROR;
    case Expansion::kUnreadable:
    case Expansion::kNotTaken:
      return Z_ERRNO;
    case Expansion::kNoMemory:
      return Z_MEM_ERROR;
    case Expansion::kWhole:
    case Expansion::kNoSource:
    case Expansion::kNoPlace:
      break;
  }
  return 0;
}

std::unique_ptr<ILz77> CreaLz77() {
  return std::unique_ptr<ILz77>(new (std::nothrow) CLz77);
}

}  // namespace traguardo
