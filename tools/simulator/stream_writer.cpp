// SPDX-License-Identifier: MIT
#include "simulator/stream_writer.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "failure.h"
#include "output_file.h"

namespace traguardo::simulator {

namespace {
constexpr std::size_t kBufferSize = std::size_t{1} << 20;
}

class Compressor {
 public:
  explicit Compressor(tool::OutputFile& out) : out_(out), produced_(kBufferSize) {
    if (deflateInit(&stream_, Z_DEFAULT_COMPRESSION) != Z_OK) throw tool::Failure("no memory for the compressor");
  }
  ~Compressor() { deflateEnd(&stream_); }
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;

  void add(const Byte* bytes, std::size_t count) {
    stream_.next_in = const_cast<Byte*>(bytes);
    stream_.avail_in = static_cast<uInt>(count);
    drain(Z_NO_FLUSH);
  }
  void finish() {
    stream_.next_in = nullptr;
    stream_.avail_in = 0;
    drain(Z_FINISH);
  }

 private:
  void drain(int flush) {
    do {
      stream_.next_out = produced_.data();
      stream_.avail_out = static_cast<uInt>(produced_.size());
      deflate(&stream_, flush);
      out_.write(produced_.data(), produced_.size() - stream_.avail_out);
    } while (stream_.avail_out == 0);
  }

  tool::OutputFile& out_;
  z_stream stream_{};
  Bytes produced_;
};

StreamWriter::StreamWriter(tool::OutputFile* out, bool compressed, std::vector<Damage> damage)
    : out_(out), damage_(std::move(damage)), buffer_(kBufferSize) {
  if (out_ != nullptr && compressed) compressor_ = std::make_unique<Compressor>(*out_);
}

StreamWriter::~StreamWriter() = default;

Byte* StreamWriter::room(std::size_t count) {
  if (used_ + count > buffer_.size()) flush();
  return buffer_.data() + used_;
}

void StreamWriter::put(const Bytes& bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    const std::size_t count = std::min(bytes.size() - done, std::size_t{4096});
    std::memcpy(room(count), bytes.data() + done, count);
    used_ += count;
    done += count;
  }
}

void StreamWriter::finish() {
  flush();
  if (compressor_ != nullptr) compressor_->finish();
}

void StreamWriter::flush() {
  const Byte* const bytes = buffer_.data();
  std::size_t done = 0;
  for (; next_damage_ < damage_.size() && damage_[next_damage_].offset < flushed_ + used_; ++next_damage_) {
    const Damage& damage = damage_[next_damage_];
    const std::size_t place = static_cast<std::size_t>(damage.offset - flushed_);
    deliver(bytes + done, place - done);
    done = place;
    if (damage.kind != Damage::Kind::add) ++done;
    if (damage.kind == Damage::Kind::lose) continue;
    const bool changes = damage.kind == Damage::Kind::change;
    const Byte byte = changes ? static_cast<Byte>(bytes[place] ^ damage.value) : damage.value;
    deliver(&byte, 1);
  }
  deliver(bytes + done, used_ - done);
  flushed_ += used_;
  used_ = 0;
}

void StreamWriter::deliver(const Byte* bytes, std::size_t count) {
  if (out_ == nullptr || count == 0) return;
  if (compressor_ != nullptr) {
    compressor_->add(bytes, count);
  } else {
    out_->write(bytes, count);
  }
}

}  // namespace traguardo::simulator
