#include "expansion.h"

#include <zlib.h>

#include <filesystem>
#include <new>
#include <system_error>
#include <vector>

#include "input_file.h"
#include "output_file.h"
#include "support/platform/platform.h"

namespace traguardo::tool {

namespace fs = std::filesystem;

namespace {

class Inflater {
 public:
  Inflater() : room_(std::size_t{1} << 18) {
    if (inflateInit(&stream_) != Z_OK) throw std::bad_alloc();
  }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  ~Inflater() { inflateEnd(&stream_); }

  // Z_OK while the stream goes on, Z_STREAM_END at its end.
  int feed(std::string_view piece, const std::function<void(std::string_view)>& take) {
    // zlib's interface knows no constant input.
    stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(piece.data()));
    stream_.avail_in = static_cast<uInt>(piece.size());
    int result = Z_OK;
    do {
      stream_.next_out = reinterpret_cast<Bytef*>(room_.data());
      stream_.avail_out = static_cast<uInt>(room_.size());
      result = inflate(&stream_, Z_NO_FLUSH);
      if (result == Z_MEM_ERROR) throw std::bad_alloc();
      // What came out in front of damage is worth keeping.
      take(std::string_view(room_.data(), room_.size() - stream_.avail_out));
    } while (result == Z_OK && (stream_.avail_in > 0 || stream_.avail_out == 0));
    return result == Z_BUF_ERROR ? Z_OK : result;
  }

 private:
  z_stream stream_{};
  std::vector<char> room_;
};

}  // namespace

Expanded expand(const std::string& path, const std::function<void(std::string_view piece)>& take) {
  Inflater inflater;
  int result = Z_OK;
  const bool readable = read_pieces(path, [&](std::string_view piece) {
    result = inflater.feed(piece, take);
    return result == Z_OK;
  });
  if (!readable) return Expanded::unreadable;
  return result == Z_STREAM_END ? Expanded::whole : Expanded::damaged;
}

void expand_to_file(const std::string& path, const std::string& target) {
  OutputFile out(target);
  expand(path, [&out](std::string_view piece) { out.write(piece); });
  out.keep();
}

TemporaryFile::TemporaryFile(const std::string& ending)
    : path_((fs::temp_directory_path() /
             ("traguardo-" + platform::host_bytes_from_path(platform::random_token()) + ending))
                .string()),
      mark_(platform::path_from_host_bytes(path_)) {}

TemporaryFile::~TemporaryFile() {
  std::error_code ignored;
  fs::remove(path_, ignored);
}

}  // namespace traguardo::tool
