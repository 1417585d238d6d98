// SPDX-License-Identifier: MIT
// One .wmp file, open for reading, with a position that reading moves on. Every read is checked against what the file
// really holds: sizes that stand in the file are claims.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "support/bytes.h"
#include "support/platform/platform.h"

namespace traguardo {

// The disk doesn't give what the file holds: nothing is known of its content, so that nothing may be made of it.
class FileReadError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The operations throw FileReadError where a read fails or ends before the length that the file had when it was opened.
class CFileWMP {
 public:
  virtual ~CFileWMP() = default;

  // Opens for reading at position 0 and takes the length; false if there is no such file.
  bool open_file(const std::wstring& path);
  void close_file();
  u64 file_length() const { return length_; }
  u64 position() const { return position_; }
  void seek(u64 position) { position_ = position; }
  u64 bytes_left() const { return position_ < length_ ? length_ - position_ : 0; }
  // Whether `count` items of `size` bytes lie behind the position. Asked before memory is taken for them.
  bool holds(u64 count, u64 size) const { return size == 0 || count <= bytes_left() / size; }

  // All or nothing: false if the file ends within, and then the position stays.
  bool read_exactly(void* out, std::size_t count);
  // As much as the file holds, up to `count` bytes; the number read.
  std::size_t read_up_to(void* out, std::size_t count);
  // Little-endian words or floats, up to `count` of them and up to the end of the file; a torn last one is dropped.
  std::vector<u16> read_words(u64 count);
  std::vector<float> read_floats(u64 count);

  template <typename Record>
  bool read_record(Record* record) {
    return read_exactly(record->bytes(), Record::kSize);
  }
  // Record by record, so that a table costs no second copy. False, and an empty table, if the file ends within.
  template <typename Record>
  bool read_table(std::vector<Record>* table, std::size_t count) {
    table->clear();
    if (!holds(count, Record::kSize)) return false;
    table->resize(count);
    for (Record& record : *table) {
      if (!read_record(&record)) {
        table->clear();
        return false;
      }
    }
    return true;
  }

 private:
  void read_bytes(void* out, std::size_t count);

  platform::File file_;
  u64 length_ = 0;
  u64 position_ = 0;
};

}  // namespace traguardo
