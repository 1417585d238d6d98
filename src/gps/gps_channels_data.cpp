// SPDX-License-Identifier: MIT
#include "gps/gps_trace.h"

namespace traguardo {

// clang-format off
const std::array<GpsChannelDefinition, kGpsChannelCount> kGpsChannels = {{
    // name             unit     function  flags
    {"GPS Speed",       "m/s",   0xA8010,    0},
    {"GPS Nsat",        "#",     0xAA80B,  512},
    {"GPS LatAcc",      "g",     0xAA303,    0},
    {"GPS LonAcc",      "g",     0xAA203,    0},
    {"GPS Slope",       "deg",   0xAA904,    0},
    {"GPS Heading",     "deg",   0xA8D04,    0},
    {"GPS Gyro",        "deg/s", 0xA8005,    0},
    {"GPS Altitude",    "m",     0xA8207,    0},
    {"GPS PosAccuracy", "#",     0xAB30C,    0},
    {"GPS SpdAccuracy", "#",     0xAB314,    0},
    {"GPS Latitude",    "deg",   0xA9407,    0},
    {"GPS Longitude",   "deg",   0xA9507,    0},
    {"GPS Radius",      "m",     0xA8008,    0},
    {"GPS East",        "m",     0xA800C,    0},
    {"GPS North",       "m",     0xA800C,    0},
}};
// clang-format on

}  // namespace traguardo
