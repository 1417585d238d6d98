// SPDX-License-Identifier: MIT
#include "simulator/jts_writer.h"

#include <cstddef>
#include <cstring>

#include "simulator/gps_receiver.h"

namespace traguardo::simulator {

namespace {

constexpr std::size_t kMarkSize = 16;
constexpr std::size_t kHeaderSize = 32;
constexpr std::size_t kSolutionSize = 64;
constexpr std::size_t kTagSize = 4;
constexpr std::uint32_t kFormVersion = 256;

// Every record begins with the tag of its section. Gives where its content begins.
Byte* put_tag(Byte* at, const char* tag) {
  std::memcpy(at, tag, kTagSize);
  return at + kTagSize;
}

}  // namespace

Bytes jts_file(std::span<const Byte> solutions) {
  constexpr std::size_t kRecordSize = GpsReceiver::kRecordSize;
  const std::size_t count = solutions.size() / kRecordSize;
  Bytes file(kMarkSize + kHeaderSize + kMarkSize + count * kSolutionSize, 0);
  Byte* at = file.data();
  put_u16(put_tag(at, "HEAD"), kFormVersion);
  at += kMarkSize;
  put_u16(put_tag(at, "HEAD"), kFormVersion);
  put_u32(at + 14, static_cast<std::uint32_t>(count));
  at += kHeaderSize;
  put_u16(put_tag(at, "NSOL"), kFormVersion);
  at += kMarkSize;
  for (std::size_t i = 0; i < count; ++i) {
    std::memcpy(put_tag(at, "NSOL"), solutions.data() + i * kRecordSize, kRecordSize);
    at += kSolutionSize;
  }
  return file;
}

}  // namespace traguardo::simulator
