// SPDX-License-Identifier: MIT
// A whole .qlc, beside a .qlt of a hundred bytes. A stream that ends properly takes that one's place, and reads like
// the same bytes uncompressed; of a damaged one only what is longer does.

#include <zlib.h>

#include <optional>

#include "mutators.h"
#include "whole_file.h"

using namespace traguardo;

namespace {

constexpr std::size_t kLargest = 1 << 20;

// What a whole stream holds.
std::optional<fuzz::Bytes> unpacked(const fuzz::Bytes& packed) {
  fuzz::Bytes out(kLargest);
  uLongf size = kLargest;
  uLong used = packed.size();
  if (uncompress2(out.data(), &size, packed.data(), &used) != Z_OK) return std::nullopt;
  out.resize(size);
  return out;
}

fuzz::Bytes packed(const fuzz::Bytes& bytes, int level) {
  uLongf size = compressBound(bytes.size());
  fuzz::Bytes out(size);
  compress2(out.data(), &size, bytes.data(), bytes.size(), level);
  out.resize(size);
  return out;
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t room, unsigned seed) {
  return fuzz::mutate(data, size, room, seed, [room](const fuzz::Bytes& bytes, fuzz::Random& random) {
    const std::optional<fuzz::Bytes> inside = unpacked(bytes);
    if (!inside || random() % 2 == 0) return fuzz::changed(bytes, room);
    return packed(fuzz::changed_tags(*inside, room, random), static_cast<int>(random() % 10));
  });
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::Bytes bytes(data, data + size);
  const test::TempFolder& folder = fuzz::folder();
  const std::string before(100, '-');
  const std::string expansion = folder.write("a.qlt", before);
  const std::vector<fuzz::Answer> answers = fuzz::read_everything(folder.write("a.qlc", bytes));
  fuzz::check(folder.names().size() == 2);
  const std::string after = folder.read("a.qlt");
  const std::optional<fuzz::Bytes> inside = unpacked(bytes);
  if (inside) {
    fuzz::check(after == std::string(inside->begin(), inside->end()));
    fuzz::check(fuzz::read_everything(expansion) == answers);
  } else if (after != before) {
    fuzz::check(after.size() > before.size());
  }
  return 0;
}
