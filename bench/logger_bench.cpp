// SPDX-License-Identifier: MIT
// Million samples per second of the logger reader, beside a floor measured in the same run: the plainest loop that
// checks a frame's first and last byte and appends 12 bytes per sample to a mapped file that has its full size from the
// start.
//
//   bench_logger --benchmark_counters_tabular=true
//
// The ratio to look at: items_per_second of Parse/... over that of Floor/... with the same arguments. The expansion of
// a compressed session stands beside the plainest loop around zlib with buffers of the same size, from file to file.

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>

#include "logger/logger_parser.h"
#include "logger/lz77.h"
#include "support/platform/platform.h"
#include "wire/qlt.h"

namespace traguardo {
namespace {

enum Kind : i64 { kSingle, kMultiple, kGroup, kMixed };
constexpr u64 kSamples = 5'000'000;
constexpr u32 kPerMultiple = 20;
constexpr u32 kGroupSize = 20;

struct Session {
  std::filesystem::path path;
  u64 frames = 0;
  std::size_t stream_begin = 0;
  std::vector<u8> bytes;
};

void append(std::vector<u8>* out, const wire::Bytes& more) {
  out->insert(out->end(), more.begin(), more.end());
}

std::vector<u8> channel_table(u32 channels) {
  std::vector<wire::Channel> rows(channels);
  for (u32 i = 0; i < channels; ++i) {
    rows[i].index = static_cast<u16>(i);
    rows[i].name = "channel " + std::to_string(i);
    rows[i].period_us = 1000;
  }
  wire::Bytes groups;
  for (u32 group = 0; group < channels / kGroupSize; ++group) {
    std::vector<u16> members;
    for (u32 i = 0; i < kGroupSize; ++i) members.push_back(static_cast<u16>(group * kGroupSize + i));
    append(&groups, wire::grp(static_cast<u16>(group), members));
  }
  return wire::cnf(rows, groups);
}

// Time goes up by a millisecond for each round over all channels, so every channel's times rise strictly.
Session make_session(Kind kind, u32 channels) {
  Session session;
  std::vector<u8>& out = session.bytes;
  out.reserve(kSamples * 12);
  append(&out, channel_table(channels));
  session.stream_begin = out.size();
  const u64 rounds = kSamples / channels;
  // Each value in two bytes, a channel or a sample further on than the one before.
  const auto frame = [&](char letter, u64 time, u32 index, u32 values) {
    ++session.frames;
    const std::size_t begin = out.size();
    out.resize(begin + wire::kFrameHeadSize + (letter == 'M' ? 2 : 0) + 2 * values + 1);
    u8* at = wire::put_frame_head(&out[begin], letter, static_cast<u32>(time), index);
    if (letter == 'M') at = wire::put_u16(at, values);
    for (u32 i = 0; i < values; ++i) at = wire::put_u16(at, static_cast<u32>((time + i) & 0x7FFF));
    wire::put_u8(at, ')');
  };
  const auto round = [&](Kind one, u64 r) {
    if (one == kGroup) {
      for (u32 g = 0; g < channels / kGroupSize; ++g) frame('G', r, g, kGroupSize);
    } else {
      for (u32 c = 0; c < channels; ++c) frame(one == kSingle ? 'S' : 'M', r, c, one == kSingle ? 1 : kPerMultiple);
    }
  };
  for (u64 r = 0; r < rounds;) {
    const Kind one = kind != kMixed ? kind : static_cast<Kind>(r / kPerMultiple % 3);
    round(one, r);
    r += one == kMultiple ? kPerMultiple : 1;
  }
  append(&out, wire::tail());
  session.path = std::filesystem::temp_directory_path() /
                 ("traguardo-bench-" + platform::unique_token() + "-" + std::to_string(kind) + ".qlt");
  std::ofstream(session.path, std::ios::binary)
      .write(reinterpret_cast<const char*>(out.data()), static_cast<std::streamsize>(out.size()));
  return session;
}

class Sessions {
 public:
  ~Sessions() {
    for (auto& [key, session] : sessions_) std::filesystem::remove(session.path);
  }
  const Session& get(Kind kind, u32 channels) {
    const auto key = std::make_pair(kind, channels);
    if (!sessions_.contains(key)) sessions_[key] = make_session(kind, channels);
    return sessions_[key];
  }

 private:
  std::map<std::pair<Kind, u32>, Session> sessions_;
};
Sessions g_sessions;

void Parse(benchmark::State& state) {
  const Session& session = g_sessions.get(static_cast<Kind>(state.range(0)), static_cast<u32>(state.range(1)));
  u64 samples = 0;
  for (auto _ : state) {
    state.PauseTiming();
    // A folder of its own for each round: a file system may look long for a place where it has just deleted a thousand
    // files, which is no cost of reading.
    const std::filesystem::path folder = session.path.string() + "-" + platform::unique_token();
    std::filesystem::create_directory(folder);
    std::filesystem::create_hard_link(session.path, folder / "a.qlt");
    state.ResumeTiming();
    {
      CParserZep_2Gv4 reader(platform::path_from_host_bytes((folder / "a.qlt").string()), {});
      reader.SetMantieniCostanti(false);
      if (!reader.ParsaFile(nullptr)) state.SkipWithError("not read");
      state.PauseTiming();
      samples = 0;
      for (const auto& channel : reader.GetCanali()) samples += channel->GetNumValori();
      state.ResumeTiming();
    }
    state.PauseTiming();
    std::filesystem::remove_all(folder);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(static_cast<i64>(samples) * state.iterations());
}

void Floor(benchmark::State& state) {
  const Session& session = g_sessions.get(static_cast<Kind>(state.range(0)), static_cast<u32>(state.range(1)));
  const std::wstring path = platform::path_from_host_bytes(session.path.string() + ".floor");
  u64 samples = 0;
  for (auto _ : state) {
    platform::File file = platform::File::open(path, platform::Access::kReadWrite, platform::Share::kRead,
                                               platform::Creation::kCreateOrTruncate);
    std::vector<u8> buffer(1U << 16);
    u8* out = buffer.data();
    u64 written = 0;
    const u8* at = session.bytes.data() + session.stream_begin;
    samples = 0;
    for (u64 frame = 0; frame < session.frames; ++frame) {
      const u8 letter = at[1];
      const u32 count = letter == 'S' ? 1 : letter == 'M' ? kPerMultiple : kGroupSize;
      const u8* data = at + (letter == 'M' ? 10 : 8);
      const u8* end = data + count * 2;
      if (*at != '(' || *end != ')') {
        state.SkipWithError("no frame");
        break;
      }
      const u64 time = u64{load_u32(at + 2)} * 1000;
      for (u32 i = 0; i < count; ++i, out += 12) {
        store_u64(out, time);
        store_f32(out + 8, static_cast<float>(load_u16(data + 2 * i)));
      }
      samples += count;
      at = end + 1;
      if (out - buffer.data() > 48 << 10) {
        file.write_at(written, buffer.data(), static_cast<std::size_t>(out - buffer.data()));
        written += static_cast<u64>(out - buffer.data());
        out = buffer.data();
      }
    }
    benchmark::DoNotOptimize(out);
  }
  platform::delete_file(path);
  state.SetItemsProcessed(static_cast<i64>(samples) * state.iterations());
}

class CompressedSession {
 public:
  CompressedSession() : plain_size_(g_sessions.get(kMixed, 20).bytes.size()) {
    const std::vector<u8>& plain = g_sessions.get(kMixed, 20).bytes;
    uLongf size = compressBound(static_cast<uLong>(plain.size()));
    std::vector<u8> packed(size);
    compress(packed.data(), &size, plain.data(), static_cast<uLong>(plain.size()));
    std::ofstream(source(), std::ios::binary)
        .write(reinterpret_cast<const char*>(packed.data()), static_cast<std::streamsize>(size));
  }
  ~CompressedSession() {
    std::filesystem::remove(source());
    std::filesystem::remove(target());
  }
  std::string source() const { return base_ + ".qlc"; }
  std::string target() const { return base_ + ".qlt"; }
  // Bytes per second are those that come out.
  void count(benchmark::State& state) const {
    if (std::filesystem::file_size(target()) != plain_size_) state.SkipWithError("not expanded");
    state.SetBytesProcessed(static_cast<i64>(plain_size_) * state.iterations());
  }

 private:
  std::size_t plain_size_;
  std::string base_ =
      (std::filesystem::temp_directory_path() / ("traguardo-bench-" + platform::unique_token())).string();
};

void Expand(benchmark::State& state) {
  const CompressedSession session;
  for (auto _ : state) {
    if (CLz77().Decomprimi(session.source().c_str(), session.target().c_str()) != 0) state.SkipWithError("damaged");
  }
  session.count(state);
}

// Into a new file each time and under its final name at the end, as an expansion does.
void ExpandFloor(benchmark::State& state) {
  const CompressedSession session;
  const std::string fresh = session.target() + ".tmp";
  static std::array<u8, 16384> input;
  static std::array<u8, 16384> output;
  for (auto _ : state) {
    std::FILE* in = std::fopen(session.source().c_str(), "rb");
    std::FILE* out = std::fopen(fresh.c_str(), "wb");
    z_stream stream{};
    inflateInit(&stream);
    int result = Z_OK;
    while (result == Z_OK) {
      if (stream.avail_in == 0) {
        stream.next_in = input.data();
        stream.avail_in = static_cast<uInt>(std::fread(input.data(), 1, input.size(), in));
      }
      stream.next_out = output.data();
      stream.avail_out = static_cast<uInt>(output.size());
      result = inflate(&stream, Z_NO_FLUSH);
      std::fwrite(output.data(), 1, output.size() - stream.avail_out, out);
    }
    inflateEnd(&stream);
    std::fclose(out);
    std::fclose(in);
    std::filesystem::rename(fresh, session.target());
  }
  session.count(state);
}

void arguments(benchmark::internal::Benchmark* b) {
  b->ArgNames({"kind", "channels"})->Unit(benchmark::kMillisecond)->UseRealTime();
  for (const i64 kind : {kSingle, kMultiple, kGroup, kMixed}) {
    for (const i64 channels : {20, 200, 1000}) b->Args({kind, channels});
  }
}
BENCHMARK(Parse)->Apply(arguments);
BENCHMARK(Floor)->Apply(arguments);
BENCHMARK(Expand)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ExpandFloor)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace traguardo

BENCHMARK_MAIN();
