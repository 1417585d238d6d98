// SPDX-License-Identifier: MIT
#include "track_file.h"

#include <fmt/format.h>

#include <chrono>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <string_view>

#include "json_output.h"

namespace traguardo::tool {

namespace {

constexpr double kLongestGapS = 5;  // behind a longer silence of the receiver a new segment begins
constexpr std::size_t kFlushAt = 1 << 16;

using Moment = std::chrono::sys_time<std::chrono::milliseconds>;

Moment moment_of(const std::tm& begin, double time_s) {
  using namespace std::chrono;
  const year_month_day date{year{begin.tm_year + 1900}, month{static_cast<unsigned>(begin.tm_mon + 1)},
                            day{static_cast<unsigned>(begin.tm_mday)}};
  // Held to what a logger's 32 bits of milliseconds can say.
  const double offset_s = time_s >= 0 && time_s < 1e7 ? time_s : 0;
  return sys_days{date} + hours{begin.tm_hour} + minutes{begin.tm_min} + seconds{begin.tm_sec} +
         milliseconds{std::llround(offset_s * 1000)};
}

std::string iso_moment(Moment moment) {
  const auto midnight = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day date{midnight};
  const long long ms = (moment - midnight).count();
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), ms / 3600000,
                     ms / 60000 % 60, ms / 1000 % 60, ms % 1000);
}

std::string escaped_xml(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '&') {
      result += "&amp;";
    } else if (c == '<') {
      result += "&lt;";
    } else if (c == '>') {
      result += "&gt;";
    } else if (static_cast<unsigned char>(c) < 0x20) {
      result += ' ';  // control characters have no place in XML
    } else {
      result += c;
    }
  }
  return result;
}

void hand_over(OutputFile& out, fmt::memory_buffer& text) {
  out.write(text.data(), text.size());
  text.clear();
}

}  // namespace

void write_gpx(OutputFile& out, const TrackTitle& title, const std::vector<TrackPoint>& track) {
  fmt::memory_buffer text;
  const auto at_end = [&text] { return std::back_inserter(text); };
  fmt::format_to(at_end(),
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                 "<gpx version=\"1.1\" creator=\"traguardo\" xmlns=\"http://www.topografix.com/GPX/1/1\">\n"
                 "  <trk>\n    <name>{}</name>\n    <trkseg>\n",
                 escaped_xml(title.name));
  for (std::size_t i = 0; i < track.size(); ++i) {
    const TrackPoint& point = track[i];
    if (i > 0 && point.time_s - track[i - 1].time_s > kLongestGapS) {
      fmt::format_to(at_end(), "    </trkseg>\n    <trkseg>\n");
    }
    fmt::format_to(at_end(), "      <trkpt lat=\"{:.9f}\" lon=\"{:.9f}\"><ele>{:.3f}</ele><time>{}</time></trkpt>\n",
                   point.place.latitude_deg, point.place.longitude_deg, point.place.altitude_m,
                   iso_moment(moment_of(title.begin, point.time_s)));
    if (text.size() >= kFlushAt) hand_over(out, text);
  }
  fmt::format_to(at_end(), "    </trkseg>\n  </trk>\n</gpx>\n");
  hand_over(out, text);
}

void write_geojson(OutputFile& out, const TrackTitle& title, const std::vector<TrackPoint>& track) {
  fmt::memory_buffer text;
  const auto at_end = [&text] { return std::back_inserter(text); };
  fmt::format_to(at_end(),
                 "{{\"type\": \"FeatureCollection\", \"features\": [{{\"type\": \"Feature\", \"properties\": "
                 "{{\"name\": {}, \"date\": \"{}\", \"coordTimes\": [",
                 to_line(Json(title.name)), iso_date(title.begin));
  for (std::size_t i = 0; i < track.size(); ++i) {
    fmt::format_to(at_end(), "{}\"{}\"", i == 0 ? "" : ", ", iso_moment(moment_of(title.begin, track[i].time_s)));
    if (text.size() >= kFlushAt) hand_over(out, text);
  }
  fmt::format_to(at_end(), "]}}, \"geometry\": {{\"type\": \"LineString\", \"coordinates\": [");
  for (std::size_t i = 0; i < track.size(); ++i) {
    const Place& place = track[i].place;
    fmt::format_to(at_end(), "{}[{:.9f}, {:.9f}, {:.3f}]", i == 0 ? "\n" : ",\n", place.longitude_deg,
                   place.latitude_deg, place.altitude_m);
    if (text.size() >= kFlushAt) hand_over(out, text);
  }
  fmt::format_to(at_end(), "]}}}}]}}\n");
  hand_over(out, text);
}

}  // namespace traguardo::tool
