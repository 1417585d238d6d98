// SPDX-License-Identifier: MIT
// The converter of a channel of the logger family: reader, unit and text form, all chosen once when it is built.
#pragma once

#include <array>

#include "units/channel_record.h"
#include "units/i_converter.h"
#include "units/sample_formats.h"
#include "units/sample_reader.h"
#include "units/sample_texts.h"
#include "units/unit_of_measure.h"
#include "units/value_text.h"

namespace traguardo {

class CConverter final : public IConverter {
 public:
  // fid: the function asked for. Where the record is a packet and `fid` isn't the packet's own word, the converter is
  // that of the packet's sub-channel with this word, and unusable if the packet has none.
  // byte_offset: where the value, or the packet, begins in a sample.
  CConverter(const ChannelRecord& record, u32 fid, const UnitOfMeasure& unit, u32 byte_offset,
             const DisplaySettings& display);

  // A sample has as many readable bytes as its channel record says; where that is less than the format needs, zeros are
  // read behind its end.
  bool ConvertiValido(const u8* sample, float* out) const override;
  bool ConvertiTesto(const u8* sample, std::wstring* out) override;
  bool IsValido() const override { return reader_.read != nullptr; }
  float Converti(const u8* sample) const override {
    if (is_short_) [[unlikely]]
      return ConvertiCorto(sample);
    return reader_.read == nullptr ? 0.0F : reader_(sample);
  }
  void SetNumDecimali(int n) override;

  // The bare reader with gain and offset, for decode loops; empty if IsValido() is false. Look at its bytes_needed.
  SampleReader reader() const { return reader_; }

 private:
  using PaddedValue = std::array<u8, kLongestStandardSample>;

  float ConvertiCorto(const u8* sample) const;
  // The value, or the packet, in a sample; where the sample ends before it does, a copy with zeros behind the end.
  const u8* value_in(const u8* sample, PaddedValue* padded) const;
  std::string form_number(const u8* value);
  std::string form_text(const TextForm& form, const u8* value);

  SampleReader reader_;
  StatusFunction status_reader_ = nullptr;
  TextForm text_;
  TextForm fallback_text_;
  u32 sample_size_ = 0;
  u32 value_bytes_ = 0;  // Of all readers and texts, from the value's begin on.
  bool is_short_ = false;
  DisplaySettings display_;
  NumberMemory memory_;
};

}  // namespace traguardo
