// SPDX-License-Identifier: MIT
// The channels that the legacy reader adds by itself, and what fills a derived channel: what
// `CWMP::AssicuraPresenzaCanaleMatematico`, the load sequence and the computation of derived channels look up.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

// What computes a derived channel, by the computation kind of its record. A kind without a row counts as kFormula.
enum class DerivedComputation : u8 {
  kFormula,       // `CGestMathChan`
  kGearedSpeed,   // per run, from the shaft by gears and wheel
  kAcceleration,  // per run, from the shaft's rise
  kScaledSpeed,   // per run, shaft / p0 of the shaft
  kBoostLimit,    // the boost limit calculator, which fills the kinds of kNothing along with its own
  kNothing,       // nothing by themselves
  kLimiter,       // the limiter calculator
};
struct ComputationKindRow {
  u16 kind;
  DerivedComputation computation;
};

// Where the sample rate index of a new channel comes from: a fixed index, or one of these.
inline constexpr i32 kRateOfShaft = -1;   // first channel of sensor 77
inline constexpr i32 kRateOfEngine = -2;  // last channel named `Engine`

// Inputs without which a kind isn't added.
inline constexpr u8 kNeedsShaft = 1;   // a channel of sensor 77
inline constexpr u8 kNeedsRpm = 2;     // a channel of sensor 0
inline constexpr u8 kNeedsEngine = 4;  // a channel named `Engine`

// All have filter word 0 and don't update an existing channel.
struct SynthesisedChannelRow {
  u16 kind;
  const char* name;
  const char* unit;  // nullptr: the user's speed unit
  u16 measure_class;
  i32 rate_index;
  float display_min;
  float display_max;
  i8 decimals;
  bool reference_candidate;
  u32 function;
  u32 sub_function;
  const char* formula;  // format of the formula text; nullptr: the channel's own name
  u8 needs;
  i32 log_line;  // line number of the log line about a missing input, 0 for kinds that need none
};
inline constexpr i32 kUnknownKindLogLine = 4910;

// Load sequence: the kinds that a device gets, in order. A device code without a row gets none.
struct DeviceKindRow {
  u32 device_code;
  u16 kind;
};

// Then the configuration files in the application folder: the kinds that a file brings, in order. Kind 0 is no channel
// but one run of the channel exporter.
struct ConfigurationKindRow {
  const char* file;
  u16 kind;
};

std::span<const ComputationKindRow> computation_kinds();
std::span<const SynthesisedChannelRow> synthesised_channels();
std::span<const DeviceKindRow> device_kinds();
std::span<const ConfigurationKindRow> configuration_kinds();

}  // namespace traguardo
