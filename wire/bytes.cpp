// SPDX-License-Identifier: MIT
#include "wire/bytes.h"

#include <algorithm>
#include <numeric>

namespace traguardo::wire {

std::uint32_t sum_of(const Bytes& bytes) {
  return std::accumulate(bytes.begin(), bytes.end(), std::uint32_t{0});
}

Record& Record::text(std::size_t at, std::size_t width, std::string_view value) {
  const std::string_view fitting = value.substr(0, width);
  std::copy(fitting.begin(), fitting.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(at));
  return *this;
}

}  // namespace traguardo::wire
