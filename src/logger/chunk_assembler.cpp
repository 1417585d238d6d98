// SPDX-License-Identifier: MIT
#include "logger/chunk_assembler.h"

#include <algorithm>

namespace traguardo {

void CanMsgAssembler::Open(char letter) {
  rebuilt_.assign({static_cast<u8>('('), static_cast<u8>(letter)});
}

// A first chunk shorter than a time stamp gives a malformed frame, which the frame decoder rejects.
void CanMsgAssembler::append_time_and_index(u16 index) {
  const std::span<const u8> first = chunks_.begin()->second.data();
  rebuilt_.insert(rebuilt_.end(), first.begin(),
                  first.begin() + std::min<std::ptrdiff_t>(kTimeStampSize, std::ssize(first)));
  rebuilt_.push_back(static_cast<u8>(index & 0xFF));
  rebuilt_.push_back(static_cast<u8>(index >> 8));
}

void CanMsgAssembler::append_rest(std::vector<u8>* out) const {
  bool is_first = true;
  for (const auto& [number, chunk] : chunks_) {
    const std::span<const u8> data = chunk.data();
    const std::size_t skipped = is_first ? std::min(kTimeStampSize, data.size()) : 0;
    out->insert(out->end(), data.begin() + static_cast<std::ptrdiff_t>(skipped), data.end());
    is_first = false;
  }
}

void CanMsgAssembler::rebuild_single(char letter, u16 index) {
  Open(letter);
  append_time_and_index(index);
  append_rest(&rebuilt_);
  rebuilt_.push_back(')');
}

bool CanMsgAssembler::group_index(u16* index) const {
  constexpr std::size_t kIndexOffset = 6;
  if (rebuilt_.size() < kIndexOffset + 3) return false;
  *index = load_u16(rebuilt_.data() + kIndexOffset);
  return true;
}

void CanMsgAssembler::rebuild_group() {
  Open('G');
  for (const auto& [number, chunk] : chunks_) {
    rebuilt_.insert(rebuilt_.end(), chunk.data().begin(), chunk.data().end());
  }
  rebuilt_.push_back(')');
}

// The sample that stands first in the chunks ends up as the last of the frame: the device sends it so.
void CanMsgAssembler::rebuild_multiple(u16 index, u32 sample_size) {
  Open('M');
  append_time_and_index(index);
  std::vector<u8> samples;
  append_rest(&samples);
  const std::size_t first_sample = std::min<std::size_t>(sample_size, samples.size());
  const std::size_t others = samples.size() - first_sample;
  const u16 count = static_cast<u16>((sample_size == 0 ? 0 : others / sample_size) + 1);
  rebuilt_.push_back(static_cast<u8>(count & 0xFF));
  rebuilt_.push_back(static_cast<u8>(count >> 8));
  const auto behind_first = samples.begin() + static_cast<std::ptrdiff_t>(first_sample);
  rebuilt_.insert(rebuilt_.end(), behind_first, samples.end());
  rebuilt_.insert(rebuilt_.end(), samples.begin(), behind_first);
  rebuilt_.push_back(')');
}

}  // namespace traguardo
