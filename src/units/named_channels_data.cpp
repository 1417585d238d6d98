// SPDX-License-Identifier: MIT
// Functions with a key of their own, and the channels that displays and configurations know by name.
#include "units/catalogue.h"

namespace traguardo::catalogue {
namespace {

// clang-format off

// Word, short name, long name, key.
constexpr KeyRow kKeys[] = {
    {0x48611,   "GBxT", "Gear Box Temp",    "FG_GEAR_BOX_TEMP"},
    {0x8C01,    "APPS", "Admission Pedal",  "FG_ADMISSION_PPS"},
    {0x8091,    "AirT", "Admission AirTmp", "FG_ADMISSION_AIR_TEMP"},
    {0x808E,    "TurP", "Turbo Pressure",   "FG_EXHAUST_TURBO_PRESS"},
    {0x3058E,   "FEnP", "Fuel Eng Press",   "FG_ENGINE_FUEL_PRESS"},
    {0x858E,    "FAdP", "Fuel Adm Press",   "FG_ADMISSION_FUEL_PRESS"},
    {0x870010,  "SpRL", "Speed Wheel RL",   "REF_SPEED_RL"},
    {0xC70010,  "SpRR", "Speed Wheel RR",   "REF_SPEED_RR"},
    {0x1070010, "SpFL", "Speed Wheel FL",   "REF_SPEED_FL"},
    {0x1470010, "SpFR", "Speed Wheel FR",   "REF_SPEED_FR"},
    {0x318281,  "BkBl", "Brake Balance",    "BRAKE_BALANCE"},
    {0x100020E, "BkPF", "Brake Press Fr",   "BRAKE_PRESS_FRONT"},
    {0x80020E,  "BkPR", "Brake Press Rr",   "BRAKE_PRESS_REAR"},
    {0x404860B, "TipU", "Gear Tip Up",      "GEAR_PEDAL_SHIFT_UP"},
    {0x204860B, "TipD", "Gear Tip Down",    "GEAR_PEDAL_SHIFT_DOWN"},
    {0x6000B,   "DfMp", "Diff Map",         "DIFFERENTIAL_MAP"},
    {0x60B,     "GeaP", "Gear Lever Pos",   "GEAR_LEVER_POS"},
    {0x1712,    "RolT", "Rolling Time",     "FG_RUNNING_LAP_TIME"},
    {0x400606,  "DSG",  "DSG",              "DSG"},
    {0xB1886,   "wDrv", "Wheel drive",      "WHEEL_DRIVE"},
};

// Word, unit, divisor, code, scale, short name, long name, key, sample format.
constexpr NamedChannelRow kBasic[] = {
    {0xF,     "rpm",    1.0,   0x1,  1.0,    "rpm",  "Engine RPM",      "RPM_MOTORE",     0},
    {0x10,    "km/h",   10.0,  0x2,  1.0,    "Spd",  "Speed",           "REF_SPEED",      6},
    {0x61F,   "#",      1.0,   0x3,  1.0,    "Gear", "Gear",            "GEAR",           11},
    {0x1091,  "C",      10.0,  0x4,  1.0,    "WatT", "Water Temp",      "WATER_TEMP",     6},
    {0x30011, "C",      10.0,  0x5,  1.0,    "HeaT", "Head Temp",       "HEAD_TEMP",      6},
    {0x40091, "C",      10.0,  0x6,  1.0,    "ExhT", "Exhaust Temp",    "EXHAUST_TEMP",   6},
    {0xB91,   "C",      10.0,  0x7,  1.0,    "OilT", "Oil Temp",        "OIL_TEMP",       6},
    {0xB8E,   "bar",    100.0, 0x8,  1.0,    "OilP", "Oil Press",       "OIL_PRESS",      6},
    {0x20E,   "bar",    100.0, 0x9,  1.0,    "BrkP", "Brake Press",     "BRAKE_PRESS",    6},
    {0xE81,   "%",      1.0,   0xA,  1.0,    "ThPS", "Throttle Pos",    "THROTTLE_POS",   0},
    {0x281,   "%",      1.0,   0xB,  1.0,    "BkPS", "Brake Pos",       "BRAKE_POS",      0},
    {0x301,   "%",      1.0,   0xC,  1.0,    "ClPS", "Clutch Pos",      "CLUTCH_POS",     0},
    {0xD84,   "deg",    1.0,   0xD,  1.0,    "StPS", "Steering Pos",    "STEER_POS",      0},
    {0x4091E, "lambda", 100.0, 0xE,  1.0,    "Lbda", "Lambda",          "LAMBDA",         6},
    {0x1183,  "g",      100.0, 0xF,  1.0,    "LatG", "Lateral Accel",   "LATERAL_ACCEL",  6},
    {0x1103,  "g",      100.0, 0x10, 1.0,    "LonG", "Inline Accel",    "LONG_ACCEL",     6},
    {0x581,   "%",      1.0,   0x11, 1.0,    "FueL", "Fuel Level",      "FUEL_LEVEL",     0},
    {0x195,   "V",      10.0,  0x12, 1000.0, "Batt", "Battery Voltage", "BATTERY",        6},
    {0x1203,  "g",      100.0, 0x13, 1.0,    "VerG", "Vertical Accel",  "VERTICAL_ACCEL", 6},
};

constexpr NamedChannelRow kExternal[] = {
    {0x68A07, "deg7", 1.0,      0xE001, 1.0,    "Lat",  "Latitude",         "FV_EXT_LATITUDE",     21},
    {0x68A87, "deg7", 1.0,      0xE002, 1.0,    "Lon",  "Longitude",        "FV_EXT_LONGITUDE",    21},
    {0x68107, "m",    1000.0,   0xE003, 1.0,    "Alt",  "Altitude",         "HEIGHT",              6},
    {0x69214, "m/s",  100.0,    0xE004, 3.6,    "VerV", "Vert Velocity",    "VEL_VERT",            6},
    {0x68684, "deg",  100000.0, 0xE005, 1.0,    "Hd",   "Heading",          "HEADING",             6},
    {0x80012, "#",    1.0,      0xE007, 1.0,    "Time", "Time",             "FV_EXT_TIME",         0},
    {0x80019, "#",    1.0,      0xE008, 1.0,    "Date", "Date",             "FV_EXT_DATE",         0},
    {0x1150B, "#",    1.0,      0xE009, 1.0,    "Mclk", "Master Clock",     "FV_MASTER_CLK",       0},
    {0x11586, "#",    1.0,      0xE00A, 1.0,    "Msta", "Master Status",    "FV_MASTER_STATUS",    0},
    {0x1586,  "#",    1.0,      0xE00B, 1.0,    "Lsta", "Local Status",     "FV_LOCAL_STATUS",     0},
    {0x68B08, "km",   100000.0, 0xE00C, 1000.0, "LOdo", "Logging Odometer", "ODO_DISTANCE",        6},
    {0x69608, "km",   100000.0, 0xE012, 1000.0, "TOdo", "Total Odometer",   "FV_EXT_ODOMETRO",     6},
    {0x69688, "km",   100000.0, 0xE013, 1000.0, "ROdo", "Resettable Odo",   "FV_EXT_RESETODO",     6},
    {0xA940B, "#",    1.0,      0xE00F, 1.0,    "NSat", "Sat Number",       "FG_NUM_SAT",          0},
    {0x98008, "m",    1.0,      0xE010, 1.0,    "LMLD", "LML Distance",     "FV_EXT_LML_DIST",     0},
    {0x1392,  "cs",   1.0,      0xE011, 10.0,   "Prdc", "Predictive",       "FV_EXT_PREDICTIVE",   0},
    {0x98B,   "#",    1.0,      0xF002, 1.0,    "LapN", "Lap Number",       "LAP_NUM",             0},
    {0x992,   "cs",   1.0,      0xF000, 10.0,   "LapT", "Lap Time",         "LAP_TIME",            0},
    {0x130B,  "#",    1.0,      0xF004, 1.0,    "BLpN", "Best Lap Number",  "BEST_LAP_NUM",        0},
    {0x1312,  "cs",   1.0,      0xF005, 10.0,   "BLpT", "Best Lap Time",    "BEST_LAP_TIME",       0},
    {0x1012,  "cs",   0.01,     0xB00F, 10.0,   "VRcT", "Video Rec Time",   "VIDEO_REC_TIME",      6},
    {0x1712,  "#",    1.0,      -1,     1.0,    "RolT", "Rolling Time",     "FG_RUNNING_LAP_TIME", 6},
};

constexpr NamedChannelRow kDerived[] = {
    {0x1608,   "km",     1.0,   -1,  1.0, "Odo",  "total",           "ODO_DIST_TOTAL",   3},
    {0x1688,   "km",     1.0,   -1,  1.0, "OdoN", "trip",            "ODO_DIST_PARTIAL", 6},
    {0x606,    "#",      1.0,   0x3, 1.0, "ClGr", "Calculated Gear", "CALC GEAR",        15},
    {0x40061F, "#",      1.0,   0x3, 1.0, "ClGr", "Calculated Gear", "CALC GEAR2",       15},
    {0x1820E,  "bar",    100.0, 0x9, 1.0, "BrkP", "Brake Press",     "BRAKE_PRESS",      6},
    {0x91,     "C",      10.0,  0x6, 1.0, "ExhT", "Exhaust Temp",    "EXHAUST_TEMP",     6},
    {0xE81,    "%",      1.0,   0xA, 1.0, "ThPS", "Throttle Pos",    "THROTTLE_POS",     0},
    {0x18281,  "%",      1.0,   0xB, 1.0, "BkPS", "Brake Pos",       "BRAKE_POS",        0},
    {0x20301,  "%",      1.0,   0xC, 1.0, "ClPS", "Clutch Pos",      "CLUTCH_POS",       0},
    {0x49E,    "lambda", 100.0, 0xE, 1.0, "Lbda", "Lambda",          "LAMBDA",           6},
    {0x50D84,  "deg",    1.0,   0xD, 1.0, "StPS", "Steering Pos",    "STEER_POS",        0},
    {0x91E,    "lambda", 100.0, 0xE, 1.0, "Lbda", "Lambda",          "LAMBDA",           6},
    {0x4001E,  "lambda", 100.0, 0xE, 1.0, "Lbda", "Lambda",          "LAMBDA",           6},
    {0x44001E, "lambda", 100.0, 0xE, 1.0, "Lbda", "Lambda",          "LAMBDA",           6},
};

// clang-format on

}  // namespace

std::span<const KeyRow> keys() {
  return kKeys;
}
std::span<const NamedChannelRow> basic_channels() {
  return kBasic;
}
std::span<const NamedChannelRow> external_channels() {
  return kExternal;
}
std::span<const NamedChannelRow> derived_channels() {
  return kDerived;
}

}  // namespace traguardo::catalogue
