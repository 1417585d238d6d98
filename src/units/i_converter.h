// SPDX-License-Identifier: MIT
// What turns the raw bytes of a sample into a value or a text.
#pragma once

#include <string>

#include "support/bytes.h"

namespace traguardo {

class IConverter {
 public:
  virtual ~IConverter() = default;
  // The value through `out`; true if the sample carries a proper value.
  virtual bool ConvertiValido(const u8* sample, float* out) const = 0;
  // The value as text; false with an empty text where the format has none. Not const: the number of decimals that was
  // shown last is remembered.
  virtual bool ConvertiTesto(const u8* sample, std::wstring* out) = 0;
  // False if this converter has no reader for its format.
  virtual bool IsValido() const = 0;
  // The value, 0.0 or the format's fallback where the sample carries none. REQUIRES: IsValido().
  virtual float Converti(const u8* sample) const = 0;
  // Decimals of the text form; a negative number counts as 0.
  virtual void SetNumDecimali(int n) = 0;
};

}  // namespace traguardo
