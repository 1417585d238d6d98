// SPDX-License-Identifier: MIT
// A frame is believed when its index is known, it fits, and its closing parenthesis is where it must be; anything else
// costs one byte, and the next frame or tag is found by itself.

#include "logger/frame_decoder.h"

#include <algorithm>
#include <limits>

namespace traguardo {

namespace {

constexpr u32 kRejected = 1;
constexpr u64 kFrameHead = ChannelEntry::kSingleHead;
constexpr u16 kSingleMark = '(' | 'S' << 8;
constexpr u64 kMultipleHead = 10;  // the same and a count
constexpr u64 kTimeOffset = 2;
constexpr u64 kIndexOffset = 6;
constexpr u64 kCountOffset = 8;
constexpr u64 kMicrosecondsPerMillisecond = 1000;

u64 time_of(const u8* frame) {
  return u64{load_u32(frame + kTimeOffset)} * kMicrosecondsPerMillisecond;
}

// "<h" may be a tag: the walker tests it.
bool is_tag_mark(const u8* bytes, u64 left) {
  return bytes[0] == '<' && left > 1 && bytes[1] == 'h';
}

// The first '(' or '<' in a stretch, or its end; eight bytes at a time.
const u8* next_mark(const u8* from, const u8* end) {
  constexpr u64 kOnes = 0x0101010101010101;
  constexpr u64 kHighs = 0x8080808080808080;
  const auto has_zero = [](u64 word) { return ((word - kOnes) & ~word & kHighs) != 0; };
  for (; end - from >= 8; from += 8) {
    const u64 word = load_u64(from);
    if (has_zero(word ^ (kOnes * '(')) || has_zero(word ^ (kOnes * '<'))) break;
  }
  while (from < end && *from != '(' && *from != '<') ++from;
  return from;
}

// False if the store can't grow any more; a refused sample is only noted.
bool Accept(CCanaleQLT::Esito outcome, SStatMisura* statistics, u64 position) {
  if (outcome == CCanaleQLT::kRifiutato && statistics != nullptr) statistics->AggiungiErrore(position);
  return outcome != CCanaleQLT::kMemoriaFinita;
}

}  // namespace

u32 FrameDecoder::decode(u32 offset) {
  u64 at = offset;
  while (at < size_) {
    const u64 left = size_ - at;
    const u8* bytes = input_.At(at, std::min(left, kLookAhead));
    if (bytes[0] != '(') {
      if (at == offset) return pass_garbage(bytes, at);
      // What follows good frames is the walker's: it may be a tag.
      if (!is_tag_mark(bytes, left)) errors_.file.Append(at);
      break;
    }
    if (const u64 run = decode_plain_run(bytes, std::min(input_.ready(at), clock_.to_next_taken_back(at))); run != 0) {
      at += run;
      continue;
    }
    const u8 letter = left > 1 ? bytes[1] : 0;
    const u32 consumed = decode_frame(letter, Frame{bytes, left, at, false});
    if (consumed == kStopWalk) return kStopWalk;
    if (consumed == kRejected) ++losses_.bytes;
    if (consumed == 0) {
      errors_.file.Append(at);
      break;
    }
    at += consumed;
  }
  const u64 advanced = std::min<u64>(at, size_) - offset;
  if (advanced != 0) return static_cast<u32>(advanced);
  ++losses_.bytes;
  return 1;
}

void FrameDecoder::Reset() {
  errors_ = {};
  losses_ = {};
  empty_samples_ = 0;
  assemblers_.clear();
}

// Bytes where neither a tag nor a frame begins: those up to the next that could. Where tags are no longer looked for
// the walk ends.
u32 FrameDecoder::pass_garbage(const u8* bytes, u64 at) {
  const u64 left = size_ - at;
  const u64 walked = left > kUnscannedTail ? left - kUnscannedTail : 1;
  if (is_tag_mark(bytes, left)) {
    ++losses_.bytes;
    return 1;
  }
  const u64 within = std::min(walked, input_.ready(at));
  const u64 count = static_cast<u64>(next_mark(bytes + 1, bytes + within) - bytes);
  errors_.file.append_run(at, count);
  losses_.bytes += count;
  return static_cast<u32>(count);
}

// The common case without its odd branches: (S frames of known channels with plain values, one behind the other, while
// nobody counts them. Gives the bytes that they take; the frame behind them is decode_frame's, whatever it is.
u64 FrameDecoder::decode_plain_run(const u8* bytes, u64 ready) {
  if (ready <= kFrameHead) return 0;
  const ChannelEntry* const channels = table_.entries().data();
  const u64 channel_count = table_.entries().size();
  const u8* at = bytes;
  const u8* const end = bytes + ready;
  const u8* const last_head = end - kFrameHead;
  // Within these bounds every clock is believed, whichever of them come before it.
  const u64 lowest = clock_.now() - std::min(clock_.now(), kOneMinute / 2);
  u64 highest = clock_.now();
  while (at < last_head && load_u16(at) == kSingleMark) {
    const u64 index = load_u16(at + kIndexOffset);
    if (index >= channel_count) break;
    const ChannelEntry& channel = channels[index];
    const u64 length = channel.plain_frame;
    if (length > static_cast<u64>(end - at) || at[length - 1] != ')') break;
    if (!channel.sink->has_room()) break;
    const u64 time = time_of(at);
    if (time - lowest > kOneMinute) [[unlikely]]
      break;
    highest = std::max(highest, time);
    channel.sink->AddValore(time, channel.reader(at + kFrameHead));
    at += length;
  }
  clock_.raise(highest);
  return static_cast<u64>(at - bytes);
}

// Its last byte is looked at first: a count in a broken frame may claim any length.
bool FrameDecoder::closes_far_away(Frame* frame, u64 length) {
  if (*input_.far(frame->position + length - 1, 1) != ')') return false;
  frame->at = input_.At(frame->position, length);
  return true;
}

// 0 for a letter that is no kind of frame.
u32 FrameDecoder::decode_frame(u8 letter, const Frame& frame) {
  switch (letter) {
    case 'S':
      return decode_s(frame);
    case 'M':
      return decode_m(frame);
    case 'A':
      return decode_a(frame);
    case 'G':
      return decode_g(frame);
    case 'C':
      return decode_chunk(frame, false);
    case 'c':
      return decode_chunk(frame, true);
    default:
      return 0;
  }
}

// A sample without bytes is a claim without cover: a frame of 11 bytes could ask for 65,535 of them. A file is believed
// a few for each of its bytes; beyond that they are left out, and nothing else.
bool FrameDecoder::covers_empty_samples(u64 samples) {
  constexpr u64 kPerByte = 4;
  constexpr u64 kAnyway = 65536;
  if (samples == 0) return true;
  if (empty_samples_ + samples > kPerByte * size_ + kAnyway) return false;
  empty_samples_ += samples;
  return true;
}

u32 FrameDecoder::reject(u64 position, ErrorList* errors, u64 Losses::*cause) {
  errors->Append(position);
  ++(losses_.*cause);
  return kRejected;
}

bool FrameDecoder::believes_clock(u64 position, u64 time, u64 last) {
  if (clock_.believes(position, time, last)) return true;
  ++losses_.clocks;
  return false;
}

u32 FrameDecoder::store_failed() {
  progress_.End(false);
  return kStopWalk;
}

u32 FrameDecoder::decode_s(Frame frame) {
  if (!frame.rebuilt && !progress_.Report(frame.position)) return kStopWalk;
  if (frame.left < kFrameHead) return reject(frame.position, &errors_.s, &Losses::broken_frames);
  const ChannelEntry* channel = table_.entry_at(load_u16(frame.at + kIndexOffset));
  if (channel == nullptr) return reject(frame.position, &errors_.s, &Losses::unknown_frames);
  const u64 length = kFrameHead + channel->sample_size + 1;
  if (!closes(&frame, length)) return reject(frame.position, &errors_.s, &Losses::broken_frames);
  const u64 time = time_of(frame.at);
  SStatMisura* statistics = channel->statistics;
  if (!believes_clock(frame.position, time, time)) {
    if (statistics != nullptr) statistics->AggiungiErrore(frame.position);
    return static_cast<u32>(length);
  }
  if (statistics != nullptr) statistics->ContaS();
  clock_.raise(time);
  const u8* sample = frame.at + kFrameHead;
  if (!Accept(channel->Add(time, sample, frame.offset_of(sample)), statistics, frame.position)) return store_failed();
  return static_cast<u32>(length);
}

u32 FrameDecoder::decode_m(Frame frame) {
  if (!frame.rebuilt && !progress_.Report(frame.position)) return kStopWalk;
  if (frame.left < kMultipleHead) return reject(frame.position, &errors_.m, &Losses::broken_frames);
  const ChannelEntry* channel = table_.entry_at(load_u16(frame.at + kIndexOffset));
  if (channel == nullptr) return reject(frame.position, &errors_.m, &Losses::unknown_frames);
  const u32 count = load_u16(frame.at + kCountOffset);
  const u64 sample_size = channel->sample_size;
  const u64 length = kMultipleHead + count * sample_size + 1;
  if (!closes(&frame, length) || (sample_size == 0 && !covers_empty_samples(count))) {
    return reject(frame.position, &errors_.m, &Losses::broken_frames);
  }
  const u64 time = time_of(frame.at);
  const u64 last = count == 0 ? 0 : time + u64{count - 1} * channel->object->record().period_us();
  SStatMisura* statistics = channel->statistics;
  if (!believes_clock(frame.position, time, last)) {
    if (statistics != nullptr) statistics->AggiungiErrore(frame.position);
    return static_cast<u32>(length);
  }
  if (statistics != nullptr) statistics->ContaM();
  if (!Accept(channel->add_many(time, count, frame.at + kMultipleHead), statistics, frame.position))
    return store_failed();
  if (count != 0) clock_.raise(last);
  return static_cast<u32>(length);
}

u32 FrameDecoder::decode_g(const Frame& frame) {
  return decode_places(frame, table_.groups(), &errors_.g, &SStatMisura::ContaG);
}

u32 FrameDecoder::decode_a(const Frame& frame) {
  return decode_places(frame, table_.acquisitions(), &errors_.a, &SStatMisura::ContaA);
}

// A sample of a place that is counted, or no plain value, or finds no room. False if the store can't grow any more.
bool FrameDecoder::add_odd(const ChannelEntry& channel, u64 time, const u8* data, const Frame& frame,
                           void (SStatMisura::*count_sample)()) {
  SStatMisura* const statistics = channel.statistics;
  if (statistics != nullptr) (statistics->*count_sample)();
  return Accept(channel.Add(time, data, frame.offset_of(data)), statistics, frame.position);
}

// One sample for each place of a descriptor; place n is n steps later than the frame. The step of a group is 0.
u32 FrameDecoder::decode_places(Frame frame, const DescriptorTable& table, ErrorList* errors,
                                void (SStatMisura::*count_sample)()) {
  if (!frame.rebuilt && !progress_.Report(frame.position)) return kStopWalk;
  if (frame.left < kFrameHead) return reject(frame.position, errors, &Losses::broken_frames);
  ChannelDescriptor* descriptor = table_.find_descriptor(table, load_u16(frame.at + kIndexOffset));
  if (descriptor == nullptr) return reject(frame.position, errors, &Losses::unknown_frames);
  const u64 length = kFrameHead + descriptor->data_length() + 1;
  if (!closes(&frame, length)) return reject(frame.position, errors, &Losses::broken_frames);
  const u64 time = time_of(frame.at);
  // Places without a channel at the end of the list have their times, too.
  const u64 step = descriptor->step_us();
  const u64 last = time + (descriptor->count() - 1) * step;
  if (!believes_clock(frame.position, time, last)) {
    errors->Append(frame.position);
    return static_cast<u32>(length);
  }
  clock_.raise(time);
  errors->Append(frame.position, descriptor->missing());
  const u8* data = frame.at + kFrameHead;
  const ChannelEntry* const channels = table_.entries().data();
  for (const ChannelDescriptor::Place& place : believed_places(*descriptor)) {
    const ChannelEntry& channel = channels[place.channel];
    const u64 sample_time = time + place.number * step;
    if (channel.plain_frame != ChannelEntry::kNotPlain && channel.sink->has_room()) [[likely]] {
      channel.sink->AddValore(sample_time, channel.reader(data));
    } else if (!add_odd(channel, sample_time, data, frame, count_sample)) {
      return store_failed();
    }
    data += channel.sample_size;
  }
  clock_.raise(last);
  return static_cast<u32>(length);
}

}  // namespace traguardo
