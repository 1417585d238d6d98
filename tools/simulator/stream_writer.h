// SPDX-License-Identifier: MIT
// The way of a file's bytes from the simulator to the disk: through one buffer, past the places of damage, and through
// the compressor where the file is to be compressed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "wire/bytes.h"

namespace traguardo::tool {
class OutputFile;
}

namespace traguardo::simulator {

using wire::Byte;
using wire::Bytes;

struct Damage {
  enum class Kind { change, lose, add };

  std::uint64_t offset = 0;  // in the undamaged file
  Kind kind = Kind::change;
  Byte value = 1;  // exclusive-or mask of a change (not 0), or the byte added in front of the offset
};

class Compressor;

class StreamWriter {
 public:
  // out: null if the bytes are only to be counted. damage: ascending, one per offset.
  StreamWriter(tool::OutputFile* out, bool compressed, std::vector<Damage> damage);
  ~StreamWriter();
  StreamWriter(const StreamWriter&) = delete;
  StreamWriter& operator=(const StreamWriter&) = delete;

  // Room for `count` bytes, at most 1 MiB; wrote_up_to() takes what was written there.
  Byte* room(std::size_t count);
  void wrote_up_to(const Byte* end) { used_ = static_cast<std::size_t>(end - buffer_.data()); }
  void put(const Bytes& bytes);
  // Bytes so far, before damage and compression.
  std::uint64_t size() const { return flushed_ + used_; }
  // Everything is written. Throws tool::Failure like the operations above.
  void finish();

 private:
  void flush();
  void deliver(const Byte* bytes, std::size_t count);

  tool::OutputFile* out_;
  std::unique_ptr<Compressor> compressor_;
  std::vector<Damage> damage_;
  std::size_t next_damage_ = 0;
  Bytes buffer_;
  std::size_t used_ = 0;
  std::uint64_t flushed_ = 0;
};

}  // namespace traguardo::simulator
