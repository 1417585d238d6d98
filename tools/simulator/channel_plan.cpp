// SPDX-License-Identifier: MIT
#include "simulator/channel_plan.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>

namespace traguardo::simulator {

namespace {

using enum ChannelType;
using enum Carrier;

struct Row {
  const char* name;
  std::uint32_t function;
  ChannelType type;
  Format format;
  int rate_hz;
  Carrier carrier;
  int set;
  Signal signal;
};

// clang-format off
constexpr Row kUsualChannels[] = {
    // name           function   type                   format                          rate  carrier    set signal
    {"Engine RPM",    0xF,       ecu,                   Format::unsigned_16,              50, group,     1, Signal::rpm},
    {"Gear",          0x61F,     ChannelType::gear,     Format::gear,                     50, group,     1, Signal::gear},
    {"Throttle",      0xE81,     analogue,              Format::unsigned_8,               50, group,     1, Signal::throttle_pct},
    {"Speed",         0x10,      ecu,                   Format::float_32,                100, single,    0, Signal::speed_kmh},
    {"Brake Press",   0x20E,     analogue,              Format::float_16,                200, block,     0, Signal::brake_bar},
    {"Steering",      0xD84,     analogue,              Format::signed_16,               100, block,     0, Signal::steering_mm},
    {"Lateral Acc",   0x1183,    analogue,              Format::float_32,                100, staggered, 1, Signal::lateral_g},
    {"Inline Acc",    0x1103,    analogue,              Format::float_16,                100, staggered, 1, Signal::inline_g},
    {"Vertical Acc",  0x1203,    analogue,              Format::float_32,                100, staggered, 1, Signal::vertical_g},
    {"Yaw Rate",      0x1205,    analogue,              Format::float_16,                100, block,     0, Signal::yaw_rate_dps},
    {"Water Temp",    0x1091,    ecu,                   Format::signed_16,                 1, single,    0, Signal::water_c},
    {"Oil Temp",      0xB91,     ecu,                   Format::unsigned_8,                1, single,    0, Signal::oil_c},
    {"Exhaust Temp",  0x40091,   analogue,              Format::unsigned_16,              10, block,     0, Signal::exhaust_c},
    {"Air Temp",      0x8091,    ecu,                   Format::signed_8,                  1, single,    0, Signal::air_c},
    {"Oil Press",     0xB8E,     analogue,              Format::float_32,                 20, block,     0, Signal::oil_bar},
    {"Battery",       0x195,     analogue,              Format::unsigned_16,              10, single,    0, Signal::battery_mv},
    {"Lambda",        0x49E,     ecu,                   Format::float_32,                 50, block,     0, Signal::lambda},
    {"Gear Barrel",   0x615,     analogue,              Format::signed_16,              1000, block,     0, Signal::gear_barrel_mv},
    {"Suspension FL", 0x505800C, analogue,              Format::float_32,                500, block,     0, Signal::suspension_mm},
    {"Distance",      0x8,       digital,               Format::unsigned_32,               5, single,    0, Signal::distance_m},
    {"Lap Timer",     0x992,     ChannelType::lap_time, Format::lap_time,                 10, single,    0, Signal::lap_time_ms},
    {"Gap To Best",   0x1B92,    ChannelType::lap_time, Format::time_difference,          10, single,    0, Signal::gap_to_best_ms},
    {"Switches",      0xE06,     digital,               Format::bits_8,                   10, single,    0, Signal::switches},
    {"Gear Code",     0x606,     ecu,                   Format::code_and_6_characters,     5, single,    0, Signal::gear},
    {"ECU Status",    0x1586,    ecu,                   Format::code_and_30_characters,    1, chunked,   0, Signal::status_code},
    {"Rolling Time",  0x1712,    ChannelType::lap_time, Format::rolling_time,              2, single,    0, Signal::lap_time_ms},
    {"Engine Torque", 0x13,      ecu,                   Format::signed_32,                10, block,     0, Signal::torque_nm},
};
// clang-format on

constexpr std::uint32_t kVoltage = 0x15;  // in millivolts
constexpr Format kAuxiliaryFormats[] = {Format::unsigned_8,  Format::signed_8,  Format::unsigned_16, Format::signed_16,
                                        Format::unsigned_32, Format::signed_32, Format::float_32,    Format::float_16};
constexpr int kAuxiliaryRates[] = {10, 20, 50, 100, 5, 200};
constexpr Carrier kAuxiliaryCarriers[] = {block, group, single, group};
constexpr int kFirstAuxiliarySet = 100;  // one set per rate, at set 100 + rate
constexpr std::size_t kLargestGroup = 48;
constexpr double kGravity = 9.80665;

PlannedChannel auxiliary_channel(std::size_t number, std::size_t i) {
  const int rate = kAuxiliaryRates[i % std::size(kAuxiliaryRates)];
  return {auxiliary_name(number),
          kVoltage,
          analogue,
          kAuxiliaryFormats[i % std::size(kAuxiliaryFormats)],
          rate,
          kAuxiliaryCarriers[i % std::size(kAuxiliaryCarriers)],
          kFirstAuxiliarySet + rate,
          Signal::auxiliary};
}

// No group may grow without end: a frame of it is one damaged byte away from being lost.
void split_large_groups(std::vector<PlannedChannel>& channels) {
  struct Filling {
    int set;
    std::size_t members;
  };
  std::map<int, Filling> current;
  int next_set = 10000;
  for (PlannedChannel& channel : channels) {
    if (channel.carrier != group) continue;
    Filling& filling = current.try_emplace(channel.set, Filling{channel.set, 0}).first->second;
    if (filling.members == kLargestGroup) filling = {next_set++, 0};
    ++filling.members;
    channel.set = filling.set;
  }
}

double junction_temperature(const CarState& car) {
  return 27 + 9 * car.warmth;
}

double exhaust_temperature(const CarState& car, double tremble) {
  return 380 + 3.5 * car.throttle_pct + 120 * car.warmth + 4 * tremble;
}

}  // namespace

std::string auxiliary_name(std::size_t number) {
  std::string digits = std::to_string(number);
  if (digits.size() < 4) digits.insert(0, 4 - digits.size(), '0');
  return "Aux " + digits;
}

std::vector<PlannedChannel> plan_channels(const SimulationOptions& options) {
  const std::size_t count =
      options.channels == 0 ? std::size(kUsualChannels) : static_cast<std::size_t>(options.channels);
  std::vector<PlannedChannel> channels;
  channels.reserve(count);
  for (std::size_t i = 0; i < std::min(count, std::size(kUsualChannels)); ++i) {
    const Row& row = kUsualChannels[i];
    channels.push_back({row.name, row.function, row.type, row.format, row.rate_hz, row.carrier, row.set, row.signal});
  }
  while (channels.size() < count) {
    const std::size_t number = channels.size() + 1;
    channels.push_back(auxiliary_channel(number, channels.size() - std::size(kUsualChannels)));
  }
  for (PlannedChannel& channel : channels) {
    if (options.rate_hz > 0) channel.rate_hz = options.rate_hz;
    if (options.frames == FrameMix::single) channel.carrier = single;
    if (options.frames == FrameMix::block) channel.carrier = block;
    if (options.frames == FrameMix::group) {
      channel.carrier = group;
      channel.set = channel.rate_hz;  // a group has one rate
    }
  }
  split_large_groups(channels);
  return channels;
}

namespace {

// How the car moves and what the driver does.
std::optional<double> motion(Signal signal, const CarState& car, double tremble) {
  const double* const waves = car.waves;
  switch (signal) {
    case Signal::rpm:
      return car.rpm + 12 * tremble;
    case Signal::gear:
      return car.gear;
    case Signal::throttle_pct:
      return car.throttle_pct;
    case Signal::speed_kmh:
      return car.speed_mps * 3.6 + 0.05 * tremble;
    case Signal::brake_bar:
      return car.brake_bar + 0.1 * tremble;
    case Signal::steering_mm:
      return car.steering_mm + 0.3 * tremble;
    case Signal::lateral_g:
      return car.lateral_mps2 / kGravity + 0.03 * tremble;
    case Signal::inline_g:
      return car.inline_mps2 / kGravity + 0.03 * tremble;
    case Signal::vertical_g:
      return 1 + 0.05 * waves[2] + 0.05 * tremble;
    case Signal::yaw_rate_dps:
      return car.yaw_rate_dps + 0.2 * tremble;
    case Signal::suspension_mm:
      return 32 + 1.6 * car.lateral_mps2 - 1.1 * car.inline_mps2 + 3 * waves[2] + 1.5 * waves[3] + 0.2 * tremble;
    case Signal::distance_m:
      return car.distance_m;
    case Signal::lap_time_ms:
      return car.lap_time_s * 1000;
    case Signal::gap_to_best_ms:
      return car.gap_to_best_s * 1000;
    case Signal::switches:
      // Brake light, full throttle, high revs, and a lamp that blinks.
      return (car.brake_bar > 2 ? 1 : 0) + (car.throttle_pct > 95 ? 2 : 0) + (car.rpm > 7000 ? 4 : 0) +
             (waves[1] > 0 ? 128 : 0);
    case Signal::shaft_rpm:
      return car.shaft_rpm;
    default:
      return std::nullopt;
  }
}

// Temperatures, pressures and all else that an engine tells of itself.
std::optional<double> condition(Signal signal, const CarState& car, double tremble) {
  const double* const waves = car.waves;
  switch (signal) {
    case Signal::water_c:
      return 35 + 55 * car.warmth + 2 * waves[0];
    case Signal::oil_c:
      return 30 + 75 * car.warmth + 3 * waves[0];
    case Signal::exhaust_c:
      return exhaust_temperature(car, tremble);
    case Signal::air_c:
      return 24 + 6 * car.warmth + waves[0];
    case Signal::oil_bar:
      return 1.2 + 4.2 * car.rpm / 8000 - 0.8 * car.warmth + 0.05 * tremble;
    case Signal::battery_mv:
      return 13600 + 250 * waves[1] + 20 * tremble;
    case Signal::lambda:
      return 0.98 - 0.0009 * car.throttle_pct + 0.02 * waves[2] + 0.004 * tremble;
    case Signal::gear_barrel_mv:
      return 400 + 620.0 * car.gear + 6 * tremble;
    case Signal::status_code:
      return car.warmth < 0.3 ? 1 : 2;
    case Signal::torque_nm:
      return 420 * car.throttle_pct / 100 - 40 + 3 * tremble;
    case Signal::junction_c:
      return junction_temperature(car);
    case Signal::exhaust_over_junction_c:
      return exhaust_temperature(car, tremble) - junction_temperature(car);
    case Signal::airbox_mbar:
      return 985 + 0.004 * car.speed_mps * car.speed_mps + 2 * waves[1] + 0.5 * tremble;
    default:
      return std::nullopt;
  }
}

}  // namespace

double measure(Signal signal, std::size_t number, const CarState& car, Random& noise) {
  const double tremble = noise.between(-1.0, 1.0);
  if (const std::optional<double> value = motion(signal, car, tremble)) return *value;
  if (const std::optional<double> value = condition(signal, car, tremble)) return *value;
  const double* const waves = car.waves;
  const double size = static_cast<double>(number % 7 + 1) / 7;
  return size * (60 * waves[number % 3] + 30 * waves[3] + 20 * tremble);
}

double measure(const PlannedChannel& channel, std::size_t number, const CarState& car, Random& noise) {
  const double value = measure(channel.signal, number, car, noise);
  if (channel.signal != Signal::auxiliary) return value;
  const bool has_sign = channel.format != Format::unsigned_8 && channel.format != Format::unsigned_16 &&
                        channel.format != Format::unsigned_32;
  return has_sign ? value : value + kAuxiliaryReach;
}

}  // namespace traguardo::simulator
