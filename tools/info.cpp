// SPDX-License-Identifier: MIT
// traguardo info: who, where, when, and how much there is.
#include <fmt/format.h>

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "command.h"
#include "damage.h"
#include "inside.h"
#include "json_output.h"
#include "print_out.h"
#include "session.h"
#include "table.h"
#include "text.h"

namespace traguardo::tool {

namespace {

struct InfoOptions {
  std::string file;
  bool recover = false;  // take back a clock that all behind it contradict
  bool json = false;
  bool verbose = false;  // name the derived channels as such
};

// What was not logged but computed from logged channels while the file was read.
std::vector<std::string> derived_channels_of(const Session& session) {
  std::vector<std::string> names;
  for (const auto& channel : inside_of(session).reader->GetCanali()) {
    const auto* const parsed = dynamic_cast<const CParsedChannel*>(channel.get());
    if (parsed != nullptr && parsed->is_derived()) names.push_back(to_utf8(parsed->GetNome()));
  }
  return names;
}

std::string listed(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text.empty() ? "none" : text;
}

void show_info(const InfoOptions& options) {
  const Session session(options.file, options.recover);
  const double duration_s = session.duration_s();
  const std::size_t laps = session.laps().size();
  const std::size_t channels = session.logged_channels().size();
  const std::size_t gps_channels = session.gps_channel_count();
  const std::size_t gps_raw_samples = session.gps_solution_count();
  const std::optional<Damage> damage = damage_of(*inside_of(session).reader);
  const std::map<std::string, u64> shortened = shortened_channels_of(*inside_of(session).reader);

  if (options.json) {
    Json json;
    json["file"] = json_text(session.path());
    json["vehicle"] = json_text(session.vehicle());
    json["track"] = json_text(session.track());
    json["racer"] = json_text(session.racer());
    json["championship"] = json_text(session.championship());
    json["venue_type"] = json_text(session.venue_type());
    json["date"] = iso_date(session.date());
    json["duration_s"] = json_number(duration_s);
    json["laps"] = laps;
    json["channels"] = channels;
    json["gps_channels"] = gps_channels;
    json["gps_raw_samples"] = gps_raw_samples;
    if (damage) json["damage"] = to_json(*damage);
    for (const auto& [name, missing] : shortened) json["shortened_channels"][name] = missing;
    if (options.verbose) json["derived_channels"] = derived_channels_of(session);
    print_out(to_document(json));
    return;
  }
  std::vector<Pair> pairs{{"File", to_utf8(session.path())},
                          {"Vehicle", to_utf8(session.vehicle())},
                          {"Track", to_utf8(session.track())},
                          {"Racer", to_utf8(session.racer())},
                          {"Championship", to_utf8(session.championship())},
                          {"Venue type", to_utf8(session.venue_type())},
                          {"Date", iso_date(session.date())},
                          {"Duration", lap_clock(duration_s) + " (min:s)"},
                          {"Laps", std::to_string(laps)},
                          {"Channels", std::to_string(channels)},
                          {"GPS channels", std::to_string(gps_channels)},
                          {"GPS solutions", std::to_string(gps_raw_samples)}};
  if (damage) {
    for (Pair& pair : to_pairs(*damage, options.recover)) pairs.push_back(std::move(pair));
  }
  for (const auto& [name, missing] : shortened) {
    pairs.push_back(
        {"Shortened", fmt::format("{} lacks {} samples beyond what is believed", name, missing), Tone::bad});
  }
  if (options.verbose) pairs.push_back({"Derived channels", listed(derived_channels_of(session))});
  print_shown(pairs_to_text(pairs));
}

}  // namespace

void add_info_command(CLI::App& app, int& /*status*/) {
  Command command(app, "info", "Show texts, date, duration and counts of a session");
  const auto options = std::make_shared<InfoOptions>();
  command.add_file(options->file);
  command.add_json(options->json);
  command.add_flag("--verbose", options->verbose, "Name also the channels that were computed, not logged");
  command.add_recover(options->recover);
  command.calls([options] { show_info(*options); });
}

}  // namespace traguardo::tool
