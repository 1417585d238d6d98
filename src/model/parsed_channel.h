// SPDX-License-Identifier: MIT
// A logged channel whose samples lie in the session's store file; a session of hundreds of channels with millions of
// samples each needs no more memory than their buffers. What reads samples throws ReadFailure where the store can't be
// read.
#pragma once

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include "model/mapped_array.h"
#include "model/rk_channel.h"

namespace traguardo {

// On a border of 64 bytes, so that what a sample touches lies in one line of memory.
class alignas(64) CParsedChannel final : public IRkChannel {
 public:
  enum Esito { kStored = 0, kMerged = 1, kRefused = 2, kOutOfMemory = 3 };

  // `file` outlives the channel; ask IsStoreValido before use. keep_constant: a run of equal values keeps its first and
  // its last sample only.
  CParsedChannel(std::string name, StoreFile* file, bool keep_constant);

  bool IsStoreValido() const { return store_.IsValido(); }
  // Ends the parse for this channel. False if something could not be written.
  bool ChiudiStore();

  // --- IRkChannel
  bool ContaValoriEvery(u64 step, u64 from, u64 to, u32* count) override;
  u32 GetValori(double* times, double* values, int count) override;
  u32 GetValoriRange(u64 from, u64 to, double* times, double* values, int count) override;
  const std::string& GetNome() const override { return name_; }
  const std::string& GetUnita() const override { return units_; }
  u32 GetIdUnita() const override { return unit_id_; }
  bool HasIdUnita() const override { return has_unit_id_; }
  void GetTestoValore(std::string* text) const override { text->clear(); }
  float GetFrequenza() const override;
  u64 GetPeriodo() const override { return period_; }
  u64 GetNumValori() override { return store_.Numero(); }
  u64 GetNumValoriRange(u64 from, u64 to) override;
  u64 GetPrimoTempo() const override { return store_.Numero() == 0 ? 0 : first_time_; }
  u64 GetUltimoTempo() const override { return store_.Numero() == 0 ? 1 : highest_time(); }
  float GetMinimo() const override { return has_samples_ ? store_.bounds().lowest : -1.0F; }
  float GetMassimo() const override { return has_samples_ ? store_.bounds().highest : 1.0F; }
  bool IsVelocita() const override { return is_speed_; }
  bool IsAccLaterale() const override { return is_lateral_acceleration_; }
  bool IsBitField() const override { return is_bit_field_; }
  u32 GetFid() const override { return fid_; }
  u32 GetFormato() const override { return format_; }
  u32 GetFlags() const override { return flags_; }
  bool IsBitField2() const override { return is_bit_field_2_; }
  bool HasFlag400() const override { return has_flag_400_; }
  u16 GetIdInDevice() const override { return id_in_device_; }
  u16 GetDeviceCode() const override { return device_code_; }
  u32 GetDeviceSerial() const override { return device_serial_; }

  // --- What readers and the merged view use
  // The next sample finds room without a further thought.
  bool has_room() const { return store_.has_room(); }
  // One sample. A time not above the last one's is refused, except behind a window's edge.
  Esito AddValore(u64 time, float value) {
    // A record that finds room has a predecessor in its window; what is expected comes after it.
    if (!store_.has_room() || !store_.expects(time)) [[unlikely]]
      return add_out_of_step(time, value);
    if (keep_constant_ && is_repeated(value)) return merge(time);
    store_.take_value(value);
    keep_last(time, value);
    return kStored;
  }
  // `count` samples from first_time on, `step` apart; no test of order. False if the store ran out of room.
  bool AddValori(u64 first_time, u64 step, u32 count, const float* values);
  // Resamples on the grid from, from + step, ... below to, into buffer[offset] on; zeroes `count` floats there first.
  bool GetValoriEvery(u64 step, u64 from, u64 to, float* buffer, u32 offset, u32 count);
  bool GetValoriEveryHold(u64 step, u64 from, u64 to, float* buffer, u32 offset, u32 count);
  bool GetValoriEveryLineare(u64 step, u64 from, u64 to, float* buffer, u32 offset, u32 count);
  // All records; 0 and nothing written if the capacity is below the sample count.
  u64 GetRecord(SChannelRecord* out, u64 capacity);

  // Moves all samples by to - from, modulo 2^64.
  void TraslaTempi(u64 from, u64 to);

  void SetNome(std::string name) { name_ = std::move(name); }
  // Keeps the low byte of each character.
  void SetUnita(std::wstring_view units) { units_ = narrow_low_bytes(units); }
  void SetUnita(std::string_view units) { units_ = units; }
  void SetIdUnita(u32 id) {
    unit_id_ = id;
    has_unit_id_ = true;
  }
  void SetPeriodo(u64 period_us) { period_ = period_us; }
  void SetNumDecimali(i32 decimals) { decimals_ = decimals; }
  i32 GetNumDecimali() const { return decimals_; }
  void SetVelocita(bool is) { is_speed_ = is; }
  void SetAccLaterale(bool is) { is_lateral_acceleration_ = is; }
  void SetBitField(bool is) { is_bit_field_ = is; }
  void SetBitField2(bool is) { is_bit_field_2_ = is; }
  void SetFlag400(bool has) { has_flag_400_ = has; }
  void SetFid(u32 fid) { fid_ = fid; }
  void SetFormato(u32 format) { format_ = format; }
  void SetFlags(u32 flags) { flags_ = flags; }
  void SetIdInDevice(u16 id) { id_in_device_ = id; }
  void SetDeviceCode(u16 code) { device_code_ = code; }
  void SetDeviceSerial(u32 serial) { device_serial_ = serial; }
  void SetTieniUltimoValore(bool hold) { hold_last_value_ = hold; }
  bool GetTieniUltimoValore() const { return hold_last_value_; }
  // Of a channel that its reader computed from others, instead of finding it in the file.
  void mark_derived() { is_derived_ = true; }
  bool is_derived() const { return is_derived_; }

 private:
  static constexpr u32 kValueOffset = 8;

  bool is_repeated(float value) const { return value == last_value_ && value == previous_value_; }
  Esito merge(u64 time) {
    store_u64(store_.Recente(0), time);
    last_record_time_ = time;
    return kMerged;
  }
  void keep_last(u64 time, float value) {
    has_last_ = true;
    previous_value_ = last_value_;
    last_value_ = value;
    last_record_time_ = time;
  }
  void forget_last() {
    has_last_ = false;
    last_value_ = kNone;
    previous_value_ = kNone;
  }
  Esito add_out_of_step(u64 time, float value);
  Esito add_at_an_edge(u64 time, float value);
  // Within a window times rise, so the newest record's stands for all of them.
  u64 highest_time() const { return has_last_ ? std::max(last_time_, last_record_time_) : last_time_; }
  u64 first_not_below(u64 time) const;
  template <typename Visitor>
  void visit_range(u64 from, u64 to, u64 most, Visitor&& visit);

  // What every sample touches stands together, in front: with a thousand channels each further line of memory counts.
  // The whole stays small, as a file may list 65,536 channels; cold flags fill the gaps.
  // The last record and the one before it are those of the current window, as no comparison reaches across its edge.
  const bool keep_constant_;
  bool has_last_ = false;
  bool has_samples_ : 1 = false;
  bool has_unit_id_ : 1 = false;
  // While this holds, a time can be searched for; a first record behind a window's edge or AddValori can end it.
  bool times_ascend_ : 1 = true;
  bool is_speed_ : 1 = false;
  bool is_lateral_acceleration_ : 1 = false;
  bool is_bit_field_ : 1 = false;
  bool is_bit_field_2_ : 1 = false;
  bool has_flag_400_ : 1 = false;
  bool hold_last_value_ : 1 = false;
  bool is_derived_ : 1 = false;
  // Where there is no such value: equal to none.
  static constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
  float last_value_ = kNone;
  float previous_value_ = kNone;
  u16 device_code_ = 0;
  u16 id_in_device_ = 0;
  u64 last_record_time_ = 0;
  MemoryMappedArray store_;
  std::string name_;
  std::string units_;
  u64 period_ = 0;
  // Added to every stored time on reading, so that moving a channel on the time axis costs no pass over its file.
  u64 time_shift_ = 0;
  u64 first_time_ = std::numeric_limits<u64>::max();
  u64 last_time_ = 0;  // of earlier windows; see HighestTime
  u32 unit_id_ = 0;
  u32 fid_ = 0;
  u32 format_ = 0;
  u32 flags_ = 0;
  u32 device_serial_ = 0;
  i32 decimals_ = 0;
};
static_assert(sizeof(CParsedChannel) == 256 || sizeof(void*) != 8);

}  // namespace traguardo
