// SPDX-License-Identifier: MIT
// Packets that came over a bus of 8-byte messages: their chunks are collected, and the rebuilt frame is decoded as if
// it stood in the file.

#include <algorithm>

#include "logger/frame_decoder.h"

namespace traguardo {

namespace {

constexpr u32 kRejected = 1;
constexpr u64 kHeaderOffset = 2;
constexpr u32 kLargestKind = 3;
constexpr u64 kMostData = 8;

}  // namespace

// `has_length`: the form "(c" with a length byte; "(C" ends at its first parenthesis.
u32 FrameDecoder::decode_chunk(const Frame& frame, bool has_length) {
  if (!frame.rebuilt && !progress_.Report(frame.position)) return kStopWalk;
  const u64 data_offset = has_length ? 7 : 6;
  if (frame.left < data_offset) {
    return reject(frame.position, &errors_.c, &Losses::broken_frames);
  }
  const ChunkHeader header(load_u32(frame.at + kHeaderOffset));
  if (header.kind() > kLargestKind) {
    return reject(frame.position, &errors_.c, &Losses::broken_frames);
  }
  CanMsgAssembler& assembler = assemblers_[header.key()];

  u64 length = 0;
  if (has_length) {
    length = frame.at[data_offset - 1];
  } else {
    const u8* begin = frame.at + data_offset;
    const u8* end = begin + std::min(kMostData + 1, frame.left - data_offset);
    length = static_cast<u64>(std::find(begin, end, static_cast<u8>(')')) - begin);
    if (begin + length == end) length = kMostData + 1;
  }
  if (length < 1 || length > kMostData) {
    return reject(frame.position, &assembler.m_err_dim_trama, &Losses::broken_frames);
  }
  const u64 frame_length = data_offset + length + 1;
  if (frame_length > frame.left) {
    return reject(frame.position, &assembler.m_err_lun_residua, &Losses::broken_frames);
  }
  if (frame.at[frame_length - 1] != ')') {
    return reject(frame.position, &assembler.m_err_parentesi, &Losses::broken_frames);
  }

  // From here on the frame is consumed, whatever happens to its packet.
  const u32 consumed = static_cast<u32>(frame_length);
  if (!assembler.Store(header.chunk(), {frame.at + data_offset, static_cast<std::size_t>(length)})) {
    assembler.m_err_frame_n_gia_presente.Append(frame.position);
  }
  if (!header.is_last()) return consumed;
  if (!assembler.is_complete()) {
    // The chunks stay: the next packet of this stream meets them.
    assembler.m_err_highest_frame.Append(frame.position);
    ++losses_.packets;
    return consumed;
  }
  if (assembler.is_empty()) return consumed;
  u64 failed_index = 0;
  if (Rebuild(header, &assembler, &failed_index)) {
    const std::span<const u8> rebuilt = assembler.rebuilt();
    const u32 result = decode_frame(rebuilt[1], Frame{rebuilt.data(), rebuilt.size(), frame.position, true});
    if (result == kStopWalk) return kStopWalk;
    if (result == kRejected) assembler.m_err_interpreta.Append(frame.position);
  } else {
    assembler.m_err_riscostruisci_ich.push_back(failed_index);
    assembler.m_err_riscostruisci_ptr.Append(frame.position);
    ++losses_.packets;
  }
  assembler.Clear();
  return consumed;
}

// False with the index that is in no table.
bool FrameDecoder::Rebuild(const ChunkHeader& header, CanMsgAssembler* assembler, u64* failed_index) {
  const u16 index = header.index();
  *failed_index = index;
  switch (static_cast<PacketKind>(header.kind())) {
    case PacketKind::kS:
      if (table_.channel_at(index) == nullptr) return false;
      assembler->rebuild_single('S', index);
      return true;
    case PacketKind::kM:
      if (table_.channel_at(index) == nullptr) return false;
      assembler->rebuild_multiple(index, table_.channel_at(index)->sample_size());
      return true;
    case PacketKind::kA:
      if (table_.acquisitions().Find(index) == nullptr) return false;
      assembler->rebuild_single('A', index);
      return true;
    case PacketKind::kG: {
      // The index stands in the packet; one too short to hold it is a malformed frame, which the decoder rejects.
      assembler->rebuild_group();
      u16 group = 0;
      if (!assembler->group_index(&group)) return true;
      *failed_index = group;
      return table_.groups().Find(group) != nullptr;
    }
  }
  return false;
}

}  // namespace traguardo
