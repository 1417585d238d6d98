// SPDX-License-Identifier: MIT
#include "units/converter.h"

#include <algorithm>
#include <limits>

#include "units/fid.h"
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
  TextForm text;
};

TextForm text_of_format(i32 format) {
  if (format == kComputedFormat) return sample_texts::kNumber;
  const SampleFormatRow* row = sample_format(format);
  return row == nullptr ? TextForm{} : row->text;
}

Field field_of(const ChannelRecord& record, u32 fid, u32 byte_offset) {
  const bool is_part_of_packet = record.quantity() == FID_PHI_PACKAGE && record.fp_code() != fid;
  if (!is_part_of_packet) {
    return {record.format(), byte_offset, reader_of_format(record.format(), fid), {}};
  }
  const PacketTable table = packets::table_of(record.fp_code(), record.format());
  const auto row = std::find_if(table.begin(), table.end(), [fid](const SubChannelRow& r) { return r.fid == fid; });
  if (fid == 0 || row == table.end()) return {};
  if (row->format == kComputedFormat) return {kComputedFormat, byte_offset, row->read, row->text};
  return {row->format, u64{byte_offset} + row->byte_offset, reader_of_format(row->format, fid), row->text};
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
  if (field.text.exists()) {
    fallback_text_ = text_;
    text_ = field.text;
  }
  value_bytes_ = std::max({field.reader.width, text_.bytes, fallback_text_.bytes});
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
  if (text == kNoText && fallback_text_.exists()) text = form_text(fallback_text_, value);
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

std::string CConverter::form_text(const TextForm& form, const u8* value) {
  if (form.is_number) return form_number(value);
  return form.former == nullptr ? kNoText : form.former(value, display_);
}

}  // namespace traguardo
