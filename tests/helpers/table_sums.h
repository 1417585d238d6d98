// SPDX-License-Identifier: MIT
// Row count, plain sum and hash of a table of data, so that a table can be held against numbers that were worked out
// from its source. A row counts by its columns in order: each as text with a '|' behind it, and a line feed behind the
// row. The hash is FNV-1a, 64 bits, over all that; the plain sum adds up the columns that are whole numbers.
#pragma once

#include <bit>
#include <cinttypes>
#include <cstdio>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "support/bytes.h"

namespace traguardo {

struct TableSums {
  std::size_t rows = 0;
  i64 sum = 0;
  u64 hash = 0;
  bool operator==(const TableSums&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const TableSums& sums) {
  char hash[17];
  std::snprintf(hash, sizeof hash, "%016" PRIx64, sums.hash);
  return out << sums.rows << " rows, sum " << sums.sum << ", hash " << hash;
}

class TableDigest {
 public:
  TableDigest& number(i64 value) {
    sums_.sum += value;
    return text(std::to_string(value).c_str());
  }
  // Flags and enumerators: in decimal, outside the plain sum.
  TableDigest& flag(bool value) { return text(value ? "1" : "0"); }
  template <typename Enum>
  TableDigest& choice(Enum value) {
    return text(std::to_string(static_cast<int>(value)).c_str());
  }
  // Floats by their bits, in hexadecimal digits.
  TableDigest& real(float value) {
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08" PRIx32, std::bit_cast<u32>(value));
    return text(digits);
  }
  TableDigest& real(double value) {
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016" PRIx64, std::bit_cast<u64>(value));
    return text(digits);
  }
  TableDigest& text(const char* value) {
    add(value == nullptr ? "\x01" : value);
    add("|");
    return *this;
  }
  void end_row() {
    ++sums_.rows;
    add("\n");
  }
  const TableSums& sums() const { return sums_; }

 private:
  void add(std::string_view bytes) {
    for (const char c : bytes) sums_.hash = (sums_.hash ^ static_cast<u8>(c)) * 0x100000001B3u;
  }

  TableSums sums_{0, 0, 0xCBF29CE484222325u};
};

// `add_row` gives the columns of a row to the digest.
template <typename Row, std::size_t Extent, typename AddRow>
TableSums table_sums(std::span<const Row, Extent> rows, AddRow add_row) {
  TableDigest digest;
  for (const Row& row : rows) {
    add_row(digest, row);
    digest.end_row();
  }
  return digest.sums();
}

}  // namespace traguardo
