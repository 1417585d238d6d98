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
  // From the unit of the file to this one.
  double scale = 1;
  double offset = 0;
};

struct Lap {
  int number = 0;
  int index() const { return number - kFirstLapNumber; }  // in the C interface
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
  std::vector<Channel> logged_channels() const;
  // Both are empty for a file without GPS.
  const std::vector<Channel>& gps_channels();
  const std::vector<Channel>& gps_raw_channels();
  // The logged channels, then the derived GPS channels: the places by which people may name them.
  std::vector<Channel> channels();
  // The channels that somebody means by a name or a pattern, see channel_names.h, in the unit behind its last "=" if it
  // has one. Raw GPS channels are meant where no other one is. Throws Failure where nothing is meant.
  std::vector<Channel> find_channels(const std::string& wanted);
  // The same for a name that must mean one channel.
  Channel find_channel(const std::string& wanted);

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
  // Those of these laps, one behind the other, or without laps all of them; in pieces of bounded size where the file
  // doesn't bound the number, for as long as `take` gives true.
  using TakeSamples = std::function<bool(const Samples& piece)>;
  void read_in_pieces(const Channel& channel, const std::vector<Lap>& laps, const TakeSamples& take) const;

 private:
  std::vector<Channel> channels_by_name(const std::string& wanted);
  bool read_pieces_of(const Channel& channel, std::optional<int> lap, const TakeSamples& take) const;
  bool read_grid(const Channel& channel, std::optional<int> lap, const TakeSamples& take) const;

  std::string path_;
  int handle_ = 0;
  std::optional<std::vector<Channel>> gps_;
  std::optional<std::vector<Channel>> gps_raw_;
};

// The channels that somebody means by each of the names, one behind the other, or without names those of channels().
// Throws Failure as find_channels does, and for a session without any.
std::vector<Channel> find_all_channels(Session& session, const std::vector<std::string>& names);

// Throws Failure where standard output is the session file itself, as for a shell that was told to append to it.
void refuse_printing_onto(const std::string& session);

// Where the reader keeps what it has of a session while that is open: beside it, or where nothing can be made there, as
// on a medium that can't be written, in the system's folder for temporary files. Call it before the session is opened;
// who named a folder by TRAGUARDO_STORE_FOLDER keeps that.
void choose_store_folder(const std::string& session);

// Where that is, for error lines.
std::string store_folder(const std::string& session);
// The folder that a path lies in.
std::string folder_of(const std::string& path);

// When the session began, ISO 8601 without a zone.
std::string iso_date(const std::tm& date);

}  // namespace traguardo::tool
