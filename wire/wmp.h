// SPDX-License-Identifier: MIT
// .wmp files of every version, from a description of a session.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "wire/bytes.h"

namespace traguardo::wire::wmp {

struct Channel {
  std::string name = "A";
  std::string unit = "x";      // up to ten bytes: a text, or a descriptor
  std::uint16_t sensor = 998;  // the words as they are, without a mark of a missing sample
  std::uint16_t measure_class = 1;
  std::uint16_t rate = 5;             // an index: 100 Hz
  std::array<float, 5> parameters{};  // the thresholds of a gear sensor are two to a float
  float gain = 1;
  float offset = 0;
  std::uint16_t filter = 0;
  float display_minimum = 0;
  float display_maximum = 100;
  float scale_minimum = 0;
  float scale_maximum = 0;
  std::string formula;
  std::string description;
  std::uint32_t origin = 1;  // measured; 0 by formula
  bool is_computed = false;
  std::uint32_t math_generation = 1;
  std::uint8_t number = 0;
  std::uint8_t form = 0;  // byte 661
  std::uint16_t kind = 0;
  std::uint32_t function_id = 0;
  std::uint32_t second_function_id = 0;
  bool inverted = false;
  bool stepped = false;
  bool digit = false;
  bool whole_numbers = false;
  std::uint8_t decimals = 0;
  std::vector<std::uint16_t> words;           // versions from 400 on
  std::vector<float> values;                  // versions 100 to 320
  std::optional<std::uint32_t> sample_count;  // if it isn't that of the samples
};

struct Lap {
  std::uint32_t time_ms = 1000;
  std::uint16_t run = 1;
  std::int16_t number = 1;
  std::uint32_t true_time_ms = 0;
  std::uint32_t samples = 0;
  std::uint32_t start_ms = 0;
  bool complete = true;
};

struct Run {
  std::uint16_t number = 1;
  std::int32_t first_teeth = 0;
  std::int32_t second_teeth = 0;
  float wheel_mm = 0;
  std::string name;
  std::string comment = {};
};

struct BestLap {
  std::uint16_t number = 0;
  std::uint32_t time_ms = 0;
  std::uint16_t run = 0;
};

struct File {
  std::uint16_t version = 600;
  std::string date = "05-11-03 14:22:09";
  std::uint32_t duration_ms = 1000;
  std::int16_t reference = -1;
  std::uint8_t family = 0;
  std::array<std::uint8_t, 3> firmware{};  // first, second, third number
  std::uint32_t software = 0;
  std::uint32_t device_code = 0;  // versions from 600 on
  std::uint32_t device_id = 0;    // versions from 500 on
  bool function_ids = true;
  std::string vehicle, track, racer, test_name, championship;
  std::uint32_t venue_type = 0;
  std::vector<Channel> logged;
  std::vector<Channel> derived;
  std::vector<Lap> laps{Lap{}};
  BestLap best;
  std::vector<Run> runs{Run{}};  // versions from 600 on
  std::size_t extras = 0;        // versions from 600 on
  Bytes dump;                    // versions 500 and 550

  std::size_t channels() const { return logged.size() + derived.size(); }
  bool has_physical_values() const { return version <= 320; }
  bool has_groups() const { return version >= 600; }
};

// Where samples lie in a built file.
struct Range {
  std::size_t begin = 0;
  std::size_t end = 0;
};

// The whole file, with its length in the header and its sums in the heads.
Bytes build(const File& file, std::vector<Range>* samples = nullptr);

// The samples of one channel in the raw areas of version 550.
inline constexpr std::size_t kAreaWords = 32768;
inline constexpr std::size_t kAreas = 2;

// --- Offsets in a built file, and repairs of its sums after a change

std::size_t header_at(std::uint16_t version);
std::size_t configuration_at(std::uint16_t version);
std::size_t first_channel_at(std::uint16_t version);
// A group of versions from 600 on begins with a head in which its sum stands.
std::size_t channel_group_at(std::size_t index);
void reseal_first_group(Bytes* bytes);
void reseal_channel(Bytes* bytes, std::size_t index);
// The length and all sums of any bytes that begin as a file does, as far as they go.
void reseal(Bytes* bytes);

}  // namespace traguardo::wire::wmp
