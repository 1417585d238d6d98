// SPDX-License-Identifier: MIT
#include "units/sample_formats.h"

#include <algorithm>
#include <iterator>

namespace traguardo {
namespace {

struct FormatRow {
  i32 format;
  u32 size;
  const char* name;
};

// clang-format off
constexpr FormatRow kFormats[] = {
    {kSMPL_FMT_VOID,                0,  "kSMPL_FMT_VOID"},
    {kSMPL_FMT_S32,                 4,  "kSMPL_FMT_S32"},
    {kSMPL_FMT_S16,                 2,  "kSMPL_FMT_S16"},
    {kSMPL_FMT_S8,                  1,  "kSMPL_FMT_S8"},
    {kSMPL_FMT_U32,                 4,  "kSMPL_FMT_U32"},
    {kSMPL_FMT_U16,                 2,  "kSMPL_FMT_U16"},
    {kSMPL_FMT_U8,                  1,  "kSMPL_FMT_U8"},
    {kSMPL_FMT_FLOAT,               4,  "kSMPL_FMT_FLOAT"},
    {kSMPL_FMT_LAP_2G,              28, "kSMPL_FMT_LAP_2G"},
    {kSMPL_FMT_GPS_ZEP,             56, "kSMPL_FMT_GPS_ZEP"},
    {kSMPL_FMT_GPS_UBX,             52, "kSMPL_FMT_GPS_UBX"},
    {kSMPL_FMT_DATA_ORA,            36, "kSMPL_FMT_DATA_ORA"},
    {kSMPL_FMT_GEAR,                2,  "kSMPL_FMT_GEAR"},
    {kSMPL_FMT_TGIRO,               4,  "kSMPL_FMT_TGIRO"},
    {kSMPL_FMT_BITFIELD_8,          1,  "kSMPL_FMT_BITFIELD_8"},
    {kSMPL_FMT_BITFIELD_16_killed,  0,  "kSMPL_FMT_BITFIELD_16_killed"},
    {kSMPL_FMT_STR_CODE_2_6,        8,  "kSMPL_FMT_STR_CODE_2_6"},
    {kSMPL_FMT_STR_CODE_2_30,       32, "kSMPL_FMT_STR_CODE_2_30"},
    {kSMPL_FMT_LAP_1G,              8,  "kSMPL_FMT_LAP_1G"},
    {kSMPL_FMT_GPS_SV_INFO,         64, "kSMPL_FMT_GPS_SV_INFO"},
    {kSMPL_FMT_TRAMA_CAN,           8,  "kSMPL_FMT_TRAMA_CAN"},
    {kSMPL_FMT_F16,                 2,  "kSMPL_FMT_F16"},
    {kSMPL_FMT_ZEP_LATLON,          4,  "kSMPL_FMT_ZEP_LATLON"},
    {kSMPL_FMT_LAP_2G_v2,           32, "kSMPL_FMT_LAP_2G_v2"},
    {kSMPL_FMT_TRUNN,               0,  "kSMPL_FMT_TRUNN"},
    {kSMPL_FMT_TDIFF,               4,  "kSMPL_FMT_TDIFF"},
    {kSMPL_FMT_SM32,                4,  "kSMPL_FMT_SM32"},
    {KSMPL_FMT_TOTAL_ODOMETER,      12, "KSMPL_FMT_TOTAL_ODOMETER"},
    {kSMPL_FMT_RESETTABLE_ODOMETER, 12, "kSMPL_FMT_RESETTABLE_ODOMETER"},
    {kSMPL_FMT_MYLAPS_LAPTIME,      12, "kSMPL_FMT_MYLAPS_LAPTIME"},
    {kSMPL_FMT_MYLAPS_GAP,          12, "kSMPL_FMT_MYLAPS_GAP"},
    {kSMPL_FMT_MYLAPS_PERSONAL,     12, "kSMPL_FMT_MYLAPS_PERSONAL"},
    {kSMPL_FMT_LAP_2G_v3,           20, "kSMPL_FMT_LAP_2G_v3"},
    {kSMPL_FMT_ROLL_TIME,           12, "kSMPL_FMT_ROLL_TIME"},
    {kSMPL_FMT_BEST_TIME,           60, "kSMPL_FMT_BEST_TIME"},
};

struct TypeRow {
  i32 type;
  const char* name;
};

constexpr TypeRow kTypes[] = {
    {kTIPO_CH_INVALID,     "kTIPO_CH_INVALID"},
    {kTIPO_CH_ANALOGICO,   "kTIPO_CH_ANALOGICO"},
    {kTIPO_CH_DIGITALE,    "kTIPO_CH_DIGITALE"},
    {kTIPO_CH_ECU,         "kTIPO_CH_ECU"},
    {kTIPO_CH_MATH,        "kTIPO_CH_MATH"},
    {kTIPO_CH_GPS,         "kTIPO_CH_GPS"},
    {kTIPO_CH_LAPTIME,     "kTIPO_CH_LAPTIME"},
    {kTIPO_CH_ROLLTIME,    "kTIPO_CH_ROLLTIME"},
    {kTIPO_CH_GEAR,        "kTIPO_CH_GEAR"},
    {kTIPO_CH_CAN1,        "kTIPO_CH_CAN1"},
    {kTIPO_CH_CAN2,        "kTIPO_CH_CAN2"},
    {kTIPO_CH_CAN_CUST,    "kTIPO_CH_CAN_CUST"},
    {kTIPO_CH_KLINE,       "kTIPO_CH_KLINE"},
    {kTIPO_CH_RS232,       "kTIPO_CH_RS232"},
    {kTIPO_CH_CAN1_OUTPUT, "kTIPO_CH_CAN1_OUTPUT"},
    {kTIPO_CH_CAN2_OUTPUT, "kTIPO_CH_CAN2_OUTPUT"},
};
// clang-format on

const FormatRow* row_of(i32 format) {
  const auto row = std::find_if(std::begin(kFormats), std::end(kFormats),
                                [format](const FormatRow& candidate) { return candidate.format == format; });
  return row == std::end(kFormats) ? nullptr : row;
}

}  // namespace

const char* sample_format_name(i32 format) {
  const FormatRow* row = row_of(format);
  return row == nullptr ? "UNKNOWN FORMAT !!!!!!!!!!!!!! " : row->name;
}

const char* channel_type_name(i32 type) {
  for (const TypeRow& row : kTypes) {
    if (row.type == type) return row.name;
  }
  return "UNKNOWN TYPE !!!!!!! ";
}

u32 standard_sample_size(i32 format) {
  const FormatRow* row = row_of(format);
  return row == nullptr ? 0 : row->size;
}

}  // namespace traguardo
