// SPDX-License-Identifier: MIT
// Samples of the logger family: a value as the bytes of a sample format.
#pragma once

#include "wire/bytes.h"

namespace traguardo::wire {

// Sample formats by their numbers in a channel record.
enum class Format : std::uint32_t {
  signed_32 = 0,
  signed_16 = 1,
  signed_8 = 2,
  unsigned_32 = 3,
  unsigned_16 = 4,
  unsigned_8 = 5,
  float_32 = 6,
  gear = 11,
  lap_time = 12,
  bits_8 = 13,
  code_and_6_characters = 15,
  code_and_30_characters = 16,
  float_16 = 20,
  time_difference = 24,
  total_odometer = 26,
  rolling_time = 32,
};

std::size_t sample_size(Format format);
// Writes one sample of sample_size(format) bytes. Values outside the format's range become its nearest one, and so do
// those that a reader would take for "no value".
void encode_sample(Format format, double value, Byte* at);

}  // namespace traguardo::wire
