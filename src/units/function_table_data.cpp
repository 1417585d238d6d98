// SPDX-License-Identifier: MIT
// The main table: which functions exist, and the units that each can be shown in.
#include "units/catalogue.h"

namespace traguardo::catalogue {
namespace {

// clang-format off

// Units: name, scale, offset, default, most and least decimals, index of the row that stands for the name.
constexpr UnitRow kU1[] = {
    {"%", 1.0F, 0.0F, 2, 2, 0, -1},
};
constexpr UnitRow kU2[] = {
    {"%/s", 1.0F, 0.0F, 1, 1, 0, -1},
};
constexpr UnitRow kU3[] = {
    {"g", 1.0F, 0.0F, 2, 2, 0, -1},
};
constexpr UnitRow kU4[] = {
    {"deg", 1.0F, 0.0F, 0, 2, 0, -1},
};
constexpr UnitRow kU5[] = {
    {"mm", 1.0F,       0.0F, 0, 1, 0, -1},
    {"in", 0.0393701F, 0.0F, 1, 3, 0, -1},
};
constexpr UnitRow kU6[] = {
    {"deg/s", 1.0F, 0.0F, 1, 2, 0, -1},
};
constexpr UnitRow kU7[] = {
    {"deg/s", 1.0F,       0.0F, 1, 2, 0, -1},
    {"rpm",   0.166667F,  0.0F, 0, 0, 0, -1},
    {"rad/s", 0.0174533F, 0.0F, 2, 3, 0, -1},
};
constexpr UnitRow kU8[] = {
    {"#", 1.0F, 0.0F, 0, 0, 0, -1},
};
constexpr UnitRow kU9[] = {
    {"deg", 1.0F, 0.0F, 5, 5, 0, -1},
};
constexpr UnitRow kU10[] = {
    {"m",  1.0F,     0.0F, 2, 2, 0, -1},
    {"ft", 3.28084F, 0.0F, 2, 2, 0, -1},
};
constexpr UnitRow kU11[] = {
    {"Coord", 1.0F, 0.0F, 0, 0, 0, -1},
};
constexpr UnitRow kU12[] = {
    {"km", 0.001F,       0.0F, 1, 1, 0, -1},
    {"mi", 0.000621371F, 0.0F, 1, 1, 0, -1},
};
constexpr UnitRow kU13[] = {
    {"m",  1.0F,         0.0F, 0, 0, 0, -1},
    {"km", 0.001F,       0.0F, 3, 3, 0, -1},
    {"ft", 3.28084F,     0.0F, 0, 0, 0, -1},
    {"mi", 0.000621371F, 0.0F, 3, 3, 0, -1},
};
constexpr UnitRow kU14[] = {
    {"Hz",  1.0F,   0.0F, 1, 1, 0, -1},
    {"kHz", 0.001F, 0.0F, 3, 3, 0, -1},
};
constexpr UnitRow kU15[] = {
    {"kg/s", 1.0F,       0.0F, 1, 1, 0, -1},
    {"g/s",  1000.0F,    0.0F, 1, 1, 0, -1},
    {"mg/s", 1000000.0F, 0.0F, 1, 1, 0, -1},
};
constexpr UnitRow kU16[] = {
    {" ", 1.0F, 0.0F, 0, 0, 0, -1},
};
constexpr UnitRow kU17[] = {
    {"#", 1.0F, 0.0F, 0, 1, 0, -1},
};
constexpr UnitRow kU18[] = {
    {"mm", 1.0F,        0.0F, 0, 1, 0, -1},
    {"in", 0.0393701F,  0.0F, 1, 3, 0, -1},
    {"m",  0.001F,      0.0F, 2, 3, 0, -1},
    {"ft", 0.00328084F, 0.0F, 2, 3, 0, -1},
};
constexpr UnitRow kU19[] = {
    {"kW", 1.0F,     0.0F, 2, 2, 0, -1},
    {"HP", 1.35962F, 0.0F, 2, 2, 0, -1},
    {"CV", 1.34102F, 0.0F, 2, 2, 0, -1},
    {"W",  1000.0F,  0.0F, 0, 0, 0, -1},
};
constexpr UnitRow kU20[] = {
    {"bar", 1.0F,     0.0F, 2, 2, 0, -1},
    {"psi", 14.5038F, 0.0F, 1, 1, 0, -1},
    {"kPa", 100.0F,   0.0F, 0, 0, 0, -1},
};
constexpr UnitRow kU21[] = {
    {"bar", 1.0F,     0.0F, 1, 1, 0, -1},
    {"psi", 14.5038F, 0.0F, 0, 0, 0, -1},
};
constexpr UnitRow kU22[] = {
    {"bar",  1.0F,     0.0F, 2, 2, 0, -1},
    {"psi",  14.5038F, 0.0F, 1, 1, 0, -1},
    {"kPa",  100.0F,   0.0F, 0, 0, 0, -1},
    {"mbar", 1000.0F,  0.0F, 0, 0, 0, -1},
    {"inHg", 29.5301F, 0.0F, 0, 2, 0, -1},
};
constexpr UnitRow kU23[] = {
    {"rpm", 1.0F, 0.0F, 0, 0, 0, -1},
};
constexpr UnitRow kU24[] = {
    {"km/h", 1.0F,      0.0F, 1, 1, 0, -1},
    {"mph",  0.621371F, 0.0F, 1, 1, 0, -1},
};
constexpr UnitRow kU25[] = {
    {"C", 1.0F, 0.0F,  1, 1, 0, -1},
    {"F", 1.8F, 32.0F, 1, 1, 0, -1},
};
constexpr UnitRow kU26[] = {
    {"s",   1.0F,         0.0F, 0, 3, 0, -1},
    {"ms",  1000.0F,      0.0F, 0, 1, 0, -1},
    {"min", 0.0166667F,   0.0F, 0, 0, 0, -1},
    {"h",   0.000277778F, 0.0F, 0, 0, 0, -1},
};
constexpr UnitRow kU27[] = {
    {"ms", 1.0F, 0.0F, 0, 0, 0, -1},
};
constexpr UnitRow kU28[] = {
    {"ms",  1.0F,            0.0F, 0, 1, 0, -1},
    {"s",   0.001F,          0.0F, 3, 3, 0, -1},
    {"min", 0.0000166667F,   0.0F, 0, 0, 0, -1},
    {"us",  1000.0F,         0.0F, 0, 0, 0, -1},
    {"h",   0.000000277778F, 0.0F, 0, 0, 0, -1},
};
constexpr UnitRow kU29[] = {
    {"Nm", 1.0F, 0.0F, 1, 1, 0, -1},
};
constexpr UnitRow kU30[] = {
    {"km/h",  1.0F,      0.0F, 1, 1, 0, -1},
    {"mph",   0.621371F, 0.0F, 1, 1, 0, -1},
    {"m/s",   0.277778F, 0.0F, 1, 1, 0, -1},
    {"ft/s",  0.911344F, 0.0F, 1, 1, 0, -1},
    {"cm/s",  27.7778F,  0.0F, 1, 1, 0, -1},
    {"m/min", 16.6667F,  0.0F, 1, 1, 0, -1},
};
constexpr UnitRow kU31[] = {
    {"V", 0.001F, 0.0F, 1, 1, 1, -1},
};
constexpr UnitRow kU32[] = {
    {"mV", 1.0F,   0.0F, 0, 0, 0, -1},
    {"V",  0.001F, 0.0F, 3, 3, 0, -1},
};
constexpr UnitRow kU33[] = {
    {"l",     1.0F,      0.0F, 1, 3, 0, -1},
    {"gal",   0.264172F, 0.0F, 2, 3, 0, 2},
    {"USgal", 0.264172F, 0.0F, 2, 3, 0, -1},
    {"UKgal", 0.219969F, 0.0F, 2, 3, 0, -1},
};
constexpr UnitRow kU34[] = {
    {"l*Lap", 1.0F, 0.0F, 2, 2, 0, -1},
};
constexpr UnitRow kU35[] = {
    {"l/s",     1.0F,       0.0F, 0, 0, 0, -1},
    {"gal/s",   0.264172F,  0.0F, 2, 3, 0, 2},
    {"USgal/s", 0.264172F,  0.0F, 2, 3, 0, -1},
    {"UKgal/s", 0.219969F,  0.0F, 2, 3, 0, -1},
    {"l/h",     3600.0F,    0.0F, 0, 0, 0, -1},
    {"gal/h",   951.0198F,  0.0F, 2, 3, 0, 6},
    {"USgal/h", 951.0198F,  0.0F, 2, 3, 0, -1},
    {"UKgal/h", 791.8893F,  0.0F, 2, 3, 0, -1},
    {"ml/s",    1000.0F,    0.0F, 0, 0, 0, -1},
    {"ul/s",    1000000.0F, 0.0F, 0, 0, 0, -1},
};
constexpr UnitRow kU36[] = {
    {"Date", 1.0F, 0.0F, 0, 0, 0, -1},
};
constexpr UnitRow kU37[] = {
    {"Pckt", 1.0F, 0.0F, 0, 0, 0, -1},
};
constexpr UnitRow kU38[] = {
    {"A", 1.0F, 0.0F, 3, 3, 0, -1},
};
constexpr UnitRow kU39[] = {
    {"rpm/s", 1.0F, 0.0F, 0, 0, 0, -1},
};
constexpr UnitRow kU40[] = {
    {"\x09\x03\xBB", 1.0F, 0.0F, 2, 3, 1, -1},
};
constexpr UnitRow kU41[] = {
    {"AFR", 1.0F, 0.0F, 2, 2, 0, 1},
    {"A/F", 1.0F, 0.0F, 2, 2, 0, -1},
};
constexpr UnitRow kU42[] = {
    {"gear", 1.0F, 0.0F, 0, 0, 0, -1},
};
constexpr UnitRow kU43[] = {
    {"V", 1.0F, 0.0F, 0, 1, 0, -1},
};
constexpr UnitRow kU44[] = {
    {"l/hkm",   1.0F,      0.0F, 1, 1, 0, -1},
    {"g/hmi",   0.425143F, 0.0F, 2, 3, 0, 2},
    {"USg/hmi", 0.425143F, 0.0F, 2, 3, 0, -1},
    {"UKg/hmi", 0.354005F, 0.0F, 2, 3, 0, -1},
};
constexpr UnitRow kU45[] = {
    {"km/l", 1.0F,     0.0F, 1, 1, 0, -1},
    {"mpg",  2.35215F, 0.0F, 1, 1, 0, -1},
};
constexpr UnitRow kU46[] = {
    {"ft/s2", 1.0F, 0.0F, 1, 1, 0, -1},
};
constexpr UnitRow kU47[] = {
    {"mG", 1.0F,  0.0F, 1, 2, 0, -1},
    {"uT", 10.0F, 0.0F, 1, 3, 0, -1},
};
constexpr UnitRow kU48[] = {
    {"krpm", 1.0F, 0.0F, 1, 1, 0, -1},
};

constexpr UnitSet kUnitSets[] = {
    kU1, kU2, kU3, kU4, kU5, kU6, kU7, kU8,
    kU9, kU10, kU11, kU12, kU13, kU14, kU15, kU16,
    kU17, kU18, kU19, kU20, kU21, kU22, kU23, kU24,
    kU25, kU26, kU27, kU28, kU29, kU30, kU31, kU32,
    kU33, kU34, kU35, kU36, kU37, kU38, kU39, kU40,
    kU41, kU42, kU43, kU44, kU45, kU46, kU47, kU48,
};

// Corners of a vehicle that a position may be split into.
constexpr PositionWordRow kCorners[] = {
    {0x4000000, "Fr",   "Front"},
    {0x5000000, "FrLe", "Front Left"},
    {0x4800000, "FrRi", "Front Right"},
    {0x3000000, "ReLe", "Rear Left"},
    {0x2800000, "ReRi", "Rear Right"},
    {0x2000000, "Re",   "Rear"},
};

// Positions: value, short name, long name, corners.
constexpr PositionRow kPositions20E[] = {
    {3,  "BP", "Brake Press",  {}},
    {14, "BP", "Wheel Brk Pr", kCorners},
};
constexpr PositionRow kPositions10[] = {
    {13, "VSpd", "Vehicle Spd", {}},
    {14, "WSpd", "Wheel Spd",   kCorners},
};
constexpr PositionRow kPositions11[] = {
    {6, "HdT",  "Head Temp",   {}},
    {0, "Temp", "Temperature", {}},
};
constexpr PositionRow kPositions1B12[] = {
    {6, "EOff", "Engine Off Time", {}},
};
constexpr PositionRow kPositions14[] = {
    {11, "SuVe", "Susp Velocity", kCorners},
};

// Functions: word, short name, long name, units, positions. The first row that fits is the one.
constexpr FunctionRow kFunctions[] = {
    {0x281,   "X",     "Pct Brake Load",     kU1,  {}},
    {0x401,   "X",     "Pct Engine Load",    kU1,  {}},
    {0xE81,   "X",     "Pct Throttle Load",  kU1,  {}},
    {0x581,   "X",     "Pct Fuel Level",     kU1,  {}},
    {0x1,     "X",     "Percent",            kU1,  {}},
    {0x282,   "Xs",    "Rate Brake Load",    kU2,  {}},
    {0x402,   "Xs",    "Rate Engine Load",   kU2,  {}},
    {0xE82,   "Xs",    "Rate Thrtle Load",   kU2,  {}},
    {0x2,     "Xs",    "Rate",               kU2,  {}},
    {0x1103,  "G",     "Inline Accel",       kU3,  {}},
    {0x1183,  "G",     "Lateral Accel",      kU3,  {}},
    {0x1203,  "G",     "Vertical Accel",     kU3,  {}},
    {0x3,     "G",     "Acceleration",       kU3,  {}},
    {0x4,     "A",     "Angle",              kU4,  {}},
    {0xD84,   "SP",    "Steering Pos",       kU5,  {}},
    {0x1105,  "As",    "Roll Rate",          kU6,  {}},
    {0x1185,  "As",    "Pitch Rate",         kU6,  {}},
    {0x1205,  "As",    "Yaw Rate",           kU6,  {}},
    {0x5,     "As",    "Ang Velocity",       kU7,  {}},
    {0x606,   "GeaN",  "Gear",               kU8,  {}},
    {0x506,   "ErrN",  "Error Code",         kU8,  {}},
    {0x1586,  "N",     "Code",               kU8,  {}},
    {0xB1886, "w4w2",  "Wheel Drive",        kU8,  {}},
    {0x6,     "N",     "Code",               kU8,  {}},
    {0xA07,   "La",    "Latitude",           kU9,  {}},
    {0xA87,   "Lo",    "Longitude",          kU9,  {}},
    {0x107,   "Al",    "Altitude",           kU10, {}},
    {0x7,     "C",     "Coordinate",         kU11, {}},
    {0x1608,  "ODO",   "Odometer Total",     kU12, {}},
    {0x1688,  "odo",   "Odometer ",          kU12, {}},
    {0x8,     "D",     "Distance",           kU13, {}},
    {0x9,     "F",     "Frequency",          kU14, {}},
    {0x8A,    "Ms",    "Air Mass Flow",      kU15, {}},
    {0xA,     "Ms",    "Mass Flow",          kU15, {}},
    {0x90B,   "LDgn",  "Lambda Diagn",       kU8,  {}},
    {0xA940B, "N",     "Number",             kU16, {}},
    {0x98B,   "N",     "Number",             kU16, {}},
    {0x158B,  "N",     "Number",             kU8,  {}},
    {0xB,     "N",     "Number",             kU17, {}},
    {0xE8C,   "TP",    "Throttle Pos",       kU5,  {}},
    {0x28C,   "BP",    "Brake Pos",          kU5,  {}},
    {0x30C,   "CP",    "Clutch Pos",         kU5,  {}},
    {0xA998C, "Accu",  "GPS Accuracy",       kU18, {}},
    {0xC,     "P",     "Position",           kU5,  {}},
    {0xD,     "Pw",    "Power",              kU19, {}},
    {0xB8E,   "OP",    "Oil Pressure",       kU20, {}},
    {0x20E,   "BP",    "Brake Press",        kU21, kPositions20E},
    {0x58E,   "FP",    "Fuel Press",         kU22, {}},
    {0xE,     "P",     "Pressure",           kU22, {}},
    {0xF,     "R",     "Engine RPM",         kU23, {}},
    {0x10,    "S",     "Speed",              kU24, kPositions10},
    {0x1091,  "T",     "Water Temp",         kU25, {}},
    {0x8091,  "T",     "Intake Air Temp",    kU25, {}},
    {0x40091, "T",     "Exhaust Temp",       kU25, {}},
    {0x91,    "T",     "Air Temp",           kU25, {}},
    {0xB91,   "T",     "Oil Temp",           kU25, {}},
    {0x11,    "T",     "Temperature",        kU25, kPositions11},
    {0x911,   "LT",    "Lambda Temp",        kU25, {}},
    {0x1B12,  "of",    "Time",               kU26, kPositions1B12},
    {0x992,   "lt",    "Lap Time",           kU16, {}},
    {0x1712,  "lt",    "Time",               kU16, {}},
    {0x2192,  "lt",    "Time",               kU16, {}},
    {0x1392,  "lt",    "Time",               kU16, {}},
    {0x1B92,  "drbt",  "+- Test Best Time",  kU16, {}},
    {0x2392,  "dtbt",  "+- Today Best Time", kU16, {}},
    {0x2412,  "dbt",   "+- Best Time",       kU16, {}},
    {0x1C12,  "lt",    "Time",               kU16, {}},
    {0x1C92,  "lt",    "Time",               kU16, {}},
    {0x1312,  "lt",    "Time",               kU16, {}},
    {0x1612,  "lt",    "Time",               kU16, {}},
    {0x1692,  "lt",    "Time",               kU16, {}},
    {0x2112,  "lt",    "Lap Time",           kU27, {}},
    {0x12,    "t",     "Time",               kU28, {}},
    {0x13,    "Tr",    "Torque",             kU29, {}},
    {0x2314,  "LVe",   "Speed Limiter",      kU30, {}},
    {0x14,    "Ve",    "Speed (Velocity)",   kU30, kPositions14},
    {0x195,   "BV",    "Battery Voltage",    kU31, {}},
    {0x615,   "GeaV",  "Gear Barrel",        kU32, {}},
    {0x15,    "V",     "Voltage",            kU32, {}},
    {0x596,   "FL",    "Fuel Level",         kU33, {}},
    {0x16,    "v",     "Volume",             kU33, {}},
    {0x17,    "vl",    "Volume in lap",      kU34, {}},
    {0x598,   "VFF",   "Fuel Flow",          kU35, {}},
    {0x18,    "vs",    "Volume Flow",        kU35, {}},
    {0x19,    "dt",    "Date",               kU36, {}},
    {0x1A,    "pc",    "Pckg",               kU37, {}},
    {0x1B,    "C",     "Current",            kU38, {}},
    {0x1D,    "Rs",    "RPM on sec",         kU39, {}},
    {0x49E,   "Lb",    "Lambda",             kU40, {}},
    {0x91E,   "Lb",    "Lambda",             kU40, {}},
    {0xC9E,   "AFR",   "AFR",                kU41, {}},
    {0x1E,    "Lb",    "Lambda",             kU40, {}},
    {0x61F,   "GeaN",  "Gear",               kU42, {}},
    {0x1F,    "GeaN",  "Generic Gear",       kU42, {}},
    {0x20,    "HiV",   "High Voltage",       kU43, {}},
    {0x21,    "Lum",   "Brightness",         kU1,  {}},
    {0x22,    "Cons",  "Consumption",        kU44, {}},
    {0x23,    "Econ",  "Economy",            kU45, {}},
    {0x24,    "Grip",  "Grip",               kU46, {}},
    {0x1125,  "MagX",  "MagnetomX",          kU47, {}},
    {0x11A5,  "MagY",  "MagnetomY",          kU47, {}},
    {0x1225,  "MagZ",  "MagnetomZ",          kU47, {}},
    {0x25,    "Magn",  "Magnetom",           kU47, {}},
    {0x418A6, "Trpm",  "TurboRpm",           kU48, {}},
    {0x26,    "HiRpm", "High Rpm",           kU48, {}},
};

// clang-format on

}  // namespace

std::span<const FunctionRow> functions() {
  return kFunctions;
}
std::span<const UnitSet> unit_sets() {
  return kUnitSets;
}

}  // namespace traguardo::catalogue
