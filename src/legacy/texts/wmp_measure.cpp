// SPDX-License-Identifier: MIT
#include "legacy/texts/wmp_measure.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <optional>

#include "legacy/channel_conversion.h"
#include "legacy/sensors/sample_conversion.h"
#include "legacy/sensors/sensor_database.h"
#include "legacy/sensors/sensors.h"
#include "legacy/sensors/stored_units_data.h"
#include "legacy/sensors/unit_descriptor.h"
#include "legacy/texts/measure_data.h"
#include "legacy/wmp_session.h"
#include "support/event_log.h"
#include "units/user_units_manager.h"

namespace traguardo {
namespace {

// First byte of a unit field that is a descriptor.
constexpr u8 kDecimalForm = 9;
constexpr u8 kPackedForm = 11;
// Sensors that have a rule of their own.
constexpr u16 kNumberSensor = 600;
constexpr u16 kGearThresholdSensor = 90;
constexpr std::size_t kMarkParameter = 2;

std::atomic<std::size_t> g_living_measures = 0;

std::optional<StoredQuantity> quantity_of(const std::string& unit) {
  const StoredUnitRow* row = find_stored_unit(unit);
  return row == nullptr ? std::nullopt : std::optional(row->quantity);
}

const ParameterLabelRow* label_row(u8 parameter, u16 sensor_id) {
  for (const ParameterLabelRow& row : parameter_labels()) {
    if (row.parameter == parameter && row.sensor_id == sensor_id) return &row;
  }
  return nullptr;
}

const SetterRow* setter_row(u8 operation, u16 sensor_id) {
  for (const SetterRow& row : setters()) {
    if (row.operation == operation && row.sensor_id == sensor_id) return &row;
  }
  return nullptr;
}

// What a setter makes of the parameters.
void apply_setter(const SetterRow& row, float value, float small_length_factor, std::array<float, 5>* parameters) {
  std::array<float, 5>& p = *parameters;
  const bool was_recalibrated = p[kMarkParameter] == kRecalibrated;
  switch (row.effect) {
    case SetterEffect::kPulses:
      if (!(value >= 0.0F && value <= 6.0F)) break;
      if (value == p[0]) {
        p[kMarkParameter] = 0.0F;
      } else {
        p[row.parameter] = value;
        p[kMarkParameter] = kRecalibrated;
      }
      break;
    case SetterEffect::kCircumference:
      p[row.parameter] = std::max(value * small_length_factor, 10.0F);
      p[kMarkParameter] = kRecalibrated;
      if (!was_recalibrated) p[4] = p[1];
      break;
    case SetterEffect::kMagnets:
      p[row.parameter] = std::trunc(std::max(value, 1.0F));
      p[kMarkParameter] = kRecalibrated;
      if (!was_recalibrated) p[3] = p[0];
      break;
    case SetterEffect::kParameter:
      p[row.parameter] = value;
      break;
    case SetterEffect::kAtLeastZero:
      p[row.parameter] = std::max(value, 0.0F);
      break;
    case SetterEffect::kAtMostZero:
      p[row.parameter] = std::min(value, 0.0F);
      break;
  }
}

}  // namespace

CWMPMisura::CWMPMisura(WmpSession* owner, std::size_t index, u32 kept) : owner_(owner), index_(index), kept_(kept) {
  rewrite_unit_field();
  unit_text_ = widen_bytes(make_unit_text());
  decimals_ = make_decimals();
  format_text_ = L"%." + std::to_wstring(decimals_) + L"f";
  owner_->tables.channels[index_].statistics.decimals = decimals_;
  ++g_living_measures;
}

CWMPMisura::~CWMPMisura() {
  --g_living_measures;
}

std::size_t CWMPMisura::living() {
  return g_living_measures;
}

u32 CWMPMisura::period_ms() const {
  return owner_->tables.channels[index_].statistics.period_ms;
}
u32 CWMPMisura::frequency_hz() const {
  return owner_->tables.channels[index_].statistics.frequency_hz;
}
std::span<const float> CWMPMisura::values() const {
  return owner_->store.values(index_);
}
const WmpChannelRecord& CWMPMisura::record() const {
  return owner_->tables.channels[index_].record;
}

// Older records packed a unit that the decimal form names since; the sensors concerned are known one by one.
void CWMPMisura::rewrite_unit_field() {
  WmpChannelRecord& changed = owner_->tables.channels[index_].record;
  u8* field = changed.unit_bytes();
  if (changed.descriptor_form() == 0 || field[0] != kPackedForm) return;
  if (changed.sensor_id() == kNumberSensor) {
    const u16 packed = load_u16(field + 1);
    field[0] = kDecimalForm;
    if ((packed & 0x0FFF) == 0x320) std::memcpy(field + 1, "0800", 4);
    const int decimals = packed >> 12;
    if (decimals == 0 || decimals == 3 || decimals == 5) field[5] = static_cast<u8>('0' + decimals);
    std::memset(field + 6, 0, 4);
    return;
  }
  for (const RewrittenUnitRow& row : rewritten_units()) {
    if (row.sensor_id != changed.sensor_id()) continue;
    field[0] = kDecimalForm;
    std::memcpy(field + 1, row.digits, 5);
    std::memset(field + 6, 0, 4);
    return;
  }
}

std::string CWMPMisura::make_unit_text() const {
  const IUserUnitOfMeasureManager& units = *owner_->units;
  const UnitDescriptor descriptor = read_unit_descriptor(record().unit_field());
  const CDBSensori& data_base = owner_->sensors->data_base();
  const SensorScale* const known = data_base.scale(sensor_id());
  if (descriptor.valid && known != nullptr) {
    const u8 family = known->family;
    u32 unit_id = descriptor.unit_id;
    if (family == kTemperatureFamily) unit_id = static_cast<u32>(units.GetTemperatureCode());
    if (family == kSpeedFamily) unit_id = static_cast<u32>(units.GetDistanceCode());
    const std::optional<u8> code = data_base.unit_code(unit_id);
    return code.has_value() ? std::string(data_base.unit_text(*code)) : std::string();
  }
  std::string stored = record().unit_text();
  const SensorTraits traits = find_sensor(sensor_id()).traits;
  switch (traits.unit) {
    case MeasureUnit::kFixed:
      return traits.unit_text;
    case MeasureUnit::kUserSpeed:
      return units.GetSpeedUnit();
    case MeasureUnit::kUserTemperature:
      return units.GetTemperatureUnit();
    case MeasureUnit::kUserPressure:
      return units.GetPressureUnit();
    case MeasureUnit::kByQuantity:
      return stored_unit_text(stored);
    case MeasureUnit::kAsStored:
      break;
  }
  return stored;
}

// The unit that the conversion brings a stored unit to. The system has no unit of voltage, volume and rotation, so such
// a channel stays what it is.
std::string CWMPMisura::stored_unit_text(const std::string& stored) const {
  const std::optional<StoredQuantity> quantity = quantity_of(stored);
  if (!quantity.has_value()) return stored;
  const IUserUnitOfMeasureManager& units = *owner_->units;
  std::string chosen = units.GetChannelUnit(channel_unit_kind(*quantity), name());
  if (!chosen.empty()) return chosen;
  switch (*quantity) {
    case StoredQuantity::kTemperature:
      return units.GetTemperatureUnit();
    case StoredQuantity::kSpeed:
      return units.GetSpeedUnit();
    case StoredQuantity::kSmallLength:
      return units.GetSmallLengthUnit();
    case StoredQuantity::kPressure:
      return units.GetPressureUnit();
    case StoredQuantity::kVoltage:
    case StoredQuantity::kVolume:
    case StoredQuantity::kRotation:
      break;
  }
  return stored;
}

// Digits behind the point. Nothing outside a measure shows them, so a sensor without a word of its own gets one digit.
i32 CWMPMisura::make_decimals() const {
  constexpr i32 kMostDecimals = 9;
  const WmpChannelExtension& extension = owner_->tables.channels[index_].extension;
  if (extension.digit_channel() || extension.whole_numbers()) return 0;
  if (extension.decimals_by_name()) return std::clamp<i32>(extension.decimals(), 0, kMostDecimals);
  const UnitDescriptor descriptor = read_unit_descriptor(record().unit_field());
  if (descriptor.valid) return std::clamp<i32>(descriptor.decimals, 0, 3);
  const std::wstring whole[] = {L"rpm", L"#"};
  return std::find(std::begin(whole), std::end(whole), unit_text_) != std::end(whole) ? 0 : 1;
}

std::string CWMPMisura::parameter_label(u8 parameter) const {
  if (sensor_id() == kGearThresholdSensor && parameter < 5) {
    const std::size_t first = std::size_t{2} * parameter;
    char text[64];
    std::snprintf(text, sizeof text, kGearLabelFormat, static_cast<int>(first),
                  static_cast<int>(record().gear_threshold(first)), static_cast<int>(first + 1),
                  static_cast<int>(record().gear_threshold(first + 1)));
    return text;
  }
  const ParameterLabelRow* row = label_row(parameter, sensor_id());
  if (row == nullptr) return kUnusedParameterText;
  const bool imperial = row->imperial_text != nullptr && owner_->units->IsLengthImperial();
  return imperial ? row->imperial_text : row->text;
}

std::string CWMPMisura::parameter_label_id(u8 parameter) const {
  const ParameterLabelRow* row = label_row(parameter, sensor_id());
  if (row == nullptr) return kUnusedParameterId;
  const bool imperial = row->imperial_id != nullptr && owner_->units->IsLengthImperial();
  return imperial ? row->imperial_id : row->id;
}

bool CWMPMisura::set_parameter(u8 operation, float value) {
  const SetterRow* row = setter_row(operation, sensor_id());
  if (row == nullptr) {
    for (const SetterRefusalRow& refusal : setter_refusals()) {
      if (refusal.operation != operation) continue;
      TRAGUARDO_LOG(refusal.function, refusal.line, sensor_id());
      if (refusal.converts) convert_channel(*owner_, index_, false);
    }
    return false;
  }
  WmpChannelRecord& changed = owner_->tables.channels[index_].record;
  std::array<float, 5> parameters = changed.parameters();
  apply_setter(*row, value, static_cast<float>(owner_->units->GetSmallLengthFactor()), &parameters);
  changed.set_parameters(parameters);
  owner_->tables.changed = true;
  convert_channel(*owner_, index_, false);
  return true;
}

}  // namespace traguardo
