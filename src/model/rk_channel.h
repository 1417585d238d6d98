// SPDX-License-Identifier: MIT
// A channel as everybody but its reader sees it.
#pragma once

#include <array>
#include <string>

#include "support/bytes.h"

namespace traguardo {

// A stored sample: time in microseconds, then a 32-bit float; packed, as it lies in the store.
struct SChannelRecord {
  static constexpr u32 kSize = 12;
  std::array<u8, kSize> bytes{};

  u64 time() const { return load_u64(bytes.data()); }
  float value() const { return load_f32(bytes.data() + 8); }
};
static_assert(sizeof(SChannelRecord) == SChannelRecord::kSize);

class IRkChannel {
 public:
  virtual ~IRkChannel() = default;
  // Adds (to - from) / step to the count if the channel holds samples; nothing for step 0. True.
  virtual bool ContaValoriEvery(u64 step, u64 from, u64 to, u32* count) = 0;
  // The whole channel: times in seconds, values. 0 and nothing written if `count` is below the sample count; else the
  // sample count.
  virtual u32 GetValori(double* times, double* values, int count) = 0;
  // The samples with from <= time < to, up to the first that is not below `to`, at most `count` of them.
  virtual u32 GetValoriRange(u64 from, u64 to, double* times, double* values, int count) = 0;
  virtual const std::string& GetNome() const = 0;
  virtual const std::string& GetUnita() const = 0;
  virtual u32 GetIdUnita() const = 0;
  virtual bool HasIdUnita() const = 0;
  virtual void GetTestoValore(std::string* text) const = 0;
  virtual float GetFrequenza() const = 0;  // Hz, 0 without a fixed rate
  virtual u64 GetPeriodo() const = 0;      // microseconds, 0 without a fixed rate
  virtual u64 GetNumValori() = 0;
  virtual u64 GetNumValoriRange(u64 from, u64 to) = 0;
  // First and last time, 0 and 1 while the store has no records or is closed: ask GetNumValori first.
  virtual u64 GetPrimoTempo() const = 0;
  virtual u64 GetUltimoTempo() const = 0;
  // Bounds of the stored values, -1 and 1 without any.
  virtual float GetMinimo() const = 0;
  virtual float GetMassimo() const = 0;
  virtual bool IsVelocita() const = 0;
  virtual bool IsAccLaterale() const = 0;
  virtual bool IsBitField() const = 0;
  virtual u32 GetFid() const = 0;
  virtual u32 GetFormato() const = 0;
  virtual u32 GetFlags() const = 0;
  virtual bool IsBitField2() const = 0;
  virtual bool HasFlag400() const = 0;
  virtual u16 GetIdInDevice() const = 0;
  virtual u16 GetDeviceCode() const = 0;
  virtual u32 GetDeviceSerial() const = 0;
};

}  // namespace traguardo
