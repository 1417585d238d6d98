// SPDX-License-Identifier: MIT
// The packets, and the fields of each: word, byte offset, format, reader and text where they aren't those of the format, names.
#include "units/fid.h"
#include "units/packet_readers.h"
#include "units/packet_tables.h"
#include "units/sample_formats.h"

namespace traguardo::packets {
namespace {

namespace Text = sample_texts;
using namespace packet_readers;

constexpr ReaderPair kOfFormat{};

// clang-format off

constexpr SubChannelRow kLap2g[] = {
    {0x190B, 0,  kSMPL_FMT_U8,    kOfFormat,      Text::kNone, "nRun", "Run Number"},
    {0x178B, 1,  kSMPL_FMT_U8,    kOfFormat,      Text::kNone, "nSpl", "Split Number"},
    {0x98B,  2,  kSMPL_FMT_U16,   kOfFormat,      Text::kNone, "nLap", "Lap Number"},
    {0x992,  4,  kSMPL_FMT_TGIRO, kOfFormat,      Text::kNone, "LapT", "Lap Time"},
    {0x1792, 8,  kSMPL_FMT_TGIRO, kOfFormat,      Text::kNone, "SplT", "Split Time"},
    {0x1312, 12, kSMPL_FMT_TGIRO, kOfFormat,      Text::kNone, "",     ""},
    {0x1712, 16, kSMPL_FMT_TGIRO, kOfFormat,      Text::kNone, "RunT", "Rolling Time"},
    {0x2192, 16, kSMPL_FMT_TGIRO, kOfFormat,      Text::kNone, "RTR",  "Roll Sess T"},
    {0x0,    20, kSMPL_FMT_TGIRO, kOfFormat,      Text::kNone, "",     ""},
    {0x986,  24, kSMPL_FMT_U8,    kOfFormat,      Text::kNone, "",     ""},
    {0x1786, 24, kSMPL_FMT_U8,    kOfFormat,      Text::kNone, "",     ""},
    {0x1306, 24, kComputedFormat, kBestLapFlag,   Text::kNone, "",     ""},
    {0x1806, 24, kComputedFormat, kBestSplitFlag, Text::kNone, "",     ""},
};

constexpr SubChannelRow kLap2gV3[] = {
    {0x190B, 0,  kSMPL_FMT_U8,    kOfFormat,      Text::kNone, "nRun", "Run Number"},
    {0x178B, 1,  kSMPL_FMT_U8,    kOfFormat,      Text::kNone, "nSpl", "Split Number"},
    {0x98B,  2,  kSMPL_FMT_U16,   kOfFormat,      Text::kNone, "nLap", "Lap Number"},
    {0x992,  4,  kSMPL_FMT_TGIRO, kOfFormat,      Text::kNone, "LapT", "Lap Time"},
    {0x1792, 8,  kSMPL_FMT_TGIRO, kOfFormat,      Text::kNone, "SplT", "Split Time"},
    {0x986,  24, kSMPL_FMT_U8,    kOfFormat,      Text::kNone, "",     ""},
    {0x1786, 24, kSMPL_FMT_U8,    kOfFormat,      Text::kNone, "",     ""},
    {0x1306, 24, kComputedFormat, kBestLapFlag,   Text::kNone, "",     ""},
    {0x1806, 24, kComputedFormat, kBestSplitFlag, Text::kNone, "",     ""},
};

constexpr SubChannelRow kLap1g[] = {
    {0x992,  0, kSMPL_FMT_TGIRO, kOfFormat,         Text::kNone, "", ""},
    {0x1792, 0, kSMPL_FMT_TGIRO, kOfFormat,         Text::kNone, "", ""},
    {0x98B,  4, kComputedFormat, kLap1gLapNumber,   Text::kNone, "", ""},
    {0x178B, 4, kComputedFormat, kLap1gSplitNumber, Text::kNone, "", ""},
    {0x190B, 6, kSMPL_FMT_U8,    kOfFormat,         Text::kNone, "", ""},
    {0x986,  7, kSMPL_FMT_U8,    kOfFormat,         Text::kNone, "", ""},
    {0x1786, 7, kSMPL_FMT_U8,    kOfFormat,         Text::kNone, "", ""},
};

constexpr SubChannelRow kGpsZep[] = {
    {0xA9512, 0,  kSMPL_FMT_U32,   kOfFormat,        Text::kNone, "",     ""},
    {0xA9986, 14, kSMPL_FMT_U8,    kOfFormat,        Text::kNone, "",     ""},
    {0xA998C, 28, kSMPL_FMT_U32,   kOfFormat,        Text::kNone, "Accu", "GPS Accuracy"},
    {0xA9994, 44, kSMPL_FMT_U8,    kOfFormat,        Text::kNone, "",     ""},
    {0xA940B, 51, kSMPL_FMT_U8,    kOfFormat,        Text::kNone, "nSV",  "Sats Number"},
    {0xA8010, 0,  kComputedFormat, kGpsZepSpeed,     Text::kNone, "Spd",  "GPS Speed"},
    {0xA8A07, 0,  kComputedFormat, kGpsZepLatitude,  Text::kNone, "Lat",  "Latitude"},
    {0xA8A87, 0,  kComputedFormat, kGpsZepLongitude, Text::kNone, "Lon",  "Longitude"},
    {0xA8107, 0,  kComputedFormat, kGpsZepAltitude,  Text::kNone, "Alt",  "Altitude"},
};

constexpr SubChannelRow kGpsUbx[] = {
    {0xA9986, 10, kSMPL_FMT_U8,    kOfFormat,    Text::kNone, "", ""},
    {0xA998C, 24, kSMPL_FMT_U8,    kOfFormat,    Text::kNone, "", ""},
    {0xA9994, 40, kSMPL_FMT_U8,    kOfFormat,    Text::kNone, "", ""},
    {0xA940B, 47, kSMPL_FMT_U8,    kOfFormat,    Text::kNone, "", ""},
    {0xA8010, 0,  kComputedFormat, kGpsUbxSpeed, Text::kNone, "", ""},
};

constexpr SubChannelRow kKestrelMeasures[] = {
    {0xF,   0,  kSMPL_FMT_S32,   kOfFormat, Text::kNone, "", ""},
    {0xE81, 4,  kSMPL_FMT_S32,   kOfFormat, Text::kNone, "", ""},
    {0x20E, 8,  kSMPL_FMT_FLOAT, kOfFormat, Text::kNone, "", ""},
    {0xD84, 12, kSMPL_FMT_S32,   kOfFormat, Text::kNone, "", ""},
    {0x61F, 16, kSMPL_FMT_S32,   kOfFormat, Text::kNone, "", ""},
};

constexpr SubChannelRow kTotalOdometer[] = {
    {0x1612, 0, kComputedFormat, kOdometerTime, Text::kOdometerTime, "OdT", "OdoTot Time"},
    {0x1608, 4, kSMPL_FMT_U32,   kOfFormat,     Text::kNone,         "OdD", "Odometer"},
    {0x1512, 8, kSMPL_FMT_U32,   kOfFormat,     Text::kNone,         "",    ""},
};

constexpr SubChannelRow kResettableOdometer[] = {
    {0x1692, 0, kComputedFormat, kOdometerTime, Text::kOdometerTime, "odT", "Odo Time"},
    {0x1688, 4, kSMPL_FMT_U32,   kOfFormat,     Text::kNone,         "odD", "Odo Dist"},
    {0x1512, 8, kSMPL_FMT_U32,   kOfFormat,     Text::kNone,         "",    ""},
};

constexpr SubChannelRow kBestTime[] = {
    {0x1312, 0, kSMPL_FMT_TGIRO, kOfFormat, Text::kNone, "", ""},
    {0x130B, 4, kSMPL_FMT_U32,   kOfFormat, Text::kNone, "", ""},
};

constexpr SubChannelRow kRollTime[] = {
    {0x1712, 0, kSMPL_FMT_TGIRO, kOfFormat, Text::kNone, "LRlT", "Roll LapTime"},
    {0x2192, 4, kSMPL_FMT_TGIRO, kOfFormat, Text::kNone, "SRlT", "Roll SessTime"},
};

// The fields of the timing packets are bits of the sample's first two words, see mylaps_bits.h. The byte offset is that of
// the word.
constexpr SubChannelRow kMyLapsLapTime[] = {
    {0x208B, 0, kComputedFormat, kMyLapsPosition, Text::kMyLapsPosition, "StPos", "Standing Pos"},
    {0x1D92, 0, kComputedFormat, kMyLapsTimeMs,   Text::kMyLapsTime,     "ToGo",  "To Go"},
    {0x98B,  4, kComputedFormat, kMyLapsCount,    Text::kMyLapsCount,    "nLap",  "Lap Number"},
    {0x992,  4, kComputedFormat, kMyLapsFieldMs,  Text::kMyLapsField,    "LapT",  "Lap Time"},
};

constexpr SubChannelRow kMyLapsGap[] = {
    {0x1E92, 0, kComputedFormat, kMyLapsFirstGapMs,  Text::kMyLapsFirstGap,  "DFrnt", "Diff from Front"},
    {0x1F12, 4, kComputedFormat, kMyLapsSecondGapMs, Text::kMyLapsSecondGap, "DRear", "Diff from Rear"},
};

constexpr SubChannelRow kMyLapsPersonal[] = {
    {0x1F92, 0, kComputedFormat, kMyLapsFirstGapMs,  Text::kMyLapsFirstGap,  "DPrev", "Diff from My Prev"},
    {0x2012, 4, kComputedFormat, kMyLapsSecondGapMs, Text::kMyLapsSecondGap, "DBest", "Diff from My Best"},
};

// The first row that fits counts.
constexpr PacketRow kPackets[] = {
    // object                          position                   format                      fields
    {FID_DETTAGLI_LAPTIME,             FID_SPEC_LAPTIME_ZEP2G,    kAnyFormat,                 kLap2g},
    {FID_DETTAGLI_LAPTIME,             FID_SPEC_LAPTIME_ZEP2Gv2,  kAnyFormat,                 kLap2g},
    {FID_DETTAGLI_LAPTIME,             FID_SPEC_LAPTIME_ZEP2Gv3,  kAnyFormat,                 kLap2gV3},
    {FID_DETTAGLI_LAPTIME,             FID_SPEC_LAPTIME_ZEP1G,    kAnyFormat,                 kLap1g},
    {FID_DETTAGLI_GPS,                 FID_SPEC_GPS_ZEPNAVSOL,    kAnyFormat,                 kGpsZep},
    {FID_DETTAGLI_GPS,                 FID_SPEC_GPS_UBXNAVSOL,    kAnyFormat,                 kGpsUbx},
    {FID_DETTAGLI_MISURE_KESTREL_BASE, kAnyPosition,              kAnyFormat,                 kKestrelMeasures},
    {FID_DETTAGLI_TOTAL_ODOMETER,      kAnyPosition,              kAnyFormat,                 kTotalOdometer},
    {FID_DETTAGLI_RESETTABLE_ODOMETER, kAnyPosition,              kAnyFormat,                 kResettableOdometer},
    {FID_DETTAGLI_MYLAPS_LAPTIME,      kAnyPosition,              kSMPL_FMT_MYLAPS_GAP,       kMyLapsGap},
    {FID_DETTAGLI_MYLAPS_LAPTIME,      kAnyPosition,              kSMPL_FMT_MYLAPS_PERSONAL,  kMyLapsPersonal},
    {FID_DETTAGLI_MYLAPS_LAPTIME,      kAnyPosition,              kAnyFormat,                 kMyLapsLapTime},
    {FID_DETTAGLI_BEST_TIME,           kAnyPosition,              kAnyFormat,                 kBestTime},
    {FID_DETTAGLI_ROLL_TIME,           kAnyPosition,              kAnyFormat,                 kRollTime},
};

// clang-format on

}  // namespace

std::span<const PacketRow> all() {
  return kPackets;
}

}  // namespace traguardo::packets
