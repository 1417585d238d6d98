// SPDX-License-Identifier: MIT
// The data stream: everything in the file that is no tag. One function per kind of frame; chunks.cpp has the packets
// that came in pieces.
#pragma once

#include <map>
#include <vector>

#include "logger/channel_table.h"
#include "logger/chunk_assembler.h"
#include "logger/error_list.h"
#include "logger/input_file.h"
#include "logger/losses.h"
#include "logger/reader_clock.h"
#include "logger/walk_progress.h"

namespace traguardo {

// Where frames were refused, by kind, and bytes that belong to nothing.
struct FrameErrors {
  ErrorList s, m, a, g, c, file;
};

class FrameDecoder {
 public:
  // All are borrowed; `size` bytes of the file count.
  FrameDecoder(InputFile* input, u32 size, ChannelTable* table, ReaderClock* clock, WalkProgress* progress)
      : input_(*input), size_(size), table_(*table), clock_(*clock), progress_(*progress) {}

  // The bytes from an offset on, where no tag begins: gives how many of them the decoder is through with, at least 1,
  // or kStopWalk.
  u32 decode(u32 offset);
  // Forgets all that it has seen.
  void Reset();

  FrameErrors& errors() { return errors_; }
  const FrameErrors& errors() const { return errors_; }
  Losses& losses() { return losses_; }
  const Losses& losses() const { return losses_; }
  const std::map<u32, CanMsgAssembler>& assemblers() const { return assemblers_; }

 private:
  struct Frame {
    const u8* at;  // the opening parenthesis; kLookAhead bytes follow, or all that are left
    u64 left;      // bytes from there to the end of the file, or of the buffer that it was rebuilt in
    u64 position;  // file offset that errors are reported under
    bool rebuilt;  // stands in a buffer of its own, not in the file
    u64 offset_of(const u8* bytes) const { return rebuilt ? position : position + static_cast<u64>(bytes - at); }
  };
  static constexpr u64 kLookAhead = 4096;
  u32 pass_garbage(const u8* bytes, u64 at);
  u64 decode_plain_run(const u8* bytes, u64 ready);
  u32 decode_frame(u8 letter, const Frame& frame);
  u32 decode_s(Frame frame);
  u32 decode_m(Frame frame);
  u32 decode_a(const Frame& frame);
  u32 decode_g(const Frame& frame);
  // Whether a frame of that length is all there, with its closing parenthesis; its bytes then stand in one piece.
  bool closes(Frame* frame, u64 length) {
    if (length > frame->left) return false;
    if (length > kLookAhead && !frame->rebuilt) return closes_far_away(frame, length);
    return frame->at[length - 1] == ')';
  }
  bool closes_far_away(Frame* frame, u64 length);
  u32 decode_places(Frame frame, const DescriptorTable& table, ErrorList* errors, void (SStatMisura::*count_sample)());
  [[gnu::noinline]] static bool add_odd(const ChannelEntry& channel, u64 time, const u8* data, const Frame& frame,
                                        void (SStatMisura::*count_sample)());
  u32 reject(u64 position, ErrorList* errors, u64 Losses::*cause);
  bool believes_clock(u64 position, u64 time, u64 last);
  bool covers_empty_samples(u64 samples);
  const std::vector<ChannelDescriptor::Place>& believed_places(const ChannelDescriptor& descriptor) {
    return covers_empty_samples(descriptor.empty_places()) ? descriptor.places() : descriptor.places_with_bytes();
  }
  u32 store_failed();
  u32 decode_chunk(const Frame& frame, bool has_length);
  bool Rebuild(const ChunkHeader& header, CanMsgAssembler* assembler, u64* failed_index);

  InputFile& input_;
  u32 size_;
  ChannelTable& table_;
  ReaderClock& clock_;
  WalkProgress& progress_;
  FrameErrors errors_;
  Losses losses_;
  u64 empty_samples_ = 0;  // taken so far; such a claim costs a file nothing
  std::map<u32, CanMsgAssembler> assemblers_;
};

}  // namespace traguardo
