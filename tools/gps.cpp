// traguardo gps: how good the GPS of a session is and where the car went.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <vector>

#include "commands.h"
#include "failure.h"
#include "json_output.h"
#include "session.h"
#include "table.h"
#include "text.h"
#include "track.h"

namespace traguardo::tool {

namespace {

// The mean of a derived channel over the moments of the solutions, read off its grid between the two neighbours.
double mean_at_solutions(const Samples& grid, const std::vector<TrackPoint>& track) {
  if (grid.values.empty()) return std::nan("");
  double sum = 0;
  std::size_t next = 0;
  for (const TrackPoint& point : track) {
    while (next < grid.times_s.size() && grid.times_s[next] < point.time_s) ++next;
    if (next == grid.times_s.size()) {
      sum += grid.values.back();
    } else if (next == 0) {
      sum += grid.values.front();
    } else {
      const double step = grid.times_s[next] - grid.times_s[next - 1];
      const double share = step > 0 ? (point.time_s - grid.times_s[next - 1]) / step : 0;
      sum += grid.values[next - 1] + (grid.values[next] - grid.values[next - 1]) * share;
    }
  }
  return sum / static_cast<double>(track.size());
}

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
    Samples grid;
    session.read(channel, std::nullopt, grid);
    return mean_at_solutions(grid, track) * 100;
  }
  return std::nan("");
}

}  // namespace

void show_gps(const GpsOptions& options) {
  Session session(options.file);
  const std::vector<TrackPoint> track = read_track(session, std::nullopt);
  if (track.empty()) throw Failure(fmt::format("no GPS track in {}", session.path()));
  const double quality = quality_cm(session, track);
  const double distance_m = length_of(track);
  const Box box = bounding_box(track);
  const std::vector<Channel>& derived = session.gps_channels();
  const int samples = derived.empty() ? 0 : session.sample_count(derived.front());

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

}  // namespace traguardo::tool
