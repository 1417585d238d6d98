// SPDX-License-Identifier: MIT
#include "units/converter_wmp.h"

#include "support/event_log.h"
#include "units/sample_formats.h"

namespace traguardo {
namespace {

std::unique_ptr<IGetVal> reader_of(i32 format) {
  switch (format) {
    case kSMPL_FMT_S32:
      return std::make_unique<CGetValS32>();
    case kSMPL_FMT_S16:
    case kSMPL_FMT_GEAR:
    case kSMPL_FMT_STR_CODE_2_6:
    case kSMPL_FMT_STR_CODE_2_30:
      return std::make_unique<CGetValS16>();
    case kSMPL_FMT_S8:
      return std::make_unique<CGetValS8>();
    case kSMPL_FMT_U32:
    case kSMPL_FMT_TGIRO:
      return std::make_unique<CGetValU32>();
    // The bits of a half float as a plain number: this converter knows integers of that width only.
    case kSMPL_FMT_U16:
    case kSMPL_FMT_F16:
      return std::make_unique<CGetValU16>();
    case kSMPL_FMT_U8:
    case kSMPL_FMT_BITFIELD_8:
      return std::make_unique<CGetValU8>();
    case kSMPL_FMT_FLOAT:
      return std::make_unique<CGetValFloat>();
    default:
      return nullptr;
  }
}

u32 width_of(i32 format) {
  const bool holds_text_behind = format == kSMPL_FMT_STR_CODE_2_6 || format == kSMPL_FMT_STR_CODE_2_30;
  return holds_text_behind ? 2 : standard_sample_size(format);
}

}  // namespace

CConverterWMP::CConverterWMP(const ChannelRecord* record, bool zero_offset) {
  if (record == nullptr) {
    TRAGUARDO_LOG("CConverterWMP::CConverterWMP", "%s [%d] ERROR = Bad param\n");
    return;
  }
  if (!zero_offset) byte_offset_ = record->offset_in_packet();
  reader_ = reader_of(record->format());
  if (reader_ != nullptr) width_ = width_of(record->format());
}

bool CConverterWMP::ConvertiValido(const u8* sample, float* out) const {
  return reader_ != nullptr && reader_->Get(sample + byte_offset_, out);
}

bool CConverterWMP::ConvertiTesto(const u8*, std::wstring*) {
  return true;
}

void CConverterWMP::SetNumDecimali(int) {}

}  // namespace traguardo
