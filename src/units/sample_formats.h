// SPDX-License-Identifier: MIT
// Sample formats and channel types of the logger family. All that is known of a format is one row: its number, its name
// as reports print it, its size, how it is read and how it is shown.
#pragma once

#include <memory>

#include "support/bytes.h"
#include "units/get_val.h"
#include "units/sample_reader.h"
#include "units/sample_texts.h"

namespace traguardo {

enum SampleFormat : i32 {
  kSMPL_FMT_VOID = -1,
  kSMPL_FMT_S32 = 0,
  kSMPL_FMT_S16 = 1,
  kSMPL_FMT_S8 = 2,
  kSMPL_FMT_U32 = 3,
  kSMPL_FMT_U16 = 4,
  kSMPL_FMT_U8 = 5,
  kSMPL_FMT_FLOAT = 6,
  kSMPL_FMT_LAP_2G = 7,
  kSMPL_FMT_GPS_ZEP = 8,
  kSMPL_FMT_GPS_UBX = 9,
  kSMPL_FMT_DATA_ORA = 10,
  kSMPL_FMT_GEAR = 11,
  kSMPL_FMT_TGIRO = 12,
  kSMPL_FMT_BITFIELD_8 = 13,
  kSMPL_FMT_BITFIELD_16_killed = 14,
  kSMPL_FMT_STR_CODE_2_6 = 15,
  kSMPL_FMT_STR_CODE_2_30 = 16,
  kSMPL_FMT_LAP_1G = 17,
  kSMPL_FMT_GPS_SV_INFO = 18,
  kSMPL_FMT_TRAMA_CAN = 19,
  kSMPL_FMT_F16 = 20,
  kSMPL_FMT_ZEP_LATLON = 21,
  kSMPL_FMT_LAP_2G_v2 = 22,
  kSMPL_FMT_TRUNN = 23,
  kSMPL_FMT_TDIFF = 24,
  kSMPL_FMT_SM32 = 25,
  KSMPL_FMT_TOTAL_ODOMETER = 26,  // The capital K is the name that reports have always printed.
  kSMPL_FMT_RESETTABLE_ODOMETER = 27,
  kSMPL_FMT_MYLAPS_LAPTIME = 28,
  kSMPL_FMT_MYLAPS_GAP = 29,
  kSMPL_FMT_MYLAPS_PERSONAL = 30,
  kSMPL_FMT_LAP_2G_v3 = 31,
  kSMPL_FMT_ROLL_TIME = 32,
  kSMPL_FMT_BEST_TIME = 33,
};

// A sub-channel of a packet that a function of the whole sample reads. In no file.
inline constexpr i32 kComputedFormat = 34;

enum ChannelType : i32 {
  kTIPO_CH_INVALID = 0,
  kTIPO_CH_ANALOGICO = 1,
  kTIPO_CH_DIGITALE = 2,
  kTIPO_CH_ECU = 3,
  kTIPO_CH_MATH = 4,
  kTIPO_CH_GPS = 5,
  kTIPO_CH_LAPTIME = 6,
  kTIPO_CH_ROLLTIME = 7,
  kTIPO_CH_GEAR = 8,
  kTIPO_CH_CAN1 = 9,
  kTIPO_CH_CAN2 = 10,
  kTIPO_CH_CAN_CUST = 11,
  kTIPO_CH_KLINE = 12,
  kTIPO_CH_RS232 = 13,
  kTIPO_CH_CAN1_OUTPUT = 101,
  kTIPO_CH_CAN2_OUTPUT = 102,
};

// No sample of a known format is longer.
inline constexpr u32 kLongestStandardSample = 64;

// The reader of a converter that knows neither gain nor offset nor sentinels, and the bytes that it reads.
struct PlainReader {
  std::unique_ptr<IGetVal> (*make)() = nullptr;
  u32 width = 0;
};

struct SampleFormatRow {
  i32 format;
  const char* name;
  u32 size;         // of one sample as the format has it; 0 without a fixed one
  ReaderPair read;  // empty: a channel of this format has no values
  TextForm text;
  PlainReader plain;     // empty: none
  ReaderPair read_gear;  // of a channel whose function is a gear; empty: `read`
};

// Null for a number that no format has.
const SampleFormatRow* sample_format(i32 format);

// The name without padding; "UNKNOWN FORMAT !!!!!!!!!!!!!! " and "UNKNOWN TYPE !!!!!!! " for numbers without one.
const char* sample_format_name(i32 format);
const char* channel_type_name(i32 type);

// 0 for formats without a fixed size and for unknown numbers. What a file really stores is the size in its channel
// record.
u32 standard_sample_size(i32 format);
// `fid` decides only how a gear that is stored as text is read.
ReaderPair reader_of_format(i32 format, u32 fid);

}  // namespace traguardo
