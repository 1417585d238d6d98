// SPDX-License-Identifier: MIT
#include "units/sample_reader.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "units/fid.h"
#include "units/packet_readers.h"
#include "units/sample_formats.h"

namespace traguardo {
namespace {

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

}  // namespace

ReaderPair reader_of_format(i32 format, u32 fid) {
  switch (format) {
    case kSMPL_FMT_S32:
    case kSMPL_FMT_TGIRO:
    case kSMPL_FMT_ZEP_LATLON:
    case kSMPL_FMT_TDIFF:
    case kSMPL_FMT_ROLL_TIME:
      return plain_pair<i32>();
    case kSMPL_FMT_S16:
      return plain_pair<i16>();
    case kSMPL_FMT_S8:
      return plain_pair<i8>();
    case kSMPL_FMT_U32:
      return plain_pair<u32>();
    case kSMPL_FMT_U16:
      return plain_pair<u16>();
    case kSMPL_FMT_U8:
      return plain_pair<u8>();
    case kSMPL_FMT_FLOAT:
      return reader_pair<single>(4);
    case kSMPL_FMT_F16:
      return reader_pair<half>(2);
    case kSMPL_FMT_GEAR:
      return reader_pair<gear>(2);
    case kSMPL_FMT_BITFIELD_8:
      return reader_pair<byte_as_it_is>(1);
    case kSMPL_FMT_STR_CODE_2_6:
      return is_gear(fid) ? reader_pair<gear_of_text>(3) : reader_pair<code_of_text>(2);
    case kSMPL_FMT_STR_CODE_2_30:
      return reader_pair<code_of_text>(2);
    case kSMPL_FMT_GPS_ZEP:
      return packet_readers::kGpsZepSpeed;
    case kSMPL_FMT_LAP_2G:
    case kSMPL_FMT_LAP_2G_v2:
    case kSMPL_FMT_LAP_2G_v3:
    case kSMPL_FMT_LAP_1G:
    case kSMPL_FMT_GPS_UBX:
    case kSMPL_FMT_DATA_ORA:
    case kSMPL_FMT_GPS_SV_INFO:
      return reader_pair<no_number>(0);
    default:
      return {};
  }
}

}  // namespace traguardo
