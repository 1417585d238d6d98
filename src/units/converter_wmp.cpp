// SPDX-License-Identifier: MIT
#include "units/converter_wmp.h"

#include "support/event_log.h"
#include "units/sample_formats.h"

namespace traguardo {
CConverterWMP::CConverterWMP(const ChannelRecord* record, bool zero_offset) {
  if (record == nullptr) {
    TRAGUARDO_LOG("CConverterWMP::CConverterWMP", "%s [%d] ERROR = Bad param\n");
    return;
  }
  if (!zero_offset) byte_offset_ = record->offset_in_packet();
  const SampleFormatRow* format = sample_format(record->format());
  if (format == nullptr || format->plain.make == nullptr) return;
  reader_ = format->plain.make();
  width_ = format->plain.width;
}

bool CConverterWMP::ConvertiValido(const u8* sample, float* out) const {
  return reader_ != nullptr && reader_->Get(sample + byte_offset_, out);
}

bool CConverterWMP::ConvertiTesto(const u8*, std::wstring*) {
  return true;
}

void CConverterWMP::SetNumDecimali(int) {}

}  // namespace traguardo
