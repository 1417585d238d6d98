// SPDX-License-Identifier: MIT
#include "math/standard_definitions.h"

namespace traguardo {
namespace {

// clang-format off
// name, unit, class, display minimum, display maximum, function, sub-function, formula
constexpr SStandardDefinition kDefinitions[] = {
    {"ZEP_Max_Speed",      "",    3,   0.0F,    250.0F, 19,  0,
     "max(Speed #1,Speed #2)"},
    {"ZEP_Linear_Acc_1",   "g",   1,  -2.0F,      2.0F,  2, 11,
     "deriv(Speed #1 * KMH2MS) / 9.806"},
    {"ZEP_Linear_Acc_2",   "g",   1,  -2.0F,      2.0F,  2, 11,
     "deriv(Speed #1 * MI2KM * KMH2MS) / 9.806"},
    {"ZEP_Slip_Factor",    "",    1,  -1.0F,     20.0F, 70,  0,
     "slip(Engine, Speed #1)"},
    {"ZEP_G_sum",          "",    1,  -3.0F,      3.0F, 75,  0,
     "sqrt((AccLat^2)+(AccLong^2))"},
    {"ZEP_Gear",           "",    1,   0.0F,      6.0F, 22,  0,
     "gear(Engine, Speed #1, 1, 6)"},
    {"ZEP_Aeropower",      "kW",  1,   0.0F,    100.0F,  0,  0,
     "(0.5 * 1.23 * FRONTSURF * Cx * (Speed #1 * KMH2MS)^3)/1000"},
    {"ZEP_Wheelpower",     "kW",  1,   0.0F,    100.0F, 58,  0,
     "ZEP_Aeropower + (MASS * (Speed #1 * KMH2MS) * (Linear Acc. * ACCGRAV)) / 1000"},
    {"ZEP_Kus",            "",    1,   0.0F,     10.0F, 76,  0,
     "ACCGRAV*(((Steer*DEG2RAD)/(Lateral acc.*ACCGRAV))-(WHEELBASE/((Speed #1*KMH2MS)^2)))"},
    {"ZEP_DistanceMeters", "m",   1,   0.0F,   6000.0F, 77,  0,
     "lap_integ(Speed #1 * KMH2MS)"},
    {"ZEP_DistanceFeet",   "ft",  1,   0.0F,   6000.0F, 77,  0,
     "lap_integ(Speed #1 * MPH2FTS)"},
    {"ZEP_Time",           "s",   1,   0.0F,    150.0F, 78,  0,
     "time()"},
};

// name, value
constexpr SStandardConstant kConstants[] = {
    {"KM2MI",       0.6213712F},
    {"MI2KM",       1.609344F},
    {"KMH2MS",      0.2777778F},
    {"MPH2FTS",     1.466667F},
    {"MI2FT",       5280.0F},
    {"DEG2RAD",     0.017453F},
    {"KW2CV",       1.3596216F},
    {"KW2HP",       1.3410219F},
    {"BAR2KPA",     100.0F},
    {"ZEROKELVIN",  -273.15997F},
    {"ACCGRAV",     9.8065F},
    {"PI",          3.14159F},
    {"DOUBLEPI",    6.28318F},
    {"MASS",        480.0F},
    {"WHEELBASE",   2.81F},
    {"GEARFACTOR",  5.0F},
    {"Cx",          0.5F},
    {"FRONTSURF",   0.9F},
    {"FTPERSEC",    32.2F},
};
// clang-format on

}  // namespace

std::span<const SStandardDefinition> standard_definitions() {
  return kDefinitions;
}
std::span<const SStandardConstant> standard_constants() {
  return kConstants;
}

}  // namespace traguardo
