// SPDX-License-Identifier: MIT
// Which channels an older logger records: their names, units and sensors, and the way back from a value to the word
// that its sensor's converter gave. Which channels are computed from them by a formula that the file keeps.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "simulator/car.h"
#include "simulator/channel_plan.h"
#include "simulator/random.h"
#include "simulator/simulator.h"

namespace traguardo::simulator {

// Which of the many forms of a file is wanted.
struct WmpForm {
  int version = 600;
  std::uint32_t device_code = 0;
  bool old_dump = false;

  bool has_physical_values() const { return version <= 320; }
  bool has_formulas() const { return version >= 451; }
  bool has_extensions() const { return version >= 500; }
  bool has_dump() const { return version == 500; }
  bool has_two_areas() const { return version == 550; }
  bool has_runs() const { return version >= 600; }
  // Which family of loggers writes such files; it decides how a dump is laid out.
  std::uint32_t family() const;
  std::size_t most_channels() const;
  // What the schedule of a dump has room for.
  int most_samples_per_second() const;
};

// A channel record names its unit as text, or by number in one of two forms.
enum class UnitForm { text, digits, packed };

struct WmpUnit {
  UnitForm form = UnitForm::text;
  const char* text = "";
  std::uint32_t id = 0;
  std::uint32_t decimals = 0;
};

struct WmpChannel {
  std::string name;
  WmpUnit unit;
  std::uint32_t sensor = 0;
  std::uint32_t measure_class = 1;
  int rate_hz = 10;
  std::array<double, 5> parameters{};
  Signal signal = Signal::auxiliary;
  double scale = 1;  // from the signal's unit to the file's
  double lift = 0;   // added behind the scale
  double low = 0;    // range for display
  double high = 100;
  std::string formula;  // of a derived channel, which has no samples in the file
  std::string description;

  bool is_derived() const { return !formula.empty(); }
};

// The logged channels, then the derived ones. Throws tool::Failure where rates don't fit the form.
std::vector<WmpChannel> plan_wmp_channels(const SimulationOptions& options, const WmpForm& form);

int samples_per_second(std::span<const WmpChannel> channels);

// The value of channel number `number`, in the unit of its file.
double measure(const WmpChannel& channel, std::size_t number, const CarState& car, Random& noise);
// What its sensor's converter gave for it. Never above 0x7FFF: words beyond may stand for no value, or for a mark.
std::uint16_t raw_word(const WmpChannel& channel, double value);

// --- Fields of a channel record

std::string unit_field(const WmpUnit& unit);
std::array<float, 5> stored_parameters(const WmpChannel& channel);
std::uint32_t rate_index(int rate_hz);
// 0 where nothing is known of what the channel measures.
std::uint32_t function_id(const WmpChannel& channel);
std::uint32_t smoothing_passes(const WmpChannel& channel);
// Each bit of a word stands for a digit.
bool shows_digits(const WmpChannel& channel);
// A value holds until the next.
bool is_stepped(const WmpChannel& channel);

}  // namespace traguardo::simulator
