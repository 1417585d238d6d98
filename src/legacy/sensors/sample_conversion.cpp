// SPDX-License-Identifier: MIT
#include "legacy/sensors/sample_conversion.h"

#include <algorithm>
#include <array>

#include "legacy/sensors/raw_word.h"

namespace traguardo {
namespace {

constexpr std::array<float, 256> kDigitsOfByte = [] {
  std::array<float, 256> digits{};
  for (u32 byte = 0; byte < digits.size(); ++byte) {
    u32 number = 0;
    u32 place = 1;
    for (u32 bit = 8; bit-- > 0;) {
      if (((byte >> bit) & 1) == 0) continue;
      number += (bit + 1) * place;
      place *= 10;
    }
    digits[byte] = static_cast<float>(number);
  }
  return digits;
}();
static_assert(kDigitsOfByte[0xA0] == 68.0F && kDigitsOfByte[0xFF] == 12345678.0F);

bool is_imperial(StoredQuantity quantity, SystemChoices choices) {
  switch (quantity) {
    case StoredQuantity::kTemperature:
      return choices.imperial_temperature;
    case StoredQuantity::kPressure:
      return choices.imperial_pressure;
    case StoredQuantity::kSpeed:
    case StoredQuantity::kSmallLength:
      return choices.imperial_speed;
    case StoredQuantity::kVoltage:
    case StoredQuantity::kVolume:
    case StoredQuantity::kRotation:
      return false;
  }
  return false;
}

template <typename Change>
void change_each(std::span<float> values, Change change) {
  for (float& value : values) value = change(value);
}

void apply_unit_step(UnitStep step, float number, std::span<float> values) {
  switch (step) {
    case UnitStep::kNone:
      return;
    case UnitStep::kMultiply:
      return change_each(values, [=](float v) { return v * number; });
    case UnitStep::kDivide:
      return change_each(values, [=](float v) { return v / number; });
    case UnitStep::kToFahrenheit:
      return change_each(values, [](float v) { return v * 9.0F / 5.0F + 32.0F; });
    case UnitStep::kToCelsius:
      return change_each(values, [](float v) { return (v - 32.0F) * 5.0F / 9.0F; });
  }
}

}  // namespace

void copy_raw_words(std::span<const u16> raw, std::span<float> values) {
  std::transform(raw.begin(), raw.end(), values.begin(), [](u16 word) { return unsigned_word(word); });
}

void decode_digits(std::span<const u16> raw, std::span<float> values) {
  std::transform(raw.begin(), raw.end(), values.begin(), [](u16 word) { return kDigitsOfByte[word & 0xFF]; });
}

const StoredUnitRow* find_stored_unit(std::string_view unit) {
  for (const StoredUnitRow& row : stored_units()) {
    if (row.unit == unit) return &row;
  }
  return nullptr;
}

ChannelUnitKind channel_unit_kind(StoredQuantity quantity) {
  switch (quantity) {
    case StoredQuantity::kTemperature:
      return ChannelUnitKind::kTemperature;
    case StoredQuantity::kSpeed:
      return ChannelUnitKind::kSpeed;
    case StoredQuantity::kSmallLength:
      return ChannelUnitKind::kLength;
    case StoredQuantity::kVoltage:
      return ChannelUnitKind::kVoltage;
    case StoredQuantity::kPressure:
      return ChannelUnitKind::kPressure;
    case StoredQuantity::kVolume:
      return ChannelUnitKind::kVolume;
    case StoredQuantity::kRotation:
      break;
  }
  return ChannelUnitKind::kAngularSpeed;
}

const StoredUnitRuleRow* find_stored_unit_rule(std::string_view unit, std::string_view wanted, SystemChoices choices) {
  const StoredUnitRow* stored = find_stored_unit(unit);
  if (stored == nullptr) return nullptr;
  UnitRule rule = UnitRule::kTarget;
  if (wanted.empty()) {
    rule = is_imperial(stored->quantity, choices) ? UnitRule::kNoTargetImperial : UnitRule::kNoTargetMetric;
  }
  for (const StoredUnitRuleRow& row : stored_unit_rules()) {
    if (row.unit == unit && row.rule == rule && (rule != UnitRule::kTarget || row.target == wanted)) return &row;
  }
  return nullptr;
}

void apply_stored_unit_rule(const StoredUnitRuleRow& rule, std::span<float> values) {
  apply_unit_step(rule.first_step, rule.first, values);
  apply_unit_step(rule.second_step, rule.second, values);
}

void add_cold_junction(std::span<float> values, u32 period_ms, std::span<const float> junction, u32 junction_period_ms,
                       u32 duration_ms, float zero) {
  if (junction_period_ms == 0) return;
  u64 time_ms = 0;
  for (std::size_t i = 0; i < values.size() && time_ms < duration_ms; ++i, time_ms += period_ms) {
    const u64 index = time_ms / junction_period_ms;
    if (index >= junction.size()) return;
    values[i] = values[i] + (junction[static_cast<std::size_t>(index)] - zero);
  }
}

void repair_flat_runs(std::span<float> values, u32 period_ms) {
  if (period_ms == 0) return;
  const std::size_t window = 2000 / period_ms;
  if (window <= 1 || values.size() <= window) return;
  const std::size_t end = values.size() - window;
  std::size_t start = 0;
  while (start < end) {
    const float level = values[start];
    if (level == 0.0F) {
      ++start;
      continue;
    }
    std::size_t behind = start + 1;
    while (behind < values.size() && values[behind] == level) ++behind;
    const std::size_t length = behind - start;
    if (length >= window) {
      // Each start with a whole window of equal samples behind it is passed over; the run's last ones are a shorter
      // run.
      start = behind - window + 1;
      continue;
    }
    // A run below the window that starts in front of `end` has a value behind it.
    if (length >= 2) {
      const float rise = values[behind] - level;
      for (std::size_t j = 1; j < length; ++j) {
        values[start + j] = static_cast<float>(j) * rise / static_cast<float>(length) + level;
      }
    }
    start = behind;
  }
}

void apply_gain_and_offset(std::span<float> values, float gain, float offset) {
  change_each(values, [=](float v) { return v * gain + offset; });
}

void invert_values(std::span<float> values) {
  change_each(values, [](float v) { return v * -1.0F; });
}

i32 smoothing_passes(u16 filter_word) {
  constexpr u16 kSwitchedOff = 1 << 10;
  constexpr i32 kMostPasses = 10;
  if ((filter_word & kSwitchedOff) != 0) return 0;
  const i32 low_bits = filter_word & 0x1F;
  const i32 passes = low_bits < 0x10 ? low_bits : low_bits - 0x20;
  return passes >= 1 && passes <= kMostPasses ? passes : 0;
}

ValueStatistics value_statistics(std::span<const float> values, bool bounded) {
  constexpr float kNoMinimum = 9.0e12F;
  constexpr float kNoMaximum = -9.0e12F;
  ValueStatistics statistics{kNoMinimum, 0.0F, kNoMaximum};
  float sum = 0.0F;
  for (const float value : values) {
    if (value < statistics.minimum && (!bounded || value > 0.0F)) statistics.minimum = value;
    if (value > statistics.maximum) statistics.maximum = value;
    if (!bounded || value < 2.5F) sum = sum + value;
  }
  if (bounded && statistics.minimum == kNoMinimum) statistics.minimum = 0.0F;
  if (bounded && statistics.maximum == kNoMaximum) statistics.maximum = 0.0F;
  if (!values.empty()) statistics.mean = sum / static_cast<float>(values.size());
  return statistics;
}

}  // namespace traguardo
