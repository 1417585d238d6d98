// One open session file as the commands see it: the C interface with its results turned into values and its failures
// into one line for a person. Made from the public header alone; used by the commands that show a session.
#pragma once

#include <ctime>
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
  std::string name;  // bytes as the library gives them
  std::string unit;
};

struct Lap {
  int number = 0;
  double start_s = 0;
  double duration_s = 0;
};

struct Samples {
  std::vector<double> times_s;
  std::vector<double> values;
};

class Session {
 public:
  // Throws Failure with the reason if the file can't be opened.
  explicit Session(std::string path);
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

  int sample_count(const Channel& channel) const;
  // All samples, or those of one lap (an index, from 0), with times in seconds. `samples` is overwritten.
  void read(const Channel& channel, std::optional<int> lap, Samples& samples) const;

 private:
  std::string path_;
  int handle_ = 0;
  std::optional<std::vector<Channel>> gps_;
  std::optional<std::vector<Channel>> gps_raw_;
};

// When the session began, ISO 8601 without a zone.
std::string iso_date(const std::tm& date);

}  // namespace traguardo::tool
