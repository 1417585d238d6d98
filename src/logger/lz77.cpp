#include "logger/lz77.h"

#include <zlib.h>

#include <array>
#include <new>
#include <string>

#include "support/platform/platform.h"

namespace traguardo {

namespace {

using platform::Access;
using platform::Creation;
using platform::File;
using platform::Share;

constexpr std::size_t kBufferSize = 16384;
constexpr i32 kFailedIo = -1;
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

i32 expand(const File& source, File* target, Inflater* inflater) {
  std::array<u8, kBufferSize> input;
  std::array<u8, kBufferSize> output;
  u64 size = 0;
  if (!source.size(&size)) return kFailedIo;
  u64 read = 0;
  u64 written = 0;
  int result = Z_OK;
  while (result != Z_STREAM_END) {
    const std::size_t got = source.read_at(read, input.data(), input.size());
    read += got;
    if (got < input.size() && read < size) return kFailedIo;
    if (got == 0) break;
    const int flush = got < input.size() ? Z_FINISH : Z_NO_FLUSH;
    (*inflater)->next_in = input.data();
    (*inflater)->avail_in = static_cast<uInt>(got);
    do {
      (*inflater)->next_out = output.data();
      (*inflater)->avail_out = static_cast<uInt>(output.size());
      result = inflater->Inflate(flush);
      const std::size_t produced = output.size() - (*inflater)->avail_out;
      // What came out in front of the damage is worth keeping.
      const bool stored = target->write_at(written, output.data(), produced);
      written += produced;
      if (result == Z_NEED_DICT) return Z_DATA_ERROR;
      if (result == Z_DATA_ERROR || result == Z_MEM_ERROR) return result;
      if (!stored) return kFailedIo;
    } while ((*inflater)->avail_out == 0);
  }
  return result == Z_STREAM_END ? 0 : Z_DATA_ERROR;
}

}  // namespace

i32 CLz77::Decomprimi(const char* source_path, const char* target_path) {
  Inflater inflater;
  if (inflater.result() != Z_OK) return inflater.result();
  const File source =
      File::open(platform::path_from_host_bytes(source_path), Access::kRead, Share::kRead, Creation::kMustExist);
  if (!source) return 0;
  // Into a file of its own first, which then takes the target's name: a reader that has the old target mapped keeps it.
  const std::wstring target = platform::path_from_host_bytes(target_path);
  const std::size_t folder_end = target.find_last_of(L"/\\");
  const std::wstring folder = folder_end == std::wstring::npos ? std::wstring() : target.substr(0, folder_end + 1);
  const std::wstring fresh = folder + widen_bytes(platform::unique_token()) + L".qlt.tmp";
  File file = File::open(fresh, Access::kReadWrite, Share::kRead, Creation::kCreateOrTruncate);
  if (!file) return 0;
  i32 result = expand(source, &file, &inflater);
  if (!file.close()) result = kFailedIo;
  if (!platform::rename_file(fresh, target)) {
    platform::delete_file(fresh);
    return 0;
  }
  return result;
}

std::unique_ptr<ILz77> CreaLz77() {
  return std::unique_ptr<ILz77>(new (std::nothrow) CLz77);
}

}  // namespace traguardo
