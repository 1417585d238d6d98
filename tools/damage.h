// SPDX-License-Identifier: MIT
// What a logger file has lost, as far as that shows.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "json_output.h"
#include "logger/losses.h"
#include "model/rk_parser.h"
#include "table.h"

namespace traguardo::tool {

struct Damage {
  Losses losses;
  std::map<std::string, u64> missing_samples;  // estimated; by the names of the channels that lack some, UTF-8

  bool is_none() const { return losses.bytes == 0 && losses.frames() == 0 && missing_samples.empty(); }
};

// Derived channels of an older session that end early since they ask for more than is believed: how many samples each
// lacks, by its name in UTF-8.
std::map<std::string, u64> shortened_channels_of(const IRkParser& reader);

// Nothing for a reader that keeps no account. Behind ParsaFile.
std::optional<Damage> damage_of(const IRkParser& reader);

Json to_json(const Damage& damage);
// Labels and values for people; recovered: wrong clocks were taken back already.
std::vector<Pair> to_pairs(const Damage& damage, bool recovered);

}  // namespace traguardo::tool
