// SPDX-License-Identifier: MIT
// Collects the chunks of one packet stream that came over a bus of 8-byte messages.
#pragma once

#include <algorithm>
#include <array>
#include <map>
#include <span>
#include <vector>

#include "logger/error_list.h"

namespace traguardo {

enum class PacketKind : u32 { kS = 0, kM = 1, kG = 2, kA = 3 };

// The u32 in front of every chunk.
class ChunkHeader {
 public:
  explicit ChunkHeader(u32 word) : word_(word) {}
  u16 chunk() const { return static_cast<u16>(word_ & 0x3FF); }
  bool is_last() const { return (word_ >> 10 & 1) != 0; }
  u16 index() const { return static_cast<u16>(word_ >> 11 & 0x1FF); }
  u32 kind() const { return word_ >> 20 & 0xF; }
  u32 key() const { return kind() * 65535 + index(); }

 private:
  u32 word_;
};

class CanMsgAssembler {
 public:
  // At most 8 bytes. False if the chunk number is there already.
  bool Store(u16 chunk, std::span<const u8> data) {
    if (!chunks_.try_emplace(chunk, data).second) return false;
    if (chunk > highest_chunk_) highest_chunk_ = chunk;
    return true;
  }
  bool is_complete() const { return highest_chunk_ == static_cast<i32>(chunks_.size()) - 1; }
  bool is_empty() const { return chunks_.empty(); }
  void Clear() {
    chunks_.clear();
    rebuilt_.clear();
    highest_chunk_ = -1;
  }

  // Rebuilds a frame from the stored chunks. kM needs the channel's sample size.
  void rebuild_single(char letter, u16 index);
  void rebuild_multiple(u16 index, u32 sample_size);
  void rebuild_group();
  // The group index of a rebuilt kG packet, which stands inside it; false if the packet is too short to hold it.
  bool group_index(u16* index) const;
  std::span<const u8> rebuilt() const { return rebuilt_; }

  ErrorList m_err_dim_trama;
  ErrorList m_err_lun_residua;
  ErrorList m_err_parentesi;
  ErrorList m_err_frame_n_gia_presente;
  ErrorList m_err_highest_frame;
  std::vector<u64> m_err_riscostruisci_ich;
  ErrorList m_err_riscostruisci_ptr;
  ErrorList m_err_interpreta;

 private:
  static constexpr std::size_t kTimeStampSize = 4;

  void Open(char letter);
  void append_time_and_index(u16 index);
  // All chunks' bytes behind the time stamp.
  void append_rest(std::vector<u8>* out) const;

  // The bytes of one message.
  class Chunk {
   public:
    explicit Chunk(std::span<const u8> data) : size_(static_cast<u8>(data.size())) {
      std::copy(data.begin(), data.end(), bytes_.begin());
    }
    std::span<const u8> data() const { return {bytes_.data(), size_}; }

   private:
    std::array<u8, 8> bytes_{};
    u8 size_;
  };

  i32 highest_chunk_ = -1;
  std::map<u16, Chunk> chunks_;
  std::vector<u8> rebuilt_;
};

}  // namespace traguardo
