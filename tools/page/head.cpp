// SPDX-License-Identifier: MIT
#include "head.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <numbers>
#include <numeric>
#include <utility>

#include "damage.h"
#include "inside.h"
#include "lap_choice.h"
#include "rows.h"
#include "speed.h"
#include "table.h"
#include "text.h"
#include "track.h"

namespace traguardo::tool {

namespace {

using Pairs = std::vector<Pair>;

constexpr int kFormatVersion = 1;

Json to_json(const Pairs& pairs) {
  Json json = Json::array();
  for (const Pair& pair : pairs) json.push_back(Json::array({json_text(pair.name), json_text(pair.value)}));
  return json;
}

std::int64_t whole_us(double time_s) {
  constexpr double kMost = 9e15;  // what a script still counts
  const double time_us = time_s * 1e6;
  return std::isfinite(time_us) ? std::llround(std::clamp(time_us, -kMost, kMost)) : 0;
}

Pairs texts_of(const Session& session) {
  return {{"Vehicle", session.vehicle()},       {"Track", session.track()},
          {"Racer", session.racer()},           {"Championship", session.championship()},
          {"Venue type", session.venue_type()}, {"Date", iso_date(session.date())}};
}

Pairs damage_texts(const Session& session, bool recovered) {
  const IRkParser& reader = *inside_of(session).reader;
  Pairs pairs;
  if (const std::optional<Damage> damage = damage_of(reader)) pairs = to_pairs(*damage, recovered);
  for (const auto& [name, missing] : shortened_channels_of(reader)) {
    pairs.push_back({"Shortened", fmt::format("{} lacks {} samples beyond what is believed", name, missing)});
  }
  return pairs;
}

// Durations, in order. The last one of a finished lap is what the others leave of it: marks of the line say it in more
// than one way.
std::vector<std::int64_t> splits_us(const Session& session, const Lap& lap) {
  std::vector<std::int64_t> splits;
  const SRkLap* record = nullptr;
  if (find_lap(inside_of(session), lap.index(), &record) != LapLookup::kFound) return splits;
  for (const auto& [number, split] : record->splits) splits.push_back(static_cast<std::int64_t>(split->duration));
  if (lap.finished && !splits.empty()) {
    splits.back() = whole_us(lap.duration_s) - std::accumulate(splits.begin(), splits.end() - 1, std::int64_t{0});
  }
  return splits;
}

Json laps_json(const PageFile& file) {
  Json json = Json::array();
  for (const Lap& lap : file.session->laps()) {
    const bool is_kept = file.laps.empty() || std::any_of(file.laps.begin(), file.laps.end(), [&lap](const Lap& kept) {
                           return kept.number == lap.number;
                         });
    json.push_back({{"number", lap.number},
                    {"start_us", whole_us(lap.start_s)},
                    {"duration_us", whole_us(lap.duration_s)},
                    {"finished", lap.finished},
                    {"kept", is_kept},
                    {"splits_us", splits_us(*file.session, lap)}});
  }
  return json;
}

Json channel_json(const EncodedChannel& channel, PageBlocks* blocks) {
  Json json;
  json["name"] = channel.channel.name;
  json["unit"] = channel.channel.unit;
  json["kind"] = channel.channel.kind == ChannelKind::logged ? "logged" : "gps";
  json["held"] = is_held(*channel.file->session, channel.channel);
  json["count"] = channel.count;
  json["decimals"] = channel.decimals;
  json["stretch"] = channel.stretch;
  json["times"] = blocks->add(channel.times);
  json["values"] = blocks->add(channel.values);
  return json;
}

// A flat map around a point of the ground: metres east and north.
class FlatMap {
 public:
  explicit FlatMap(const TrackPoint& origin) : origin_(origin) {
    constexpr double kRadiansPerDegree = std::numbers::pi / 180;
    latitude_ = origin.place.latitude_deg * kRadiansPerDegree;
    longitude_ = origin.place.longitude_deg * kRadiansPerDegree;
  }
  double east_m(const TrackPoint& point) const {
    return (point.y_m - origin_.y_m) * std::cos(longitude_) - (point.x_m - origin_.x_m) * std::sin(longitude_);
  }
  double north_m(const TrackPoint& point) const {
    const double outward =
        (point.x_m - origin_.x_m) * std::cos(longitude_) + (point.y_m - origin_.y_m) * std::sin(longitude_);
    return (point.z_m - origin_.z_m) * std::cos(latitude_) - outward * std::sin(latitude_);
  }

 private:
  TrackPoint origin_;
  double latitude_ = 0;
  double longitude_ = 0;
};

std::int32_t centimetres(double length_m) {
  constexpr double kMost = 2147483000.0;
  return std::isnan(length_m) ? kNotANumber : static_cast<std::int32_t>(std::clamp(length_m * 100, -kMost, kMost));
}

// `map` is made of the first point that any file has.
Json track_json(const PageFile& file, std::optional<FlatMap>* map, PageBlocks* blocks) {
  std::vector<TrackPoint> track = read_track(*file.session, file.laps);
  std::stable_sort(track.begin(), track.end(),
                   [](const TrackPoint& a, const TrackPoint& b) { return a.time_s < b.time_s; });
  if (track.size() < 2) return nullptr;
  if (!*map) map->emplace(track.front());
  std::vector<std::int64_t> times;
  std::vector<std::int32_t> east;
  std::vector<std::int32_t> north;
  std::vector<std::int32_t> driven;
  double driven_m = 0;
  for (std::size_t i = 0; i < track.size(); ++i) {
    const TrackPoint& point = track[i];
    const TrackPoint& last = track[i == 0 ? 0 : i - 1];
    driven_m += std::hypot(point.x_m - last.x_m, point.y_m - last.y_m, point.z_m - last.z_m);
    times.push_back(whole_us(point.time_s));
    east.push_back(centimetres((*map)->east_m(point)));
    north.push_back(centimetres((*map)->north_m(point)));
    driven.push_back(centimetres(driven_m));
  }
  Json json;
  json["count"] = track.size();
  json["times"] = blocks->add(block_of_times(times));
  json["east_cm"] = blocks->add(block_of_values(east));
  json["north_cm"] = blocks->add(block_of_values(north));
  json["driven_cm"] = blocks->add(block_of_values(driven));
  return json;
}

}  // namespace

std::size_t PageBlocks::add(const std::string& bytes) {
  const auto [entry, is_new] = numbers_.emplace(bytes, blocks_.size());
  if (is_new) blocks_.push_back(&entry->first);
  return entry->second;
}

std::size_t PageBlocks::bytes() const {
  return std::accumulate(blocks_.begin(), blocks_.end(), std::size_t{0},
                         [](std::size_t sum, const std::string* block) { return sum + block->size(); });
}

std::vector<Json> page_tracks(const std::vector<PageFile>& files, PageBlocks* blocks) {
  std::vector<Json> tracks;
  tracks.reserve(files.size());
  std::optional<FlatMap> map;
  for (const PageFile& file : files) tracks.push_back(track_json(file, &map, blocks));
  return tracks;
}

Json page_head(const std::vector<PageFile>& files, const std::vector<Json>& tracks,
               const std::vector<EncodedChannel>& channels, bool recovered, PageBlocks* blocks) {
  Json head;
  head["version"] = kFormatVersion;
  head["tool"] = "traguardo " TRAGUARDO_VERSION;
  head["files"] = Json::array();
  for (std::size_t i = 0; i < files.size(); ++i) {
    const PageFile& file = files[i];
    Json json;
    json["name"] = file.name;
    json["texts"] = to_json(texts_of(*file.session));
    json["damage"] = to_json(damage_texts(*file.session, recovered));
    json["notes"] = file.left_out;
    json["duration_us"] = whole_us(file.session->duration_s());
    json["laps"] = laps_json(file);
    if (file.speed) {
      json["speed"] = {{"channel", *file.speed},
                       {"metres_per_second", metres_per_second(file.channels[*file.speed].unit)}};
    } else {
      json["speed"] = nullptr;
    }
    json["track"] = tracks[i];
    json["channels"] = Json::array();
    for (const EncodedChannel& channel : channels) {
      if (channel.file == &file) json["channels"].push_back(channel_json(channel, blocks));
    }
    head["files"].push_back(std::move(json));
  }
  return head;
}

}  // namespace traguardo::tool
