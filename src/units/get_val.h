// SPDX-License-Identifier: MIT
// Plain readers of one little-endian sample of a stated width.
#pragma once

#include "support/bytes.h"

namespace traguardo {

class IGetVal {
 public:
  virtual ~IGetVal() = default;
  virtual float Get(const void* sample) const = 0;
  // Always true.
  virtual bool Get(const void* sample, float* out) const = 0;
};

namespace detail {
template <typename T>
class GetVal : public IGetVal {
 public:
  float Get(const void* sample) const final {
    return static_cast<float>(load_little_endian<T>(static_cast<const u8*>(sample)));
  }
  bool Get(const void* sample, float* out) const final {
    *out = Get(sample);
    return true;
  }
};
}  // namespace detail

class CGetValS8 final : public detail::GetVal<i8> {};
class CGetValU8 final : public detail::GetVal<u8> {};
class CGetValS16 final : public detail::GetVal<i16> {};
class CGetValU16 final : public detail::GetVal<u16> {};
class CGetValS32 final : public detail::GetVal<i32> {};
class CGetValU32 final : public detail::GetVal<u32> {};
class CGetValFloat final : public detail::GetVal<float> {};

}  // namespace traguardo
