// SPDX-License-Identifier: MIT
// The plain converter: one value of a stated width at a stated place, with neither gain nor offset nor sentinels.
#pragma once

#include <memory>

#include "units/channel_record.h"
#include "units/get_val.h"
#include "units/i_converter.h"

namespace traguardo {

class CConverterWMP final : public IConverter {
 public:
  // Takes the width of the value from the record's format and, unless `zero_offset`, its place in the sample from the
  // record. A null record leaves no reader, with a line in the log.
  CConverterWMP(const ChannelRecord* record, bool zero_offset);

  // REQUIRES of both conversions: bytes_needed() readable bytes.
  bool ConvertiValido(const u8* sample, float* out) const override;
  // Has no text form; gives true and leaves `out`.
  bool ConvertiTesto(const u8* sample, std::wstring* out) override;
  bool IsValido() const override { return reader_ != nullptr; }
  float Converti(const u8* sample) const override { return reader_->Get(sample + byte_offset_); }
  void SetNumDecimali(int n) override;

  // Bytes from the start of a sample to the end of the value.
  u64 bytes_needed() const { return u64{byte_offset_} + width_; }

 private:
  u32 byte_offset_ = 0;
  std::unique_ptr<IGetVal> reader_;
  u32 width_ = 0;
};

}  // namespace traguardo
