// SPDX-License-Identifier: MIT
#include "units/sample_formats.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "units/fid.h"
#include "units/packet_readers.h"

namespace traguardo {
namespace {

// --- Readers: what a new format needs if none of these fits

float single(const u8* sample, float gain, float offset, u32* status) {
  const float value = load_f32(sample);
  if (!std::isfinite(value)) {
    *status = kStatusNoValue;
    return 0.0F;
  }
  *status = kStatusGood;
  return value * gain + offset;
}

float widen_half(u16 half) {
  const u32 sign = static_cast<u32>(half & 0x8000) << 16;
  const u32 exponent = half >> 10 & 0x1F;
  const u32 fraction = half & 0x3FF;
  if (exponent == 0) {
    const float denormal = static_cast<float>(fraction) * 0x1p-24F;
    return sign != 0 ? -denormal : denormal;
  }
  const u32 wide_exponent = exponent == 0x1F ? 0xFF : exponent + 112;
  return std::bit_cast<float>(sign | wide_exponent << 23 | fraction << 13);
}

// The two infinities alone are sentinels: a NaN of this width passes.
float half(const u8* sample, float gain, float offset, u32* status) {
  const u16 bits = load_u16(sample);
  if ((bits & 0x7FFF) == 0x7C00) {
    *status = kStatusNoValue;
    return 0.0F;
  }
  *status = kStatusGood;
  return widen_half(bits) * gain + offset;
}

float gear(const u8* sample, float, float, u32* status) {
  *status = sentinel_status(load_u16(sample));
  if (*status != kStatusGood) return -8.0F;
  return static_cast<float>(std::max<i16>(load_i16(sample), -8));
}

float code_of_text(const u8* sample, float, float, u32* status) {
  *status = kStatusGood;
  return static_cast<float>(load_i16(sample));
}

// A gear stored with its letter: a digit is the gear that the driver sees.
float gear_of_text(const u8* sample, float, float, u32* status) {
  *status = kStatusGood;
  const u8 letter = sample[2];
  if (letter >= '1' && letter <= '9') return static_cast<float>(letter - '0');
  return static_cast<float>(load_i16(sample));
}

float byte_as_it_is(const u8* sample, float, float, u32* status) {
  *status = kStatusGood;
  return static_cast<float>(*sample);
}

float no_number(const u8*, float, float, u32* status) {
  *status = kStatusNoText;
  return 0.0F;
}

bool is_gear(u32 word) {
  const u32 quantity = fid::quantity(word);
  return quantity == FID_PHI_GEAR || (quantity == FID_PHI_CODE && fid::object(word) == FID_OBJ_GEAR);
}

template <typename Reader>
std::unique_ptr<IGetVal> make_plain() {
  return std::make_unique<Reader>();
}

constexpr ReaderPair kNoReader{};
constexpr ReaderPair kReadI32 = plain_pair<i32>();
constexpr ReaderPair kReadI16 = plain_pair<i16>();
constexpr ReaderPair kReadI8 = plain_pair<i8>();
constexpr ReaderPair kReadU32 = plain_pair<u32>();
constexpr ReaderPair kReadU16 = plain_pair<u16>();
constexpr ReaderPair kReadU8 = plain_pair<u8>();
constexpr ReaderPair kReadFloat = reader_pair<single>(4);
constexpr ReaderPair kReadHalf = reader_pair<half>(2);
constexpr ReaderPair kReadGear = reader_pair<gear>(2);
constexpr ReaderPair kReadByte = reader_pair<byte_as_it_is>(1);
constexpr ReaderPair kReadCode = reader_pair<code_of_text>(2);
constexpr ReaderPair kReadGearOfText = reader_pair<gear_of_text>(3);
constexpr ReaderPair kNoNumber = reader_pair<no_number>(0);

constexpr PlainReader kNoPlain{};
constexpr PlainReader kPlainS32{make_plain<CGetValS32>, 4};
constexpr PlainReader kPlainS16{make_plain<CGetValS16>, 2};
constexpr PlainReader kPlainS8{make_plain<CGetValS8>, 1};
constexpr PlainReader kPlainU32{make_plain<CGetValU32>, 4};
constexpr PlainReader kPlainU16{make_plain<CGetValU16>, 2};
constexpr PlainReader kPlainU8{make_plain<CGetValU8>, 1};
constexpr PlainReader kPlainFloat{make_plain<CGetValFloat>, 4};

// --- Tables

namespace text = sample_texts;
using packet_readers::kGpsZepSpeed;

// clang-format off
// The plain converter takes the bits of a half float as an integer, the only kind of that width that it knows.
constexpr SampleFormatRow kFormats[] = {
    // format, name, size, reader, text, plain reader, reader of gears
    {kSMPL_FMT_VOID,                "kSMPL_FMT_VOID",                0,  kNoReader,    text::kNone,            kNoPlain,    kNoReader},
    {kSMPL_FMT_S32,                 "kSMPL_FMT_S32",                 4,  kReadI32,     text::kNumber,          kPlainS32,   kNoReader},
    {kSMPL_FMT_S16,                 "kSMPL_FMT_S16",                 2,  kReadI16,     text::kNumber,          kPlainS16,   kNoReader},
    {kSMPL_FMT_S8,                  "kSMPL_FMT_S8",                  1,  kReadI8,      text::kNumber,          kPlainS8,    kNoReader},
    {kSMPL_FMT_U32,                 "kSMPL_FMT_U32",                 4,  kReadU32,     text::kNumber,          kPlainU32,   kNoReader},
    {kSMPL_FMT_U16,                 "kSMPL_FMT_U16",                 2,  kReadU16,     text::kNumber,          kPlainU16,   kNoReader},
    {kSMPL_FMT_U8,                  "kSMPL_FMT_U8",                  1,  kReadU8,      text::kNumber,          kPlainU8,    kNoReader},
    {kSMPL_FMT_FLOAT,               "kSMPL_FMT_FLOAT",               4,  kReadFloat,   text::kNumber,          kPlainFloat, kNoReader},
    {kSMPL_FMT_LAP_2G,              "kSMPL_FMT_LAP_2G",              28, kNoNumber,    text::kLap,             kNoPlain,    kNoReader},
    {kSMPL_FMT_GPS_ZEP,             "kSMPL_FMT_GPS_ZEP",             56, kGpsZepSpeed, text::kGpsZepState,     kNoPlain,    kNoReader},
    {kSMPL_FMT_GPS_UBX,             "kSMPL_FMT_GPS_UBX",             52, kNoNumber,    text::kGpsUbxState,     kNoPlain,    kNoReader},
    {kSMPL_FMT_DATA_ORA,            "kSMPL_FMT_DATA_ORA",            36, kNoNumber,    text::kDateTimePacket,  kNoPlain,    kNoReader},
    {kSMPL_FMT_GEAR,                "kSMPL_FMT_GEAR",                2,  kReadGear,    text::kGear,            kPlainS16,   kNoReader},
    {kSMPL_FMT_TGIRO,               "kSMPL_FMT_TGIRO",               4,  kReadI32,     text::kLapTime,         kPlainU32,   kNoReader},
    {kSMPL_FMT_BITFIELD_8,          "kSMPL_FMT_BITFIELD_8",          1,  kReadByte,    text::kNumber,          kPlainU8,    kNoReader},
    {kSMPL_FMT_BITFIELD_16_killed,  "kSMPL_FMT_BITFIELD_16_killed",  0,  kNoReader,    text::kNone,            kNoPlain,    kNoReader},
    {kSMPL_FMT_STR_CODE_2_6,        "kSMPL_FMT_STR_CODE_2_6",        8,  kReadCode,    text::kTextOf6,         kPlainS16,   kReadGearOfText},
    {kSMPL_FMT_STR_CODE_2_30,       "kSMPL_FMT_STR_CODE_2_30",       32, kReadCode,    text::kTextOf30,        kPlainS16,   kNoReader},
    {kSMPL_FMT_LAP_1G,              "kSMPL_FMT_LAP_1G",              8,  kNoNumber,    text::kLap1gPacket,     kNoPlain,    kNoReader},
    {kSMPL_FMT_GPS_SV_INFO,         "kSMPL_FMT_GPS_SV_INFO",         64, kNoNumber,    text::kSatellitePacket, kNoPlain,    kNoReader},
    {kSMPL_FMT_TRAMA_CAN,           "kSMPL_FMT_TRAMA_CAN",           8,  kNoReader,    text::kNone,            kNoPlain,    kNoReader},
    {kSMPL_FMT_F16,                 "kSMPL_FMT_F16",                 2,  kReadHalf,    text::kNumber,          kPlainU16,   kNoReader},
    {kSMPL_FMT_ZEP_LATLON,          "kSMPL_FMT_ZEP_LATLON",          4,  kReadI32,     text::kCoordinate,      kNoPlain,    kNoReader},
    {kSMPL_FMT_LAP_2G_v2,           "kSMPL_FMT_LAP_2G_v2",           32, kNoNumber,    text::kLap,             kNoPlain,    kNoReader},
    {kSMPL_FMT_TRUNN,               "kSMPL_FMT_TRUNN",               0,  kNoReader,    text::kNone,            kNoPlain,    kNoReader},
    {kSMPL_FMT_TDIFF,               "kSMPL_FMT_TDIFF",               4,  kReadI32,     text::kTimeDifference,  kNoPlain,    kNoReader},
    {kSMPL_FMT_SM32,                "kSMPL_FMT_SM32",                4,  kNoReader,    text::kNone,            kNoPlain,    kNoReader},
    {KSMPL_FMT_TOTAL_ODOMETER,      "KSMPL_FMT_TOTAL_ODOMETER",      12, kNoReader,    text::kNone,            kNoPlain,    kNoReader},
    {kSMPL_FMT_RESETTABLE_ODOMETER, "kSMPL_FMT_RESETTABLE_ODOMETER", 12, kNoReader,    text::kNone,            kNoPlain,    kNoReader},
    {kSMPL_FMT_MYLAPS_LAPTIME,      "kSMPL_FMT_MYLAPS_LAPTIME",      12, kNoReader,    text::kNone,            kNoPlain,    kNoReader},
    {kSMPL_FMT_MYLAPS_GAP,          "kSMPL_FMT_MYLAPS_GAP",          12, kNoReader,    text::kNone,            kNoPlain,    kNoReader},
    {kSMPL_FMT_MYLAPS_PERSONAL,     "kSMPL_FMT_MYLAPS_PERSONAL",     12, kNoReader,    text::kNone,            kNoPlain,    kNoReader},
    {kSMPL_FMT_LAP_2G_v3,           "kSMPL_FMT_LAP_2G_v3",           20, kNoNumber,    text::kLap,             kNoPlain,    kNoReader},
    {kSMPL_FMT_ROLL_TIME,           "kSMPL_FMT_ROLL_TIME",           12, kReadI32,     text::kRunningTime,     kNoPlain,    kNoReader},
    {kSMPL_FMT_BEST_TIME,           "kSMPL_FMT_BEST_TIME",           60, kNoReader,    text::kNone,            kNoPlain,    kNoReader},
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

}  // namespace

const SampleFormatRow* sample_format(i32 format) {
  const auto row = std::find_if(std::begin(kFormats), std::end(kFormats),
                                [format](const SampleFormatRow& candidate) { return candidate.format == format; });
  return row == std::end(kFormats) ? nullptr : row;
}

const char* sample_format_name(i32 format) {
  const SampleFormatRow* row = sample_format(format);
  return row == nullptr ? "UNKNOWN FORMAT !!!!!!!!!!!!!! " : row->name;
}

const char* channel_type_name(i32 type) {
  for (const TypeRow& row : kTypes) {
    if (row.type == type) return row.name;
  }
  return "UNKNOWN TYPE !!!!!!! ";
}

u32 standard_sample_size(i32 format) {
  const SampleFormatRow* row = sample_format(format);
  return row == nullptr ? 0 : row->size;
}

ReaderPair reader_of_format(i32 format, u32 fid) {
  const SampleFormatRow* row = sample_format(format);
  if (row == nullptr) return {};
  return is_gear(fid) && row->read_gear.value != nullptr ? row->read_gear : row->read;
}

}  // namespace traguardo
