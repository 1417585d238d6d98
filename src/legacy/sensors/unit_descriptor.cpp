// SPDX-License-Identifier: MIT
#include "legacy/sensors/unit_descriptor.h"

#include <limits>
#include <optional>

namespace traguardo {
namespace {

constexpr u8 kDecimalForm = 9;
constexpr u8 kPackedForm = 11;

// The digits up to the first NUL. Nothing if there are none, or if anything else stands among them.
std::optional<u32> read_digits(std::span<const u8> field) {
  u32 number = 0;
  std::size_t count = 0;
  for (; count < field.size() && field[count] != 0; ++count) {
    if (field[count] < '0' || field[count] > '9') return std::nullopt;
    number = number * 10 + (field[count] - u32{'0'});
  }
  if (count == 0) return std::nullopt;
  return number;
}

UnitDescriptor read_decimal_form(UnitField field) {
  UnitDescriptor descriptor;
  const std::optional<u32> unit_id = read_digits(field.subspan(1, 4));
  const std::optional<u32> decimals = read_digits(field.subspan(5, 1));
  if (!unit_id || !decimals) return descriptor;
  descriptor.valid = true;
  descriptor.unit_id = *unit_id;
  descriptor.decimals = static_cast<i32>(*decimals);
  // Three digits can hold more than a unit code; such a number names no family.
  const std::optional<u32> family = read_digits(field.subspan(6, 3));
  if (family && *family <= std::numeric_limits<u8>::max()) descriptor.family_override = static_cast<u8>(*family);
  return descriptor;
}

UnitDescriptor read_packed_form(UnitField field) {
  const u32 packed = load_u16(&field[1]);
  UnitDescriptor descriptor;
  descriptor.valid = true;
  descriptor.unit_id = packed & 0x0FFF;
  descriptor.decimals = static_cast<i32>(packed >> 12);
  descriptor.family_override = field[9];
  return descriptor;
}

}  // namespace

UnitDescriptor read_unit_descriptor(UnitField field) {
  if (field[0] == kDecimalForm) return read_decimal_form(field);
  if (field[0] == kPackedForm) return read_packed_form(field);
  return {};
}

}  // namespace traguardo
