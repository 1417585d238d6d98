// SPDX-License-Identifier: MIT
#include "legacy/file/wmp_file.h"

#include <algorithm>
#include <bit>

namespace traguardo {

bool CFileWMP::open_file(const std::wstring& path) {
  close_file();
  file_ =
      platform::File::open(path, platform::Access::kRead, platform::Share::kReadWrite, platform::Creation::kMustExist);
  if (file_ && file_.size(&length_)) return true;
  const bool is_there = file_ || platform::file_exists(path);
  close_file();
  if (is_there) throw FileReadError("a session file can't be opened");
  return false;
}

void CFileWMP::close_file() {
  file_ = platform::File();
  length_ = 0;
  position_ = 0;
}

bool CFileWMP::read_exactly(void* out, std::size_t count) {
  if (count > bytes_left()) return false;
  read_bytes(out, count);
  return true;
}

std::size_t CFileWMP::read_up_to(void* out, std::size_t count) {
  const std::size_t wanted = static_cast<std::size_t>(std::min<u64>(count, bytes_left()));
  read_bytes(out, wanted);
  return wanted;
}

void CFileWMP::read_bytes(void* out, std::size_t count) {
  if (count == 0) return;
  if (file_.read_at(position_, out, count) != count) throw FileReadError("a session file can't be read");
  position_ += count;
}

std::vector<u16> CFileWMP::read_words(u64 count) {
  std::vector<u16> words(static_cast<std::size_t>(std::min<u64>(count, bytes_left() / sizeof(u16))));
  read_up_to(words.data(), words.size() * sizeof(u16));
  if constexpr (std::endian::native == std::endian::big) {
    for (u16& word : words) word = load_u16(reinterpret_cast<const u8*>(&word));
  }
  return words;
}

std::vector<float> CFileWMP::read_floats(u64 count) {
  std::vector<float> values(static_cast<std::size_t>(std::min<u64>(count, bytes_left() / sizeof(float))));
  read_up_to(values.data(), values.size() * sizeof(float));
  if constexpr (std::endian::native == std::endian::big) {
    for (float& value : values) value = load_f32(reinterpret_cast<const u8*>(&value));
  }
  return values;
}

}  // namespace traguardo
