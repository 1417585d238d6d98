// SPDX-License-Identifier: MIT
#include "units/converter.h"

#include <algorithm>
#include <limits>

#include "units/fid.h"
#include "units/mylaps_bits.h"
#include "units/packet_tables.h"
#include "units/sample_formats.h"
#include "units/text_format.h"

namespace traguardo {
namespace {

// What is read where in a sample, after a packet's sub-channel has been looked up.
struct Field {
  i32 format = kSMPL_FMT_VOID;
  u64 byte_offset = 0;
  ReaderPair reader;
  TextKind text = TextKind::kNone;
};

TextKind text_of_format(i32 format) {
  switch (format) {
    case kSMPL_FMT_S32:
    case kSMPL_FMT_S16:
    case kSMPL_FMT_S8:
    case kSMPL_FMT_U32:
    case kSMPL_FMT_U16:
    case kSMPL_FMT_U8:
    case kSMPL_FMT_FLOAT:
    case kSMPL_FMT_BITFIELD_8:
    case kSMPL_FMT_F16:
    case kComputedFormat:
      return TextKind::kPlainNumber;
    case kSMPL_FMT_LAP_2G:
    case kSMPL_FMT_LAP_2G_v2:
    case kSMPL_FMT_LAP_2G_v3:
      return TextKind::kLap;
    case kSMPL_FMT_GPS_ZEP:
      return TextKind::kGpsZepState;
    case kSMPL_FMT_GPS_UBX:
      return TextKind::kGpsUbxState;
    case kSMPL_FMT_DATA_ORA:
      return TextKind::kDateTimePacket;
    case kSMPL_FMT_GEAR:
      return TextKind::kGear;
    case kSMPL_FMT_TGIRO:
      return TextKind::kLapTime;
    case kSMPL_FMT_STR_CODE_2_6:
    case kSMPL_FMT_STR_CODE_2_30:
      return TextKind::kStoredText;
    case kSMPL_FMT_LAP_1G:
      return TextKind::kLap1gPacket;
    case kSMPL_FMT_GPS_SV_INFO:
      return TextKind::kSatellitePacket;
    case kSMPL_FMT_ZEP_LATLON:
      return TextKind::kCoordinate;
    case kSMPL_FMT_TDIFF:
      return TextKind::kTimeDifference;
    case kSMPL_FMT_ROLL_TIME:
      return TextKind::kRunningTime;
    default:
      return TextKind::kNone;
  }
}

// Bytes of the sample that a text is made from, the reader of a plain number apart.
u32 bytes_of_text(TextKind text, i32 format) {
  switch (text) {
    case TextKind::kNone:
    case TextKind::kPlainNumber:
    case TextKind::kDateTimePacket:
    case TextKind::kLap1gPacket:
    case TextKind::kSatellitePacket:
      return 0;
    case TextKind::kStoredText:
      return standard_sample_size(format);
    case TextKind::kGear:
      return 2;
    case TextKind::kGpsZepState:
      return 52;
    case TextKind::kGpsUbxState:
      return 48;
    default:
      return 8;
  }
}

Field field_of(const ChannelRecord& record, u32 fid, u32 byte_offset) {
  const bool is_part_of_packet = record.quantity() == FID_PHI_PACKAGE && record.fp_code() != fid;
  if (!is_part_of_packet) {
    return {record.format(), byte_offset, reader_of_format(record.format(), fid), TextKind::kNone};
  }
  const PacketTable table = packets::table_of(record.fp_code(), record.format());
  const auto row = std::find_if(table.begin(), table.end(), [fid](const SubChannelRow& r) { return r.fid == fid; });
  if (fid == 0 || row == table.end()) return {};
  if (row->format == kComputedFormat) return {kComputedFormat, byte_offset, row->read, row->text};
  return {row->format, u64{byte_offset} + row->byte_offset, reader_of_format(row->format, fid), row->text};
}

std::string timing_text(TextKind kind, const u8* sample) {
  const mylaps::Timing timing = mylaps::timing_of(sample);
  switch (kind) {
    case TextKind::kMyLapsTime:
      return mylaps::value_text(timing.time_s, timing.time_kind, timing.time_is_negative);
    case TextKind::kMyLapsField:
      return mylaps::field_text(timing.field, timing.field_kind, timing.field_is_negative);
    case TextKind::kMyLapsCount:
      return mylaps::field_text(timing.count, timing.count_kind, false);
    case TextKind::kMyLapsPosition:
      return mylaps::value_text(timing.position, 0, false);
    case TextKind::kMyLapsFirstGap:
      return mylaps::gap_text(mylaps::gap_of(load_u32(sample)));
    case TextKind::kMyLapsSecondGap:
      return mylaps::gap_text(mylaps::gap_of(load_u32(sample + 4)));
    default:
      return kNoText;
  }
}

// A number of 32 bits as text, or what its sentinel says.
template <typename Former>
std::string sentinel_or(const u8* time, Former former) {
  const u32 status = sentinel_status(load_u32(time));
  return status != kStatusGood ? status_text(status) : former(time);
}

}  // namespace

CConverter::CConverter(const ChannelRecord& record, u32 fid, const UnitOfMeasure& unit, u32 byte_offset,
                       const DisplaySettings& display)
    : sample_size_(record.sample_size()), display_(display) {
  const Field field = field_of(record, fid, byte_offset);
  const u64 value_end = field.byte_offset + field.reader.width;
  constexpr u64 kHighest = std::numeric_limits<u32>::max();
  reader_ = {field.reader.value,
             unit.scale,
             unit.offset,
             static_cast<u32>(std::min(field.byte_offset, kHighest)),
             static_cast<u32>(std::min(value_end, kHighest)),
             field.reader.common};
  status_reader_ = field.reader.with_status;
  is_short_ = value_end > sample_size_ && IsValido();

  text_ = text_of_format(field.format);
  if (field.text != TextKind::kNone) {
    fallback_text_ = text_;
    text_ = field.text;
  }
  value_bytes_ =
      std::max({field.reader.width, bytes_of_text(text_, field.format), bytes_of_text(fallback_text_, field.format)});
  if (display_.decimals < 0) display_.decimals = unit.default_decimals;
  if (display_.highest_decimals < 0) display_.highest_decimals = unit.most_decimals;
}

const u8* CConverter::value_in(const u8* sample, PaddedValue* padded) const {
  if (u64{reader_.byte_offset} + value_bytes_ <= sample_size_) return sample + reader_.byte_offset;
  padded->fill(0);
  if (reader_.byte_offset < sample_size_) {
    const std::size_t stored = std::min<std::size_t>(sample_size_ - reader_.byte_offset, padded->size());
    std::memcpy(padded->data(), sample + reader_.byte_offset, stored);
  }
  return padded->data();
}

float CConverter::ConvertiCorto(const u8* sample) const {
  PaddedValue padded;
  return reader_.read(value_in(sample, &padded), reader_.gain, reader_.offset);
}

bool CConverter::ConvertiValido(const u8* sample, float* out) const {
  if (!IsValido()) {
    *out = 0.0F;
    return false;
  }
  PaddedValue padded;
  u32 status = kStatusGood;
  *out = status_reader_(value_in(sample, &padded), reader_.gain, reader_.offset, &status);
  return status == kStatusGood;
}

bool CConverter::ConvertiTesto(const u8* sample, std::wstring* out) {
  PaddedValue padded;
  const u8* value = value_in(sample, &padded);
  std::string text = form_text(text_, value);
  if (text == kNoText && fallback_text_ != TextKind::kNone) text = form_text(fallback_text_, value);
  if (text == kNoText) {
    out->clear();
    return false;
  }
  *out = widen_bytes(std::string_view(text).substr(0, kLongestValueText));
  return true;
}

void CConverter::SetNumDecimali(int n) {
  display_.decimals = std::max(n, 0);
}

std::string CConverter::form_number(const u8* value) {
  if (!IsValido()) return kNoText;
  u32 status = kStatusGood;
  const float number = status_reader_(value, reader_.gain, reader_.offset, &status);
  return status != kStatusGood ? status_text(status) : plain_number_text(number, display_, &memory_);
}

std::string CConverter::form_text(TextKind kind, const u8* value) {
  switch (kind) {
    case TextKind::kNone:
      return kNoText;
    case TextKind::kPlainNumber:
      return form_number(value);
    case TextKind::kLap:
      return sentinel_or(value + 4, [value](const u8* time) { return lap_text(load_u32(time), load_u16(value + 2)); });
    case TextKind::kGpsZepState:
      return gps_state_text(value[14], value[51], true);
    case TextKind::kGpsUbxState:
      return gps_state_text(value[10], value[47], false);
    case TextKind::kDateTimePacket:
      return "Date and Time Packet";
    case TextKind::kGear:
      return gear_text(load_i16(value));
    case TextKind::kLapTime:
      return sentinel_or(value, [this](const u8* time) {
        return lap_time_text(load_i32(time), display_.width, display_.decimals == 1);
      });
    case TextKind::kStoredText:
      return text_field(value + 2, value_bytes_ - 2);
    case TextKind::kLap1gPacket:
      return "LAP Packet 1G";
    case TextKind::kSatellitePacket:
      return "GPS SV Info Packet";
    case TextKind::kCoordinate:
      return sentinel_or(value, [](const u8* position) { return coordinate_text(load_i32(position)); });
    case TextKind::kTimeDifference:
      return sentinel_or(
          value, [this](const u8* difference) { return time_difference_text(load_i32(difference), display_.width); });
    case TextKind::kRunningTime:
      return sentinel_or(value, [](const u8* time) { return running_time_text(load_u32(time)); });
    case TextKind::kOdometerTime:
      return odometer_time_text(load_u32(value), display_.decimals);
    default:
      return timing_text(kind, value);
  }
}

}  // namespace traguardo
