// SPDX-License-Identifier: MIT
// The view of one channel of a legacy session: its record, extension, statistics and values under one name, and the
// unit text that a host finally sees.
#pragma once

#include <span>
#include <string>

#include "legacy/file/records.h"
#include "support/bytes.h"

namespace traguardo {

struct WmpSession;

class CWMPMisura {
 public:
  // owner: borrowed; the measure must not outlive it, nor a change of its channel table. Rewrites a unit field of an
  // older form in the owner's record. kept: a value that comes along, for the caller's own use.
  CWMPMisura(WmpSession* owner, std::size_t index, u32 kept);
  ~CWMPMisura();
  CWMPMisura(const CWMPMisura&) = delete;
  CWMPMisura& operator=(const CWMPMisura&) = delete;

  // Measures that live in the process.
  static std::size_t living();

  std::size_t index() const { return index_; }
  u32 kept() const { return kept_; }
  std::string name() const { return record().name(); }
  u32 period_ms() const;
  u32 frequency_hz() const;
  u32 sample_count() const { return record().sample_count(); }
  std::span<const float> values() const;
  u16 sensor_id() const { return record().sensor_id(); }
  u16 measure_class() const { return record().measure_class(); }
  float minimum() const { return record().display_minimum(); }
  float maximum() const { return record().display_maximum(); }
  bool hidden() const { return record().hidden(); }
  // One character per byte: a degree sign is the character 0xB0.
  const std::wstring& unit_text() const { return unit_text_; }
  // Of a value, as for printf.
  const std::wstring& format_text() const { return format_text_; }
  i32 decimals() const { return decimals_; }

  // What parameter 0 to 4 means for the channel's sensor, for whoever shows a calibration.
  std::string parameter_label(u8 parameter) const;
  std::string parameter_label_id(u8 parameter) const;

  // Change a calibration and convert the channel again. False, with a line in the log, for a sensor that has no such
  // parameter to set.
  bool SetParametro_1(float value) { return set_parameter(1, value); }
  bool SetParametro_2(float value) { return set_parameter(2, value); }
  bool SetParametro_3(float value) { return set_parameter(3, value); }
  bool SetParametro_4(float value) { return set_parameter(4, value); }
  bool SetParametro_5(float value) { return set_parameter(5, value); }

 private:
  const WmpChannelRecord& record() const;
  void rewrite_unit_field();
  std::string make_unit_text() const;
  std::string stored_unit_text(const std::string& stored) const;
  i32 make_decimals() const;
  bool set_parameter(u8 operation, float value);

  WmpSession* owner_;
  std::size_t index_;
  u32 kept_;
  std::wstring unit_text_;
  std::wstring format_text_;
  i32 decimals_ = 0;
};

}  // namespace traguardo
