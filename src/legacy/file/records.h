// SPDX-License-Identifier: MIT
// The records of a .wmp file, of every version, as bytes with named accessors: a record owns its bytes, is read and
// written by name, and each offset stands once. All records are packed and little-endian.
//
// This room, legacy/, holds the reader of the .wmp family and of the trace files beside it. It may include everything
// but logger/ and api/; api/ alone calls it, through CParserWMP.
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>

#include "support/bytes.h"

namespace traguardo {

inline constexpr u16 kWmpSignature = 22349;
// A true lap time that was never set reads as this (or as 0).
inline constexpr u32 kTrueLapTimeUnset = 0xCB3434CB;

// The bytes of one record of fixed size. A new record is all zero.
template <std::size_t Size>
class PackedRecord {
 public:
  static constexpr std::size_t kSize = Size;

  u8* bytes() { return bytes_.data(); }
  const u8* bytes() const { return bytes_.data(); }

 protected:
  u8 get_u8(std::size_t offset) const { return bytes_[offset]; }
  i8 get_i8(std::size_t offset) const { return static_cast<i8>(bytes_[offset]); }
  u16 get_u16(std::size_t offset) const { return load_u16(&bytes_[offset]); }
  i16 get_i16(std::size_t offset) const { return load_i16(&bytes_[offset]); }
  u32 get_u32(std::size_t offset) const { return load_u32(&bytes_[offset]); }
  i32 get_i32(std::size_t offset) const { return load_i32(&bytes_[offset]); }
  float get_f32(std::size_t offset) const { return load_f32(&bytes_[offset]); }
  void put_u8(std::size_t offset, u8 value) { bytes_[offset] = value; }
  void put_u16(std::size_t offset, u16 value) { store_u16(&bytes_[offset], value); }
  void put_i16(std::size_t offset, i16 value) { store_i16(&bytes_[offset], value); }
  void put_u32(std::size_t offset, u32 value) { store_u32(&bytes_[offset], value); }
  void put_f32(std::size_t offset, float value) { store_f32(&bytes_[offset], value); }
  void clear_bytes(std::size_t offset, std::size_t count) { std::memset(&bytes_[offset], 0, count); }

  std::string get_text(std::size_t offset, std::size_t width) const { return text_field(&bytes_[offset], width); }
  // The same without a copy; lives as long as the record and its text.
  std::string_view get_text_view(std::size_t offset, std::size_t width) const {
    const std::string_view field(reinterpret_cast<const char*>(&bytes_[offset]), width);
    return field.substr(0, field.find('\0'));
  }
  // The field is padded with zeros; a text that fills it has no NUL behind it.
  void put_text(std::size_t offset, std::size_t width, std::string_view text) {
    clear_bytes(offset, width);
    const std::size_t count = text.size() < width ? text.size() : width;
    if (count > 0) std::memcpy(&bytes_[offset], text.data(), count);
  }

 private:
  std::array<u8, Size> bytes_{};
};

// In front of every group of a file of version 600 or 700.
class WmpBlockHead : public PackedRecord<32> {
 public:
  // In the first head of a file only.
  u16 version() const { return get_u16(2); }
  void set_version(u16 value) { put_u16(2, value); }
  u32 checksum() const { return get_u32(4); }
};

class WmpMainHeader : public PackedRecord<150> {
 public:
  u16 signature() const { return get_u16(0); }
  u16 version() const { return get_u16(2); }
  void set_version(u16 value) { put_u16(2, value); }
  std::string date_text() const { return get_text(44, 40); }
  u32 file_length() const { return get_u32(84); }
  void set_file_length(u32 value) { put_u32(84, value); }
  u32 duration_ms() const { return get_u32(88); }
  void set_duration_ms(u32 value) { put_u32(88, value); }
  u32 value_area_size() const { return get_u32(92); }
  void set_value_area_size(u32 value) { put_u32(92, value); }
  i16 channel_count() const { return get_i16(96); }
  void set_channel_count(i16 value) { put_i16(96, value); }
  i16 lap_count() const { return get_i16(98); }
  void set_lap_count(i16 value) { put_i16(98, value); }
  i16 logged_count() const { return get_i16(100); }
  void set_logged_count(i16 value) { put_i16(100, value); }
  i16 derived_count() const { return get_i16(102); }
  void set_derived_count(i16 value) { put_i16(102, value); }
  i16 reference_speed() const { return get_i16(118); }
  void set_reference_speed(i16 value) { put_i16(118, value); }
  u8 family() const { return get_u8(120); }
  void set_family(u8 value) { put_u8(120, value); }
  u32 raw_area_size() const { return get_u32(121); }
  void set_raw_area_size(u32 value) { put_u32(121, value); }
  u16 best_lap() const { return get_u16(125); }
  void set_best_lap(u16 value) { put_u16(125, value); }
  void set_best_lap_time_ms(u32 value) { put_u32(127, value); }
  // Second and first number of the firmware version as one word.
  u16 firmware_word() const { return get_u16(136); }
  u8 firmware_second() const { return get_u8(136); }
  void set_firmware_second(u8 value) { put_u8(136, value); }
  u8 firmware_first() const { return get_u8(137); }
  void set_firmware_first(u8 value) { put_u8(137, value); }
  u32 software_version() const { return get_u32(138); }
  void set_software_version(u32 value) { put_u32(138, value); }
  u8 firmware_third() const { return get_u8(142); }
  void set_firmware_third(u8 value) { put_u8(142, value); }
  // Versions from 452 on.
  u32 logger_serial() const { return get_u32(143); }
  void set_best_lap_run(u16 value) { put_u16(147, value); }
};

class WmpConfigurationBlock : public PackedRecord<874> {
 public:
  // Version 500.
  u32 dump_offset() const { return get_u32(0); }
  u16 run_count() const { return get_u16(18); }
  void set_run_count(u16 value) { put_u16(18, value); }
  u16 extra_count() const { return get_u16(22); }
  void set_extra_count(u16 value) { put_u16(22, value); }
  void set_reference_lap(u16 value) { put_u16(26, value); }
  void set_reference_lap_run(u16 value) { put_u16(28, value); }
  // Whether the function ids of the channel extensions are valid.
  bool has_function_ids() const { return get_u16(40) != 0; }
  void set_has_function_ids(bool value) { put_u16(40, value ? 1 : 0); }
};

class WmpIdentityBlock : public PackedRecord<128> {
 public:
  u32 device_code() const { return get_u32(4); }
  u32 device_id() const { return get_u32(16); }
};

class WmpNamesBlock : public PackedRecord<360> {
 public:
  std::string vehicle() const { return get_text(0, 40); }
  std::string track() const { return get_text(40, 40); }
  std::string racer() const { return get_text(80, 40); }
  std::string test_name() const { return get_text(120, 240); }
};

class WmpExtendedNamesBlock : public PackedRecord<664> {
 public:
  std::string championship() const { return get_text(0, 40); }
  u32 venue_type() const { return get_u32(596); }
};

// A channel's record of versions 100, 200 and 320; old_record_copies() says what of it goes into the record of today.
class WmpOldChannelRecord : public PackedRecord<98> {
 public:
  // The stored rate is one less than the index, and none above 5 exists.
  u16 rate_index() const { return static_cast<u16>((get_u16(46) > 5 ? 1 : get_u16(46)) + 1); }
};

class WmpChannelRecord : public PackedRecord<668> {
 public:
  static constexpr std::size_t kNameWidth = 20;
  static constexpr std::size_t kUnitWidth = 10;
  static constexpr std::size_t kFormulaWidth = 256;
  // A channel with this number exists for others and is not shown to a host.
  static constexpr u8 kHiddenNumber = 253;
  // The number of a channel that no logger recorded.
  static constexpr u8 kAddedNumber = 255;
  enum Origin : u32 { kOriginFormula = 0, kOriginMeasured = 1, kOriginSynthesised = 2 };
  static constexpr u16 kClassSpeed = 3;
  static constexpr u16 kClassEngineSpeed = 4;

  std::string_view name_view() const { return get_text_view(0, kNameWidth); }
  std::string name() const { return std::string(name_view()); }
  void set_name(std::string_view text) { put_text(0, kNameWidth, text); }
  // The unit field as bytes: a text or a descriptor.
  const u8* unit_bytes() const { return bytes() + 20; }
  u8* unit_bytes() { return bytes() + 20; }
  std::span<const u8, kUnitWidth> unit_field() const {
    return std::span<const u8, kUnitWidth>(unit_bytes(), kUnitWidth);
  }
  std::string unit_text() const { return get_text(20, kUnitWidth); }
  void set_unit_text(std::string_view text) { put_text(20, kUnitWidth, text); }
  void set_first_word(u32 value) { put_u32(30, value); }
  void set_second_word(u32 value) { put_u32(34, value); }
  u32 origin() const { return get_u32(38); }
  void set_origin(u32 value) { put_u32(38, value); }
  u16 filter_word() const { return get_u16(62); }
  void set_filter_word(u16 value) { put_u16(62, value); }
  u16 sensor_id() const { return get_u16(64); }
  void set_sensor_id(u16 value) { put_u16(64, value); }
  u16 measure_class() const { return get_u16(68); }
  void set_measure_class(u16 value) { put_u16(68, value); }
  u16 rate_index() const { return get_u16(70); }
  void set_rate_index(u16 value) { put_u16(70, value); }
  u32 sample_count() const { return get_u32(72); }
  void set_sample_count(u32 value) { put_u32(72, value); }
  float display_minimum() const { return get_f32(76); }
  void set_display_minimum(float value) { put_f32(76, value); }
  float display_maximum() const { return get_f32(80); }
  void set_display_maximum(float value) { put_f32(80, value); }
  // index: 0 to 4.
  float parameter(std::size_t index) const { return get_f32(92 + 4 * index); }
  void set_parameter(std::size_t index, float value) { put_f32(92 + 4 * index, value); }
  std::array<float, 5> parameters() const {
    return {parameter(0), parameter(1), parameter(2), parameter(3), parameter(4)};
  }
  void set_parameters(const std::array<float, 5>& values) {
    for (std::size_t i = 0; i < values.size(); ++i) set_parameter(i, values[i]);
  }
  // The same bytes as ten thresholds of a gear sensor; index: 0 to 9.
  u16 gear_threshold(std::size_t index) const { return get_u16(92 + 2 * index); }
  // Parameters and what stands behind them, offsets 92 to 131.
  void clear_parameters_and_tail() { clear_bytes(92, 40); }
  float user_gain() const { return get_f32(132); }
  void set_user_gain(float value) { put_f32(132, value); }
  float user_offset() const { return get_f32(136); }
  std::string_view formula_view() const { return get_text_view(140, kFormulaWidth); }
  std::string formula() const { return std::string(formula_view()); }
  void set_formula(std::string_view text) { put_text(140, kFormulaWidth, text); }
  std::string second_formula() const { return get_text(396, kFormulaWidth); }
  void set_second_formula(std::string_view text) { put_text(396, kFormulaWidth, text); }
  // 1: written with the current kind of math channels.
  u32 math_generation() const { return get_u32(656); }
  void set_math_generation(u32 value) { put_u32(656, value); }
  // 253 hidden, 255 added; nonzero with first unit byte 11: the descriptor is rewritten to the decimal form.
  u8 descriptor_form() const { return get_u8(661); }
  void set_descriptor_form(u8 value) { put_u8(661, value); }
  bool hidden() const { return descriptor_form() == kHiddenNumber; }
  u16 computation_kind() const { return get_u16(662); }
  void set_computation_kind(u16 value) { put_u16(662, value); }
};

class WmpChannelExtension : public PackedRecord<356> {
 public:
  static constexpr u32 kFunctionGpsSpeed = 95;
  static constexpr u32 kFunctionNeverReference = 97;
  static constexpr u32 kFunctionBounded = 98;

  // Valid when the configuration block says so.
  u32 function_id() const { return get_u32(100); }
  void set_function_id(u32 value) { put_u32(100, value); }
  u32 second_function_id() const { return get_u32(104); }
  void set_second_function_id(u32 value) { put_u32(104, value); }
  bool inverted() const { return get_u8(108) != 0; }
  // A value between two samples is the earlier sample.
  bool stepped() const { return get_u8(110) != 0; }
  bool digit_channel() const { return get_u8(111) != 0; }
  bool whole_numbers() const { return get_u8(112) != 0; }
  i8 decimals() const { return get_i8(113); }
  void set_decimals(i8 value) { put_u8(113, static_cast<u8>(value)); }
  bool decimals_by_name() const { return get_u8(114) != 0; }
  void set_decimals_by_name(bool value) { put_u8(114, value ? 1 : 0); }
};

class WmpLapRecord : public PackedRecord<134> {
 public:
  u32 start_ms() const { return get_u32(0); }
  void set_start_ms(u32 value) { put_u32(0, value); }
  u32 time_ms() const { return get_u32(4); }
  void set_time_ms(u32 value) { put_u32(4, value); }
  i16 number() const { return get_i16(16); }
  void set_number(i16 value) { put_i16(16, value); }
  // Over all logged channels.
  u32 sample_count() const { return get_u32(34); }
  void set_sample_count(u32 value) { put_u32(34, value); }
  u8 kind() const { return get_u8(38); }
  u16 run() const { return get_u16(83); }
  void set_run(u16 value) { put_u16(83, value); }
  bool counts_for_best() const { return get_u16(112) != 0; }
  // Cleared at load when the lap time is 0.
  u32 mark() const { return get_u32(114); }
  void set_mark(u32 value) { put_u32(114, value); }
  u32 true_time_ms() const { return get_u32(118); }
  void set_true_time_ms(u32 value) { put_u32(118, value); }
};

class WmpLapExtension : public PackedRecord<122> {};

class WmpRunRecord : public PackedRecord<4096> {
 public:
  static constexpr std::size_t kNameWidth = 40;
  static constexpr std::size_t kCommentWidth = 250;

  u16 number() const { return get_u16(0); }
  void set_number(u16 value) { put_u16(0, value); }
  i32 first_gear_teeth() const { return get_i32(4); }
  i32 second_gear_teeth() const { return get_i32(8); }
  float wheel_circumference_mm() const { return get_f32(12); }
  void set_wheel_circumference_mm(float value) { put_f32(12, value); }
  std::string name() const { return get_text(67, kNameWidth); }
  void set_name(std::string_view text) { put_text(67, kNameWidth, text); }
  std::string comment() const { return get_text(107, kCommentWidth); }
};

class WmpExtraRecord : public PackedRecord<64> {};

}  // namespace traguardo
