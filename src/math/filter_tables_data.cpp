// SPDX-License-Identifier: MIT
#include "math/filter_tables.h"

namespace traguardo {
namespace {

// clang-format off
constexpr float kFirTaps[kFirTapCount] = {
     0.00424066F,
     0.02649283F,
     0.01765185F,
    -0.07147145F,
    -0.03242356F,
      0.3044619F,
     0.53965306F,
      0.3044619F,
    -0.03242356F,
    -0.07147145F,
     0.01765185F,
     0.02649283F,
     0.00424066F,
};

// code, Hz, period in ms; by rising frequency
constexpr SFrequencyRow kFrequencies[] = {
    {10,    0, 32000},
    { 0,    1,  1000},
    { 1,    2,   500},
    {11,    4,   250},
    { 9,    5,   200},
    {12,    8,   125},
    { 2,   10,   100},
    { 3,   20,    50},
    { 4,   50,    20},
    { 5,  100,    10},
    { 6,  200,     5},
    { 7,  500,     2},
    { 8, 1000,     1},
};
// clang-format on

}  // namespace

std::span<const float, kFirTapCount> fir_taps() {
  return kFirTaps;
}
std::span<const SFrequencyRow> frequency_rows() {
  return kFrequencies;
}

}  // namespace traguardo
