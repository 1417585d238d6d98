// SPDX-License-Identifier: MIT
#include "damage.h"

#include <fmt/format.h>

#include "legacy/wmp_parser.h"
#include "logger/logger_parser.h"
#include "text.h"

namespace traguardo::tool {

std::optional<Damage> damage_of(const IRkParser& reader) {
  const auto* const logger = dynamic_cast<const CParserZep_2Gv4*>(&reader);
  if (logger == nullptr) return std::nullopt;
  Damage damage;
  damage.losses = logger->losses();
  for (const auto& channel : logger->GetCanali()) {
    auto* const parsed = static_cast<CParsedChannel*>(channel.get());
    const u64 missing = missing_samples(parsed).value_or(0);
    if (missing != 0) damage.missing_samples[to_utf8(parsed->GetNome())] += missing;
  }
  return damage;
}

std::map<std::string, u64> shortened_channels_of(const IRkParser& reader) {
  std::map<std::string, u64> missing;
  if (const auto* const older = dynamic_cast<const CParserWMP*>(&reader)) {
    for (const CParserWMP::ShortenedChannel& channel : older->shortened_channels()) {
      missing[to_utf8(channel.name)] += channel.missing;
    }
  }
  return missing;
}

Json to_json(const Damage& damage) {
  const Losses& losses = damage.losses;
  Json json;
  json["bytes"] = losses.bytes;
  json["frames"] = losses.frames();
  json["refused"] = {{"broken", losses.broken_frames},
                     {"unknown", losses.unknown_frames},
                     {"clock", losses.clocks},
                     {"packet", losses.packets}};
  json["missing_samples"] = Json::object();
  for (const auto& [name, count] : damage.missing_samples) json["missing_samples"][name] = count;
  return json;
}

std::vector<Pair> to_pairs(const Damage& damage, bool recovered) {
  const Losses& losses = damage.losses;
  const auto tone = [](u64 lost) { return lost == 0 ? Tone::plain : Tone::bad; };
  std::vector<Pair> pairs;
  pairs.push_back({"Lost bytes", fmt::format("{} in no frame or tag", losses.bytes), tone(losses.bytes)});
  std::string refused = std::to_string(losses.frames());
  if (losses.frames() != 0) {
    refused += fmt::format(" (broken {}, unknown {}, clock {}, packet {})", losses.broken_frames, losses.unknown_frames,
                           losses.clocks, losses.packets);
  }
  pairs.push_back({"Refused frames", refused, tone(losses.frames())});
  if (losses.clocks != 0 && !recovered) {
    pairs.push_back(
        {"Refused clocks", fmt::format("{}; one wrong clock can cause many: try --recover", losses.clocks), Tone::bad});
  }
  u64 missing = 0;
  for (const auto& [name, count] : damage.missing_samples) missing += count;
  const std::size_t channels = damage.missing_samples.size();
  std::string samples = "0";
  if (missing != 0) samples = fmt::format("about {} in {} channel{}", missing, channels, channels == 1 ? "" : "s");
  pairs.push_back({"Missing samples", samples, tone(missing)});
  return pairs;
}

}  // namespace traguardo::tool
