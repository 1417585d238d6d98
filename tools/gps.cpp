// SPDX-License-Identifier: MIT
// traguardo gps: how good the GPS of a session is and where the car went.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "command.h"
#include "failure.h"
#include "json_output.h"
#include "lap_choice.h"
#include "print_out.h"
#include "session.h"
#include "table.h"
#include "text.h"
#include "track.h"

namespace traguardo::tool {

namespace {

struct GpsOptions {
  std::string file;
  std::string lap;  // as people name laps; empty: the whole file
  bool json = false;
};

// The mean of a derived channel over the moments of the solutions, read off its grid between the two neighbours while
// that goes by.
class MeanAtSolutions {
 public:
  explicit MeanAtSolutions(const std::vector<TrackPoint>& track) : track_(track) {}

  void pass(double time_s, double value) {
    for (; next_ < track_.size() && track_[next_].time_s <= time_s; ++next_) {
      const double step = time_s - time_s_;
      const double share = has_passed_ && step > 0 ? (track_[next_].time_s - time_s_) / step : 0;
      sum_ += has_passed_ ? value_ + (value - value_) * share : value;
    }
    time_s_ = time_s;
    value_ = value;
    has_passed_ = true;
  }
  // Solutions behind the grid have its last value.
  double mean() const {
    if (!has_passed_) return std::nan("");
    double sum = sum_;
    for (std::size_t i = next_; i < track_.size(); ++i) sum += value_;
    return sum / static_cast<double>(track_.size());
  }

 private:
  const std::vector<TrackPoint>& track_;
  std::size_t next_ = 0;
  double sum_ = 0;
  double time_s_ = 0;
  double value_ = 0;
  bool has_passed_ = false;
};

struct Box {
  Place low;
  Place high;
};

Box bounding_box(const std::vector<TrackPoint>& track) {
  Box box{track.front().place, track.front().place};
  for (const TrackPoint& point : track) {
    box.low.latitude_deg = std::min(box.low.latitude_deg, point.place.latitude_deg);
    box.low.longitude_deg = std::min(box.low.longitude_deg, point.place.longitude_deg);
    box.low.altitude_m = std::min(box.low.altitude_m, point.place.altitude_m);
    box.high.latitude_deg = std::max(box.high.latitude_deg, point.place.latitude_deg);
    box.high.longitude_deg = std::max(box.high.longitude_deg, point.place.longitude_deg);
    box.high.altitude_m = std::max(box.high.altitude_m, point.place.altitude_m);
  }
  return box;
}

// Mean position accuracy over the solutions, in centimetres. Their own field isn't handed out; the derived channel is.
double quality_cm(Session& session, const std::vector<TrackPoint>& track) {
  for (const Channel& channel : session.gps_channels()) {
    if (channel.name != "GPS PosAccuracy") continue;
    MeanAtSolutions accuracy_m(track);
    session.read_in_pieces(channel, {}, [&accuracy_m](const Samples& piece) {
      for (std::size_t i = 0; i < piece.values.size(); ++i) accuracy_m.pass(piece.times_s[i], piece.values[i]);
      return true;
    });
    return accuracy_m.mean() * 100;
  }
  return std::nan("");
}

void show_gps(const GpsOptions& options) {
  Session session(options.file);
  std::vector<Lap> laps;
  if (!options.lap.empty()) laps = chosen_laps(session, options.lap);
  const std::vector<TrackPoint> track = read_track(session, laps);
  if (track.empty()) throw Failure(fmt::format("no GPS track in {}", session.path()));
  const double quality = quality_cm(session, track);
  const double distance_m = length_of(track);
  const Box box = bounding_box(track);
  const std::vector<Channel>& derived = session.gps_channels();
  std::uint64_t samples = 0;
  if (laps.empty() && !derived.empty()) samples = session.sample_count(derived.front(), std::nullopt);
  for (const Lap& lap : laps) samples += derived.empty() ? 0 : session.sample_count(derived.front(), lap.index());

  if (options.json) {
    Json json;
    json["file"] = json_text(session.path());
    json["quality_cm"] = json_number(quality);
    json["fixes"] = track.size();
    json["distance_m"] = json_number(distance_m);
    json["latitude_min_deg"] = json_number(box.low.latitude_deg);
    json["latitude_max_deg"] = json_number(box.high.latitude_deg);
    json["longitude_min_deg"] = json_number(box.low.longitude_deg);
    json["longitude_max_deg"] = json_number(box.high.longitude_deg);
    json["altitude_min_m"] = json_number(box.low.altitude_m);
    json["altitude_max_m"] = json_number(box.high.altitude_m);
    json["first_fix_s"] = json_number(track.front().time_s);
    json["last_fix_s"] = json_number(track.back().time_s);
    json["samples"] = samples;
    print_out(to_document(json));
    return;
  }
  print_out(pairs_to_text(
      {{"Mean position accuracy", fmt::format("{:.1f} cm", quality)},
       {"Fixes", fmt::format("{} ({:.3f} s to {:.3f} s)", track.size(), track.front().time_s, track.back().time_s)},
       {"Distance", fmt::format("{:.1f} m", distance_m)},
       {"Latitude", fmt::format("{:.7f} to {:.7f} deg", box.low.latitude_deg, box.high.latitude_deg)},
       {"Longitude", fmt::format("{:.7f} to {:.7f} deg", box.low.longitude_deg, box.high.longitude_deg)},
       {"Altitude", fmt::format("{:.2f} to {:.2f} m", box.low.altitude_m, box.high.altitude_m)},
       {"Samples per channel", std::to_string(samples)}}));
}

}  // namespace

void add_gps_command(CLI::App& app, int& /*status*/) {
  Command command(app, "gps", "Show quality, distance and bounds of the GPS track");
  const auto options = std::make_shared<GpsOptions>();
  command.add_file(options->file);
  command.add_lap(options->lap);
  command.add_json(options->json);
  command.calls([options] { show_gps(*options); });
}

}  // namespace traguardo::tool
