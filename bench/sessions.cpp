// SPDX-License-Identifier: MIT
#include "sessions.h"

#include <zlib.h>

#include <fstream>
#include <stdexcept>
#include <vector>

#include "wire/jts.h"
#include "wire/qlt.h"
#include "wire/wmp.h"

namespace traguardo::bench {

namespace {

using wire::Byte;
using wire::Bytes;
using wire::operator+;

constexpr std::size_t kPiece = 8U << 20;

// Bytes on their way into a file.
class Writer {
 public:
  explicit Writer(const std::string& path) : out_(path, std::ios::binary) { buffer_.reserve(kPiece + (1U << 20)); }

  Bytes& buffer() {
    if (buffer_.size() > kPiece) flush();
    return buffer_;
  }
  void add(const Bytes& bytes) { buffer().insert(buffer_.end(), bytes.begin(), bytes.end()); }
  void finish() {
    flush();
    out_.close();
    if (!out_) throw std::runtime_error("a session of the benchmark can't be written");
  }
  std::size_t written() const { return written_ + buffer_.size(); }

 private:
  void flush() {
    out_.write(reinterpret_cast<const char*>(buffer_.data()), static_cast<std::streamsize>(buffer_.size()));
    written_ += buffer_.size();
    buffer_.clear();
  }

  std::ofstream out_;
  Bytes buffer_;
  std::size_t written_ = 0;
};

Bytes channel_table(const Shape& shape) {
  std::vector<wire::Channel> channels(shape.channels);
  for (std::uint32_t i = 0; i < shape.channels; ++i) {
    channels[i].index = static_cast<std::uint16_t>(i);
    channels[i].name = "channel " + std::to_string(i);
    channels[i].period_us = shape.period_ms * 1000;
  }
  Bytes groups;
  for (std::uint32_t first = 0; first + shape.channels_per_group <= shape.channels; first += shape.channels_per_group) {
    std::vector<std::uint16_t> members;
    for (std::uint32_t i = 0; i < shape.channels_per_group; ++i)
      members.push_back(static_cast<std::uint16_t>(first + i));
    groups = std::move(groups) + wire::grp(static_cast<std::uint16_t>(first / shape.channels_per_group), members);
  }
  return wire::cnf(channels, groups);
}

class FrameWriter {
 public:
  FrameWriter(const Shape& shape, Writer* writer, Session* session)
      : shape_(shape), writer_(writer), session_(session) {}

  // A sample of each channel, or as many as a frame holds.
  void round(Frames kind, std::uint32_t time_ms, std::uint64_t number) {
    const bool is_group = kind == Frames::group;
    const std::uint32_t count = is_group ? shape_.channels / shape_.channels_per_group : shape_.channels;
    const std::uint32_t values = is_group                   ? shape_.channels_per_group
                                 : kind == Frames::multiple ? shape_.samples_per_multiple
                                                            : 1;
    for (std::uint32_t index = 0; index < count; ++index) {
      Bytes& out = writer_->buffer();
      const std::size_t at = out.size();
      out.resize(at + wire::kFrameHeadSize);
      wire::put_frame_head(&out[at], is_group ? 'G' : kind == Frames::multiple ? 'M' : 'S', time_ms, index);
      if (kind == Frames::multiple) put_word(&out, values);
      for (std::uint32_t i = 0; i < values; ++i) put_word(&out, (number + i) & 0x7FFF);
      ++session_->frames;
      session_->samples += values;
      const bool is_broken = shape_.broken_every != 0 && session_->frames % shape_.broken_every == 0;
      out.push_back(is_broken ? '!' : ')');
    }
  }

 private:
  static void put_word(Bytes* out, std::uint64_t value) {
    out->push_back(static_cast<Byte>(value));
    out->push_back(static_cast<Byte>(value >> 8));
  }

  const Shape& shape_;
  Writer* writer_;
  Session* session_;
};

}  // namespace

void write_session(const Shape& shape, Session* session) {
  Writer writer(session->path());
  writer.add(channel_table(shape));
  for (std::uint32_t i = 0; i < shape.solutions; ++i) {
    wire::GpsSolution solution;
    solution.time_ms = i * 40;
    solution.time_of_week_ms = 100000 + i * 40;
    solution.x_cm += static_cast<std::int32_t>(i % 4000) * 100;
    solution.vx_cm_s = 2500;
    writer.add(solution.tagged());
  }
  session->stream_begin = writer.written();
  FrameWriter frames(shape, &writer, session);
  constexpr Frames kInTurn[] = {Frames::single, Frames::multiple, Frames::group};
  const std::uint64_t rounds = shape.samples / shape.channels;
  for (std::uint64_t round = 0, turn = 0; round < rounds; ++turn) {
    const Frames kind = shape.frames != Frames::mixed ? shape.frames : kInTurn[turn / 20 % 3];
    frames.round(kind, static_cast<std::uint32_t>(round * shape.period_ms), round);
    round += kind == Frames::multiple ? shape.samples_per_multiple : 1;
  }
  const auto all_ms = static_cast<std::uint32_t>(rounds * shape.period_ms);
  for (std::uint32_t lap = 1; lap <= shape.laps; ++lap) {
    wire::Lap mark;
    mark.lap = static_cast<std::uint16_t>(lap);
    const std::uint32_t lap_ms = shape.lap_ms != 0 ? shape.lap_ms : all_ms / shape.laps;
    mark.lap_time_ms = static_cast<std::int32_t>(lap_ms);
    mark.time_ms = lap * lap_ms;
    writer.add(mark.tagged());
  }
  writer.finish();
}

void write_compressed(const Session& plain, Session* packed) {
  std::ifstream in(plain.path(), std::ios::binary);
  const Bytes bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  uLongf size = compressBound(static_cast<uLong>(bytes.size()));
  Bytes out(size);
  if (compress2(out.data(), &size, bytes.data(), static_cast<uLong>(bytes.size()), 6) != Z_OK) {
    throw std::runtime_error("a session of the benchmark can't be compressed");
  }
  out.resize(size);
  Writer writer(packed->path());
  writer.add(out);
  writer.finish();
  packed->samples = plain.samples;
}

void write_older_session(std::uint32_t channels, std::uint32_t samples_each, Session* session, Session* trace) {
  wire::wmp::File file;
  file.duration_ms = samples_each * 10;
  file.laps = {{file.duration_ms}};
  for (std::uint32_t c = 0; c < channels; ++c) {
    wire::wmp::Channel channel;
    channel.name = "channel " + std::to_string(c);
    channel.sensor = 17;
    channel.parameters = {0.5F, 0, 4.5F, 150};
    for (std::uint32_t i = 0; i < samples_each; ++i) channel.words.push_back((i * 7 + c) & 0x0FFF);
    file.logged.push_back(std::move(channel));
  }
  Writer writer(session->path());
  writer.add(wire::wmp::build(file));
  writer.finish();
  session->samples = std::uint64_t{channels} * samples_each;
  Writer beside(trace->path());
  beside.add(wire::plain_jts(5));
  beside.finish();
}

void write_garbage(Garbage kind, std::size_t size, Session* session) {
  Writer writer(session->path());
  writer.add(channel_table({}));
  std::uint64_t state = 1;
  for (std::size_t done = 0; done < size; done += 8) {
    // Of the upper bits, which repeat late.
    state = state * 6364136223846793005U + 1442695040888963407U;
    const std::uint64_t value = kind == Garbage::zeros ? 0 : state >> 24;
    Bytes& out = writer.buffer();
    for (int i = 0; i < 8; ++i) out.push_back(static_cast<Byte>(value >> (i * 5)));
  }
  writer.add(wire::frame_s(1, 0, 1));
  writer.finish();
  session->samples = 1;
}

}  // namespace traguardo::bench
