// SPDX-License-Identifier: MIT
// The sessions that the benchmarks read: files of a given size in which every sample counts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace traguardo::bench {

enum class Frames { single, multiple, group, mixed };

struct Shape {
  Frames frames = Frames::single;
  std::uint32_t channels = 20;
  std::uint64_t samples = 5'000'000;
  std::uint32_t samples_per_multiple = 20;
  std::uint32_t channels_per_group = 20;
  std::uint32_t broken_every = 0;  // frames; 0: none is
  std::uint32_t period_ms = 1;     // between two samples of a channel
  std::uint32_t laps = 0;          // even ones, over...
  std::uint32_t lap_ms = 0;        // ...this time each; 0: the whole session
  std::uint32_t solutions = 0;     // of the GPS, 25 a second, in front of the frames
};

// A file that goes when its owner does.
class Session {
 public:
  Session(const std::filesystem::path& folder, const std::string& name) : path_(folder / name) {}
  ~Session() { std::filesystem::remove(path_); }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  std::string path() const { return path_.string(); }
  std::size_t stream_begin = 0;  // the first frame's place
  std::uint64_t frames = 0;      // that follow it
  std::uint64_t samples = 0;

 private:
  std::filesystem::path path_;
};

void write_session(const Shape& shape, Session* session);
void write_compressed(const Session& plain, Session* packed);
// The older family: logged channels of 100 Hz with linear sensors, and a trace of the GPS beside the file.
void write_older_session(std::uint32_t channels, std::uint32_t samples_each, Session* session, Session* trace);
// A channel table, `size` bytes of no meaning, and a frame.
enum class Garbage { zeros, noise };
void write_garbage(Garbage kind, std::size_t size, Session* session);

}  // namespace traguardo::bench
