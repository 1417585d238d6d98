// SPDX-License-Identifier: MIT
#include "wire/jts.h"

#include <algorithm>

#include "wire/qlt.h"

namespace traguardo::wire {

namespace {

constexpr std::size_t kMarkSize = 16;
constexpr std::size_t kHeaderSize = 32;
constexpr std::size_t kSolutionSize = 64;
constexpr std::size_t kTagSize = 4;
constexpr std::uint32_t kFormVersion = 256;

}  // namespace

Bytes jts(std::span<const Byte> solutions, std::optional<std::uint32_t> stated) {
  constexpr std::size_t kHeaderAt = kMarkSize;
  constexpr std::size_t kMarkAt = kHeaderAt + kHeaderSize;
  constexpr std::size_t kSolutionsAt = kMarkAt + kMarkSize;
  const std::size_t count = solutions.size() / GpsSolution::kSize;
  Record file(kSolutionsAt);
  file.text(0, kTagSize, "HEAD").u16(kTagSize, kFormVersion);
  file.text(kHeaderAt, kTagSize, "HEAD").u16(kHeaderAt + kTagSize, kFormVersion);
  file.u32(kHeaderAt + 14, stated.value_or(static_cast<std::uint32_t>(count)));
  file.text(kMarkAt, kTagSize, "NSOL").u16(kMarkAt + kTagSize, kFormVersion);
  Bytes out = file.bytes();
  out.reserve(kSolutionsAt + count * kSolutionSize);
  for (std::size_t i = 0; i < count; ++i) {
    const std::span<const Byte> solution = solutions.subspan(i * GpsSolution::kSize, GpsSolution::kSize);
    out.insert(out.end(), {'N', 'S', 'O', 'L'});
    out.insert(out.end(), solution.begin(), solution.end());
    out.resize(kSolutionsAt + (i + 1) * kSolutionSize);
  }
  return out;
}

Bytes plain_jts(std::uint32_t records, std::optional<std::uint32_t> stated) {
  Bytes solutions;
  for (std::uint32_t i = 0; i < records; ++i) {
    GpsSolution one;
    one.time_ms = 1000 * i;
    one.time_of_week_ms = 345600000 + 1000 * i;
    one.week = 1800;
    one.x_cm = static_cast<std::int32_t>(440000000 + 100 * i);
    one.y_cm = 80000000;
    one.z_cm = 453000000;
    one.vx_cm_s = 100;
    const Bytes record = one.record();
    solutions.insert(solutions.end(), record.begin(), record.end());
  }
  return jts(solutions, stated);
}

}  // namespace traguardo::wire
