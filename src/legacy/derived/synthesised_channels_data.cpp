// SPDX-License-Identifier: MIT
#include "legacy/derived/synthesised_channels_data.h"

namespace traguardo {
namespace {

// clang-format off
constexpr ComputationKindRow kComputationKinds[] = {
    // kind, computation
    { 0, DerivedComputation::kFormula},
    { 1, DerivedComputation::kGearedSpeed},
    { 2, DerivedComputation::kFormula},
    { 3, DerivedComputation::kFormula},
    { 4, DerivedComputation::kAcceleration},
    { 5, DerivedComputation::kScaledSpeed},
    { 6, DerivedComputation::kBoostLimit},
    { 7, DerivedComputation::kNothing},
    { 8, DerivedComputation::kNothing},
    { 9, DerivedComputation::kNothing},
    {10, DerivedComputation::kNothing},
    {11, DerivedComputation::kNothing},
    {12, DerivedComputation::kLimiter},
};

constexpr SynthesisedChannelRow kSynthesisedChannels[] = {
    // kind, name, unit, measure_class, rate_index, display_min, display_max, decimals, reference_candidate, function,
    // sub_function, formula, needs, log_line
    { 1, "Speed",       nullptr, 3, kRateOfShaft,   0.0f,  85.0f, 2, true,  19,  0, "(%s / 60000) * %d * %d * %.4f / %d",              kNeedsShaft,             4605},
    { 2, "CVT",         "",      1, kRateOfShaft,   0.0f,   6.0f, 2, true,  70,  0, "%s / %s",                                         kNeedsRpm | kNeedsShaft, 4655},
    { 3, "Drive",       "%",     1, kRateOfShaft,   0.0f, 130.0f, 2, true,  71,  0, "(1 - ((%s - %s) / %s)) * 100",                    kNeedsRpm | kNeedsShaft, 4678},
    { 4, "Linear",      "g",     1, kRateOfShaft,  -1.0f,   3.0f, 2, true,   2, 11, "(deriv((((%s / 60000) * %d) * %d) / %d) * %.4f)", kNeedsShaft,             4701},
    { 5, "SpeedCalc",   nullptr, 3, kRateOfShaft,   0.0f, 200.0f, 2, true,  19,  0, "%s / %.4f",                                       kNeedsShaft,             4743},
    { 6, "FlagFIA",     "",      8, 5,             -1.0f,   2.0f, 2, false,  0,  0, nullptr,                                           0,                          0},
    { 7, "LimitFIA",    "",      8, 5,             -1.0f,   2.0f, 2, false,  0,  0, nullptr,                                           0,                          0},
    { 8, "ValFIA",      "",      8, 5,             -1.0f,   2.0f, 2, false,  0,  0, nullptr,                                           0,                          0},
    { 9, "IntegFIA",    "",      8, 5,              0.0f,  20.0f, 2, false,  0,  0, nullptr,                                           0,                          0},
    {10, "Ctr30FIA",    "",      8, 5,              0.0f,  30.0f, 0, false,  0,  0, nullptr,                                           0,                          0},
    {11, "Ctr100FIA",   "",      8, 5,              0.0f, 100.0f, 0, false,  0,  0, nullptr,                                           0,                          0},
    {12, "FMI_Limiter", "",      8, kRateOfEngine,  0.0f, 100.0f, 3, false,  0,  0, "LimiterFMI",                                      kNeedsEngine,            4887},
};

constexpr DeviceKindRow kDeviceKinds[] = {
    // device_code, kind
    { 48, 1},
    { 48, 2},
    { 48, 3},
    { 48, 4},
    { 56, 1},
    { 56, 2},
    { 56, 3},
    { 56, 4},
    { 59, 1},
    { 59, 2},
    { 59, 3},
    { 59, 4},
    { 60, 1},
    { 60, 2},
    { 60, 3},
    { 60, 4},
    { 18, 5},
    { 70, 5},
    {317, 5},
    {318, 5},
};

constexpr ConfigurationKindRow kConfigurationKinds[] = {
    // file, kind
    {"\\FIA.txt",          6},
    {"\\FIA.txt",          7},
    {"\\FIA.txt",          8},
    {"\\FIA.txt",          9},
    {"\\FIA.txt",         10},
    {"\\FIA.txt",         11},
    {"\\FMI-limiter.txt", 12},
    {"\\Exporter.txt",     0},
};
// clang-format on

}  // namespace

std::span<const ComputationKindRow> computation_kinds() {
  return kComputationKinds;
}
std::span<const SynthesisedChannelRow> synthesised_channels() {
  return kSynthesisedChannels;
}
std::span<const DeviceKindRow> device_kinds() {
  return kDeviceKinds;
}
std::span<const ConfigurationKindRow> configuration_kinds() {
  return kConfigurationKinds;
}

}  // namespace traguardo
