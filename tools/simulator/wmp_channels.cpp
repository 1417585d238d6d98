// SPDX-License-Identifier: MIT
#include "simulator/wmp_channels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>

#include "failure.h"

namespace traguardo::simulator {

namespace {

// Sensors by their ids.
constexpr std::uint32_t kEngineSpeed = 0;
constexpr std::uint32_t kWheelSpeed = 1;
constexpr std::uint32_t kThermocouple = 5;
constexpr std::uint32_t kSpan = 7;
constexpr std::uint32_t kTwoSided = 8;
constexpr std::uint32_t kAcceleration = 10;
constexpr std::uint32_t kAccelerationTurned = 11;  // mounted the other way round
constexpr std::uint32_t kLambdaProbe = 12;
constexpr std::uint32_t kTwoPoints = 17;
constexpr std::uint32_t kPotentiometer = 30;
constexpr std::uint32_t kGyro = 42;
constexpr std::uint32_t kOilPressure = 53;
constexpr std::uint32_t kWaterProbe = 61;
constexpr std::uint32_t kBattery = 68;
constexpr std::uint32_t kMultiplier = 70;
constexpr std::uint32_t kFormula = 71;
constexpr std::uint32_t kTwoPointPressure = 72;
constexpr std::uint32_t kColdJunction = 75;
constexpr std::uint32_t kShaftSpeed = 77;
constexpr std::uint32_t kGearBarrel = 90;
constexpr std::uint32_t kDegrees = 91;
constexpr std::uint32_t kTenthsOfDegree = 92;
constexpr std::uint32_t kReceiverSpeed = 93;
constexpr std::uint32_t kPressureCounts = 101;
constexpr std::uint32_t kLambdaThousandths = 211;
constexpr std::uint32_t kThousandthsOfG = 406;
constexpr std::uint32_t kPlainWord = 998;
constexpr std::uint32_t kRange = 999;

constexpr std::uint32_t kOther = 1;  // measure classes
constexpr std::uint32_t kSpeed = 3;
constexpr std::uint32_t kRevolutions = 4;
constexpr std::uint32_t kShaft = 7;

constexpr WmpUnit as_text(const char* text, std::uint32_t decimals) {
  return {UnitForm::text, text, 0, decimals};
}
constexpr WmpUnit as_digits(std::uint32_t id, std::uint32_t decimals) {
  return {UnitForm::digits, "", id, decimals};
}
constexpr WmpUnit as_packed(std::uint32_t id, std::uint32_t decimals) {
  return {UnitForm::packed, "", id, decimals};
}
// Units by number.
constexpr std::uint32_t kUnitCelsius = 100;
constexpr std::uint32_t kUnitBar = 300;
constexpr std::uint32_t kUnitG = 400;
constexpr std::uint32_t kUnitLambda = 1204;

struct Row {
  const char* name;
  WmpUnit unit;
  std::uint32_t sensor;
  std::uint32_t measure_class;
  int rate_hz;
  double parameters[5];
  Signal signal;
  double scale;
  double low;
  double high;
};

// The shaft's turns per km/h, and four pulses for each.
constexpr double kShaftRpmPerKmh = 60000.0 / kWheelCircumferenceMm * kAxleTeeth / kShaftTeeth / 3.6;

// clang-format off
constexpr Row kChannels[] = {
    // name           unit                       sensor               class         rate  parameters                     signal                           scale   low   high
    {"Engine",        as_text("rpm", 0),         kEngineSpeed,        kRevolutions,   50, {0, 12000, 0, 0, 0},           Signal::rpm,                     1,        0,  9000},
    {"Speed #1",      as_text("km/h", 1),        kWheelSpeed,         kSpeed,         10, {1985, 1, 0, 0, 0},            Signal::speed_kmh,               1,        0,   300},
    {"Water Temp",    as_text("C", 0),           kDegrees,            kOther,          1, {0, 0, 0, 0, 0},               Signal::water_c,                 1,        0,   150},
    {"Oil Temp",      as_digits(kUnitCelsius, 1),kTenthsOfDegree,     kOther,          1, {0, 0, 0, 0, 0},               Signal::oil_c,                   1,        0,   200},
    {"Cold Junction", as_text("C", 1),           kColdJunction,       kOther,          1, {0, 0, 0, 0, 0},               Signal::junction_c,              1,        0,    80},
    {"Exhaust",       as_text("C", 0),           kThermocouple,       kOther,         10, {0, 0, 0, 0, 0},               Signal::exhaust_over_junction_c, 1,        0,  1000},
    {"Oil Press",     as_packed(kUnitBar, 2),    kPressureCounts,     kOther,         20, {0, 0, 0, 0, 0},               Signal::oil_bar,                 1,        0,    10},
    {"Brake Press",   as_text("bar", 1),         kTwoPointPressure,   kOther,        100, {0.5, 0, 4.5, 100, 0},         Signal::brake_bar,               1,        0,   100},
    {"Airbox",        as_text("mbar", 0),        kRange,              kOther,         10, {0, 3000, 0, 0, 0},            Signal::airbox_mbar,             1,      900,  1100},
    {"AccLat",        as_text("g", 2),           kAcceleration,       kOther,         50, {2048, 0, 0, 0, 0},            Signal::lateral_g,               1,       -2,     2},
    {"AccLong",       as_text("g", 2),           kAccelerationTurned, kOther,         50, {2048, 0, 0, 0, 0},            Signal::inline_g,                1,       -2,     2},
    {"AccVert",       as_digits(kUnitG, 2),      kThousandthsOfG,     kOther,         50, {0, 0, 0, 0, 0},               Signal::vertical_g,              1,       -2,     2},
    {"Yaw Rate",      as_text("deg/s", 1),       kGyro,               kOther,         50, {2048, 0, 0, 0, 0},            Signal::yaw_rate_dps,            1,      -80,    80},
    {"Steering",      as_text("mm", 1),          kTwoSided,           kOther,         50, {2048, 248, -150, 3848, 150},  Signal::steering_mm,             1,     -150,   150},
    {"Throttle",      as_text("%", 0),           kSpan,               kOther,         50, {400, 100, 3700, 0, 0},        Signal::throttle_pct,            1,        0,   100},
    {"Suspension",    as_text("mm", 1),          kPotentiometer,      kOther,        100, {400, 150, 3600, 0, 0},        Signal::suspension_mm,           1,        0,   150},
    {"Battery",       as_text("V", 1),           kBattery,            kOther,          5, {0, 0, 0, 0, 0},               Signal::battery_mv,              0.001,    0,    15},
    {"Gear",          as_text("#", 0),           kGearBarrel,         kOther,         20, {0, 0, 0, 0, 0},               Signal::gear_barrel_mv,          0.8,      0,     6},
    {"Lambda",        as_digits(kUnitLambda, 3), kLambdaThousandths,  kOther,         20, {0, 0, 0, 0, 0},               Signal::lambda,                  1,      0.5,   1.5},
    {"Torque",        as_text("Nm", 0),          kRange,              kOther,         20, {-100, 1300, 0, 0, 0},         Signal::torque_nm,               1,     -100,   500},
};

// What needs a record's extension behind it.
constexpr Row kExtendedChannels[] = {
    {"Switches",      as_text("#", 0),           kPlainWord,          kOther,         10, {0, 0, 0, 0, 0},               Signal::switches,                1,        0,    99},
    {"GPS_Speed",     as_text("km/h", 1),        kReceiverSpeed,      kSpeed,         10, {1985, 1, 0, 0, 0},            Signal::speed_kmh,               1,        0,   300},
};

constexpr Row kShaftChannel =
    {"Shaft",         as_text("rpm", 0),         kShaftSpeed,         kShaft,         20, {kShaftRpmPerKmh, 4, 0, 0, 0}, Signal::shaft_rpm,               1,        0,  9000};

// Physical values: only sensors whose formula a reader can turn round.
constexpr Row kOldChannels[] = {
    {"Engine",        as_text("rpm", 0),         kEngineSpeed,        kRevolutions,   50, {0, 12000, 0, 0, 0},           Signal::rpm,                     1,        0,  9000},
    {"Speed #1",      as_text("km/h", 1),        kWheelSpeed,         kSpeed,         10, {1985, 1, 0, 0, 0},            Signal::speed_kmh,               1,        0,   300},
    {"Water Temp",    as_text("C", 0),           kWaterProbe,         kOther,          2, {0, 0, 0, 0, 0},               Signal::water_c,                 1,        0,   150},
    {"Exhaust",       as_text("C", 0),           kThermocouple,       kOther,         10, {0, 0, 0, 0, 0},               Signal::exhaust_c,               1,        0,  1000},
    {"Oil Press",     as_text("bar", 2),         kOilPressure,        kOther,         20, {0, 0, 0, 0, 0},               Signal::oil_bar,                 1,        0,    10},
    {"AccLat",        as_text("g", 2),           kAcceleration,       kOther,         50, {2048, 0, 0, 0, 0},            Signal::lateral_g,               1,       -2,     2},
    {"AccLong",       as_text("g", 2),           kAccelerationTurned, kOther,         50, {2048, 0, 0, 0, 0},            Signal::inline_g,                1,       -2,     2},
    {"Yaw Rate",      as_text("deg/s", 1),       kGyro,               kOther,         50, {2048, 0, 0, 0, 0},            Signal::yaw_rate_dps,            1,      -80,    80},
    {"Steering",      as_text("mm", 1),          kTwoSided,           kOther,         50, {2048, 248, -150, 3848, 150},  Signal::steering_mm,             1,     -150,   150},
    {"Throttle",      as_text("%", 0),           kSpan,               kOther,         50, {400, 100, 3700, 0, 0},        Signal::throttle_pct,            1,        0,   100},
    {"Suspension",    as_text("mm", 1),          kPotentiometer,      kOther,        100, {400, 150, 3600, 0, 0},        Signal::suspension_mm,           1,        0,   150},
    {"Battery",       as_text("V", 1),           kBattery,            kOther,         10, {0, 0, 0, 0, 0},               Signal::battery_mv,              0.001,    0,    15},
    {"Lambda",        as_text("lambda", 3),      kLambdaProbe,        kOther,         20, {0, 0, 0, 0, 0},               Signal::lambda,                  1,      0.5,   1.5},
    {"Torque",        as_text("Nm", 0),          kRange,              kOther,         20, {-100, 1300, 0, 0, 0},         Signal::torque_nm,               1,     -100,   500},
};

// Further channels take their sensors by turns.
constexpr Row kAuxiliaryChannels[] = {
    {"",              as_text("A", 1),           kRange,              kOther,         10, {0, 500, 0, 0, 0},             Signal::auxiliary,               1,        0,   250},
    {"",              as_text("kg", 1),          kMultiplier,         kOther,         10, {0.01, 0, 0, 0, 0},            Signal::auxiliary,               1,        0,   250},
    {"",              as_text("mm", 1),          kTwoPoints,          kOther,         10, {0, 0, 5, 250, 0},             Signal::auxiliary,               1,        0,   250},
};
// The last of them can't be turned round.
constexpr std::size_t kOldAuxiliaryChannels = std::size(kAuxiliaryChannels) - 1;
constexpr int kAuxiliaryRates[] = {10, 20, 50, 5, 100};

struct FormulaRow {
  const char* name;
  const char* unit;
  const char* formula;
  const char* description;
  const char* paced_by;  // the channel whose rate it has
  std::uint32_t decimals;
  double low;
  double high;
};

constexpr FormulaRow kFormulas[] = {
    // name          unit    formula                           description               paced by    decimals low  high
    {"Speed ms",    "m/s",  "Speed #1 / 3.6",                 "Speed in SI units",       "Speed #1", 1,        0,    90},
    {"Engine krpm", "krpm", "Engine / 1000",                  "Engine in thousands",     "Engine",   2,        0,     9},
    {"Acc Calc",    "g",    "deriv(Speed #1 / 3.6) / 9.806",  "Gain of speed",           "Speed #1", 2,       -2,     2},
    {"Lap Dist",    "m",    "lap_integ(Speed #1 / 3.6)",      "Way since the line",      "Speed #1", 0,        0,  6000},
    {"Lap Clock",   "s",    "time()",                         "Time since the line",     "Speed #1", 1,        0,   200},
};
// clang-format on

// Every formula reads the first two channels.
constexpr std::size_t kFormulaInputs = 2;

// Devices whose readers derive channels from the shaft's speed.
constexpr std::uint32_t kShaftDevices[] = {48, 56, 59, 60, 18, 70, 317, 318};

struct Rate {
  int hz;
  std::uint32_t index;
};
constexpr Rate kRates[] = {{1, 0},  {2, 1},  {4, 11},  {5, 9},   {8, 12},  {10, 2},
                           {20, 3}, {50, 4}, {100, 5}, {200, 6}, {500, 7}, {1000, 8}};
constexpr int kOldRates[] = {2, 10, 20, 50, 100, 200};

// What the gear barrel's potentiometer shows in each position, from neutral up.
constexpr double kFirstThreshold = 320;
constexpr double kThresholdStep = 496;

constexpr double kVoltsPerCount = 5.0 / 4096;
constexpr double kCountsPerG = 437;

struct CurvePoint {
  double counts;
  double degrees;
};
constexpr CurvePoint kThermocoupleCurve[] = {{0, 0},      {132, 40},   {268, 80},    {403, 120},   {667, 200},
                                             {1000, 300}, {1343, 400}, {1691, 500},  {2040, 600},  {2386, 700},
                                             {2726, 800}, {3058, 900}, {3381, 1000}, {4001, 1200}, {4293, 1300}};

double thermocouple_counts(double degrees) {
  std::size_t i = 1;
  while (i + 1 < std::size(kThermocoupleCurve) && degrees > kThermocoupleCurve[i].degrees) ++i;
  const CurvePoint& below = kThermocoupleCurve[i - 1];
  const CurvePoint& above = kThermocoupleCurve[i];
  return below.counts + (degrees - below.degrees) * (above.counts - below.counts) / (above.degrees - below.degrees);
}

double counts_of(const WmpChannel& channel, double value) {
  const auto& [p0, p1, p2, p3, p4] = channel.parameters;
  switch (channel.sensor) {
    case kWheelSpeed:
    case kReceiverSpeed:
    case kTenthsOfDegree:
      return value * 10;
    case kThermocouple:
      return thermocouple_counts(value);
    case kSpan:
      return p0 + value * (p2 - p0) / p1;
    case kTwoSided:
      return value >= 0 ? p0 + value * (p3 - p0) / p4 : p0 + value * (p1 - p0) / p2;
    case kAcceleration:
      return p0 + value * kCountsPerG;
    case kAccelerationTurned:
      return p0 - value * kCountsPerG;
    case kTwoPoints:
    case kTwoPointPressure:
      return (p0 + (value - p1) * (p2 - p0) / (p3 - p1)) / kVoltsPerCount;
    case kPotentiometer:
      return p0 + value * p2 / p1;
    case kGyro:
      return p0 + value * 0.028082998 / kVoltsPerCount;
    case kBattery:
      return value * 4096 / 22.5;
    case kMultiplier:
      return value / p0;
    case kColdJunction:
      return 1040 - (value - 25) * 4.9152;
    case kPressureCounts:
      return value / 0.0012207;
    case kLambdaThousandths:
    case kThousandthsOfG:
      return value * 1000;
    case kRange:
      return (value - p0) * 65535 / (p1 - p0);
    default:
      return value;
  }
}

WmpChannel channel_of(const Row& row) {
  WmpChannel channel;
  channel.name = row.name;
  channel.unit = row.unit;
  channel.sensor = row.sensor;
  channel.measure_class = row.measure_class;
  channel.rate_hz = row.rate_hz;
  std::copy(std::begin(row.parameters), std::end(row.parameters), channel.parameters.begin());
  channel.signal = row.signal;
  channel.scale = row.scale;
  channel.low = row.low;
  channel.high = row.high;
  return channel;
}

WmpChannel auxiliary_channel(const WmpForm& form, std::size_t number, std::size_t i) {
  const std::size_t sensors = form.has_physical_values() ? kOldAuxiliaryChannels : std::size(kAuxiliaryChannels);
  WmpChannel channel = channel_of(kAuxiliaryChannels[i % sensors]);
  channel.name = auxiliary_name(number);
  channel.rate_hz = kAuxiliaryRates[i % std::size(kAuxiliaryRates)];
  channel.lift = kAuxiliaryReach;
  return channel;
}

bool has_shaft(const WmpForm& form) {
  return std::find(std::begin(kShaftDevices), std::end(kShaftDevices), form.device_code) != std::end(kShaftDevices);
}

std::vector<WmpChannel> usual_channels(const WmpForm& form) {
  std::vector<WmpChannel> channels;
  if (form.has_physical_values()) {
    for (const Row& row : kOldChannels) channels.push_back(channel_of(row));
    return channels;
  }
  for (const Row& row : kChannels) {
    channels.push_back(channel_of(row));
    // far in front, so that a small number of channels still has it.
    if (row.sensor == kWheelSpeed && has_shaft(form)) channels.push_back(channel_of(kShaftChannel));
  }
  if (form.has_extensions()) {
    for (const Row& row : kExtendedChannels) channels.push_back(channel_of(row));
  }
  if (channels.size() > form.most_channels()) channels.resize(form.most_channels());
  return channels;
}

// Ascending.
std::vector<int> rates_of(const WmpForm& form) {
  if (form.has_physical_values()) return {std::begin(kOldRates), std::end(kOldRates)};
  std::vector<int> rates;
  for (const Rate& rate : kRates) rates.push_back(rate.hz);
  return rates;
}

void set_rates(std::vector<WmpChannel>& channels, int one_rate_hz, const WmpForm& form) {
  const std::vector<int> rates = rates_of(form);
  if (one_rate_hz > 0 && std::find(rates.begin(), rates.end(), one_rate_hz) == rates.end()) {
    std::string known;
    for (const int rate : rates) known += (known.empty() ? "" : ", ") + std::to_string(rate);
    throw tool::Failure("the rate must be one of this version: " + known);
  }
  // An area of version 550 holds 27 minutes at this rate.
  const int fastest_wanted = form.has_two_areas() ? 20 : rates.back();
  for (WmpChannel& channel : channels) {
    const int wanted = one_rate_hz > 0 ? one_rate_hz : std::min(channel.rate_hz, fastest_wanted);
    const auto found = std::lower_bound(rates.begin(), rates.end(), wanted);
    channel.rate_hz = found == rates.end() ? rates.back() : *found;
  }
  // Where the logger can't take so many, the fastest channels give way.
  for (auto fastest = rates.rbegin(); samples_per_second(channels) > form.most_samples_per_second(); ++fastest) {
    if (one_rate_hz > 0 || fastest == rates.rend()) {
      throw tool::Failure("a logger of this version takes " + std::to_string(form.most_samples_per_second()) +
                          " samples a second: fewer channels or a lower rate");
    }
    for (WmpChannel& channel : channels) channel.rate_hz = std::min(channel.rate_hz, *fastest);
  }
}

void append_formulas(std::vector<WmpChannel>& channels) {
  const std::size_t logged = channels.size();
  if (logged < kFormulaInputs) return;
  for (const FormulaRow& row : kFormulas) {
    WmpChannel channel;
    channel.name = row.name;
    channel.unit = as_text(row.unit, row.decimals);
    channel.sensor = kFormula;
    channel.formula = row.formula;
    channel.description = row.description;
    channel.low = row.low;
    channel.high = row.high;
    for (std::size_t i = 0; i < logged; ++i) {
      if (channels[i].name == row.paced_by) channel.rate_hz = channels[i].rate_hz;
    }
    channels.push_back(channel);
  }
}

}  // namespace

// --- Forms

std::uint32_t WmpForm::family() const {
  if (has_dump()) return old_dump ? 5 : 7;
  return has_runs() ? 10 : 3;
}

std::size_t WmpForm::most_channels() const {
  if (has_dump()) return old_dump ? 24 : 24 + 64;
  return has_two_areas() ? 2 : 32000;
}

int WmpForm::most_samples_per_second() const {
  if (has_dump()) return old_dump ? 500 : 1000;
  return 32000 * 1000;
}

// --- Channels

std::vector<WmpChannel> plan_wmp_channels(const SimulationOptions& options, const WmpForm& form) {
  std::vector<WmpChannel> channels = usual_channels(form);
  if (options.channels > 0) {
    const std::size_t count = static_cast<std::size_t>(options.channels);
    const std::size_t usual = channels.size();
    if (count < usual) channels.resize(count);
    while (channels.size() < count) {
      channels.push_back(auxiliary_channel(form, channels.size() + 1, channels.size() - usual));
    }
  }
  set_rates(channels, options.rate_hz, form);
  if (form.has_formulas()) append_formulas(channels);
  return channels;
}

int samples_per_second(std::span<const WmpChannel> channels) {
  int sum = 0;
  for (const WmpChannel& channel : channels) sum += channel.rate_hz;
  return sum;
}

double measure(const WmpChannel& channel, std::size_t number, const CarState& car, Random& noise) {
  const double value = measure(channel.signal, number, car, noise) * channel.scale + channel.lift;
  // What counts pulses doesn't tremble below none.
  const bool counts_pulses = channel.sensor == kEngineSpeed || channel.sensor == kWheelSpeed;
  return counts_pulses ? std::max(value, 0.0) : value;
}

std::uint16_t raw_word(const WmpChannel& channel, double value) {
  constexpr double kHighestWord = 0x7FFF;
  return static_cast<std::uint16_t>(std::clamp(std::floor(counts_of(channel, value) + 0.5), 0.0, kHighestWord));
}

// --- Fields of a channel record

std::string unit_field(const WmpUnit& unit) {
  const auto digit = [](std::uint32_t value) { return static_cast<char>('0' + value % 10); };
  std::string field;
  switch (unit.form) {
    case UnitForm::text:
      return unit.text;
    case UnitForm::digits:
      field = '\t';
      for (const std::uint32_t place : {1000u, 100u, 10u, 1u}) field += digit(unit.id / place);
      return field + digit(unit.decimals);
    case UnitForm::packed: {
      const std::uint32_t word = unit.id | unit.decimals << 12;
      field = '\v';
      field += static_cast<char>(word & 0xFFu);
      return field + static_cast<char>(word >> 8);
    }
  }
  return field;
}

std::array<float, 5> stored_parameters(const WmpChannel& channel) {
  std::array<float, 5> stored{};
  for (std::size_t i = 0; i < stored.size(); ++i) {
    stored[i] = static_cast<float>(channel.parameters[i]);
    if (channel.sensor != kGearBarrel) continue;
    // Two thresholds in the place of each parameter.
    const auto threshold = [](std::size_t n) {
      return static_cast<std::uint32_t>(kFirstThreshold + kThresholdStep * static_cast<double>(n));
    };
    stored[i] = std::bit_cast<float>(threshold(2 * i) | threshold(2 * i + 1) << 16);
  }
  return stored;
}

std::uint32_t rate_index(int rate_hz) {
  for (const Rate& rate : kRates) {
    if (rate.hz == rate_hz) return rate.index;
  }
  return 0;
}

std::uint32_t function_id(const WmpChannel& channel) {
  constexpr std::uint32_t kGearFunction = 22;
  constexpr std::uint32_t kSpeedFunction = 19;
  constexpr std::uint32_t kReceiverSpeedFunction = 95;
  constexpr std::uint32_t kLambdaFunction = 98;
  switch (channel.sensor) {
    case kWheelSpeed:
      return kSpeedFunction;
    case kReceiverSpeed:
      return kReceiverSpeedFunction;
    case kGearBarrel:
      return kGearFunction;
    case kLambdaThousandths:
      return kLambdaFunction;
    default:
      return 0;
  }
}

std::uint32_t smoothing_passes(const WmpChannel& channel) {
  return channel.sensor == kPotentiometer ? 1u : 0u;
}

bool shows_digits(const WmpChannel& channel) {
  return channel.signal == Signal::switches;
}

bool is_stepped(const WmpChannel& channel) {
  return channel.sensor == kGearBarrel || shows_digits(channel);
}

}  // namespace traguardo::simulator
