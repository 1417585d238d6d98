// SPDX-License-Identifier: MIT
#include "mutators.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "wire/qlt.h"

namespace traguardo::fuzz {
namespace {

constexpr std::size_t kHeadSize = 12;
constexpr std::size_t kTailSize = 8;

// A tag by its parts, or bytes that belong to none.
struct Piece {
  bool is_tag = false;
  std::string name;
  std::uint8_t version = 0;
  Bytes bytes;

  Bytes whole() const { return is_tag ? wire::tag(name, bytes, version) : bytes; }
};

std::size_t payload_size(const Bytes& bytes, std::size_t at) {
  std::size_t size = 0;
  for (std::size_t i = 4; i > 0; --i) size = size << 8 | bytes[at + 5 + i];
  return size;
}

bool tag_stands_at(const Bytes& bytes, std::size_t at) {
  if (bytes.size() - at < kHeadSize + kTailSize || bytes[at] != '<' || bytes[at + 1] != 'h') return false;
  const std::size_t size = payload_size(bytes, at);
  return bytes[at + 11] == '>' && size <= bytes.size() - at - kHeadSize - kTailSize &&
         bytes[at + kHeadSize + size] == '<';
}

std::vector<Piece> pieces_of(const Bytes& bytes) {
  std::vector<Piece> pieces;
  for (std::size_t at = 0; at < bytes.size();) {
    if (!tag_stands_at(bytes, at)) {
      if (pieces.empty() || pieces.back().is_tag) pieces.emplace_back();
      pieces.back().bytes.push_back(bytes[at++]);
      continue;
    }
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    const auto size = static_cast<std::ptrdiff_t>(payload_size(bytes, at));
    pieces.push_back({true, std::string(begin + 2, begin + 6), bytes[at + 10], Bytes(begin + 12, begin + 12 + size)});
    at += kHeadSize + static_cast<std::size_t>(size) + kTailSize;
  }
  return pieces;
}

}  // namespace

Bytes changed(Bytes bytes, std::size_t room) {
  const std::size_t size = bytes.size();
  bytes.resize(std::max<std::size_t>({room, size, 1}));
  bytes.resize(LLVMFuzzerMutate(bytes.data(), size, bytes.size()));
  return bytes;
}

Bytes changed_tags(const Bytes& bytes, std::size_t room, Random& random) {
  std::vector<Piece> pieces = pieces_of(bytes);
  if (pieces.empty()) return changed(bytes, room);
  const std::size_t which = random() % pieces.size();
  const auto chosen = pieces.begin() + static_cast<std::ptrdiff_t>(which);
  switch (random() % 16) {
    case 0:
      pieces.erase(chosen);
      break;
    case 1:
      pieces.insert(chosen, Piece(pieces[random() % pieces.size()]));
      break;
    case 2:
      std::swap(*chosen, pieces[random() % pieces.size()]);
      break;
    case 3:
      chosen->version = static_cast<std::uint8_t>(random() % 4);
      break;
    default: {
      const std::size_t more = chosen->bytes.size() + (room > bytes.size() ? room - bytes.size() : 0);
      const bool holds_tags = chosen->is_tag && (chosen->name.starts_with("CNF") || chosen->name.starts_with("ENF"));
      chosen->bytes = holds_tags ? changed_tags(chosen->bytes, more, random) : changed(std::move(chosen->bytes), more);
    }
  }
  Bytes made;
  for (const Piece& piece : pieces) made = wire::operator+(std::move(made), piece.whole());
  return made;
}

Bytes with_trace_tags(Bytes bytes) {
  const auto set = [&bytes](std::size_t at, std::string_view name) {
    if (at + name.size() <= bytes.size())
      std::copy(name.begin(), name.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
  };
  const bool is_hnv = !bytes.empty() && bytes[0] == 'P';
  const std::size_t solutions = is_hnv ? 80 : 48;
  for (const std::size_t at : {0U, 16U}) set(at, is_hnv ? "PROV" : "HEAD");
  set(solutions, is_hnv ? "PSOL" : "NSOL");
  for (std::size_t at = solutions + 16; at < bytes.size(); at += is_hnv ? 144 : 64) set(at, is_hnv ? "PSOL" : "NSOL");
  return bytes;
}

}  // namespace traguardo::fuzz
