// SPDX-License-Identifier: MIT
// One open session file as the commands see it: the C interface with its results turned into values and its failures
// into one line for a person. Where the interface can't tell, or would take memory without bounds, it looks inside.
#pragma once

#include <cstdint>
#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace traguardo::tool {

// People count laps from 1, the C interface from 0.
inline constexpr int kFirstLapNumber = 1;

enum class ChannelKind {
  logged,
  gps,      // derived from the receiver's solutions, on an even grid
  gps_raw,  // as the receiver gave them
};

struct Channel {
  ChannelKind kind = ChannelKind::logged;
  int index = 0;     // in the C interface, within its kind
  std::string name;  // UTF-8
  std::string unit;  // UTF-8
};

struct Lap {
  int number = 0;
  double start_s = 0;
  double duration_s = 0;
  bool finished = true;  // no mark closed it otherwise: it ends where the recording does
};

// The reader's option for that.
inline constexpr const char* kRecoverClock = "recover-clock=1";

struct Samples {
  std::vector<double> times_s;
  std::vector<double> values;
};

class Session {
 public:
  // Throws Failure with the reason if the file can't be opened. recover: a clock that all behind it contradict is taken
  // back.
  explicit Session(const std::string& path, bool recover = false);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const std::string& path() const { return path_; }
  // In the table of open files, for the commands that look inside.
  int handle() const { return handle_; }
  std::string vehicle() const;
  std::string track() const;
  std::string racer() const;
  std::string championship() const;
  std::string venue_type() const;
  std::tm date() const;

  std::vector<Lap> laps() const;
  // The index of a lap by the number that laps() shows. Throws Failure.
  int lap_index(int number) const;

  std::vector<Channel> logged_channels() const;
  // Both are empty for a file without GPS.
  const std::vector<Channel>& gps_channels();
  const std::vector<Channel>& gps_raw_channels();
  // By its exact name: a logged channel, else a derived GPS channel, else a raw one. Throws Failure.
  Channel find_channel(const std::string& name);

  // The time of the last logged sample, or of the last GPS solution where nothing else was logged. A file starts at 0.
  double duration_s() const;
  // How many derived GPS channels have samples, and how many solutions there are, without working the channels out.
  std::size_t gps_channel_count() const;
  std::size_t gps_solution_count() const;

  // Of all samples, or of those of one lap (an index, from 0). A GPS channel may have hundreds of millions where a
  // clock went wild.
  std::uint64_t sample_count(const Channel& channel, std::optional<int> lap) const;
  // All of them, with times in seconds; `samples` is overwritten. Not for derived GPS channels, see read_in_pieces.
  void read(const Channel& channel, std::optional<int> lap, Samples& samples) const;
  // The same in pieces of bounded size where the file doesn't bound the number, for as long as `take` gives true.
  using TakeSamples = std::function<bool(const Samples& piece)>;
  void read_in_pieces(const Channel& channel, std::optional<int> lap, const TakeSamples& take) const;

 private:
  void read_grid(const Channel& channel, std::optional<int> lap, const TakeSamples& take) const;

  std::string path_;
  int handle_ = 0;
  std::optional<std::vector<Channel>> gps_;
  std::optional<std::vector<Channel>> gps_raw_;
};

// Throws Failure where standard output is the session file itself, as for a shell that was told to append to it.
void refuse_printing_onto(const std::string& session);

// Where the reader keeps what it has of a session while that is open: beside it, or where nothing can be made there, as
// on a medium that can't be written, in the system's folder for temporary files. Call it before the session is opened;
// who named a folder by TRAGUARDO_STORE_FOLDER keeps that.
void choose_store_folder(const std::string& session);

// When the session began, ISO 8601 without a zone.
std::string iso_date(const std::tm& date);

}  // namespace traguardo::tool
