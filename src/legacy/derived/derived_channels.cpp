// Channels without raw words: how a definition becomes a row of the channel table, and what computes its values.
#include <algorithm>
#include <optional>
#include <string_view>

#include "legacy/derived/math_session.h"
#include "legacy/derived/run_calculations.h"
#include "legacy/derived/synthesised_channels_data.h"
#include "legacy/wmp_session.h"
#include "math/math_channel.h"
#include "math/math_channel_manager.h"
#include "regulation/calculator.h"

namespace traguardo {
namespace {

// What takes the place of a sensor in a channel that nothing measured.
constexpr u16 kDerivedSensor = 71;
// Kinds of the boost limit's outputs, in the order of BoostOutputs.
constexpr u16 kLimitKind = 7;
constexpr u16 kValueKind = 8;
constexpr u16 kIntegralKind = 9;
constexpr u16 kLowCounterKind = 10;
constexpr u16 kHighCounterKind = 11;

bool is_reference_candidate(const SMathChannel& definition) {
  return definition.flags[0] != 0;
}

bool has_function(const SMathChannel& definition) {
  return definition.function != 0 || definition.sub_function != 0;
}

char lower_case(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool equal_apart_from_case(std::string_view one, std::string_view other) {
  return std::ranges::equal(one, other, [](char a, char b) { return lower_case(a) == lower_case(b); });
}

// What a definition says of its channel, new or old, but for the rate.
void take_definition(const SMathChannel& definition, WmpChannelRecord* record, WmpChannelExtension* extension) {
  constexpr i32 kMostDecimals = 127;
  record->set_name(std::string_view(definition.name).substr(0, SMathChannel::kNameLength));
  record->set_unit_text(std::string_view(definition.unit).substr(0, SMathChannel::kUnitLength));
  record->set_filter_word(definition.filter_word);
  record->set_measure_class(definition.channel_class);
  record->set_display_minimum(definition.display_minimum);
  record->set_display_maximum(definition.display_maximum);
  record->set_formula(std::string_view(definition.formula).substr(0, SMathChannel::kTextLength));
  record->set_second_formula(std::string_view(definition.description).substr(0, SMathChannel::kTextLength));
  extension->set_decimals_by_name(true);
  extension->set_decimals(static_cast<i8>(std::clamp(definition.decimals, 0, kMostDecimals)));
  // A definition without a function says nothing of it: the channel keeps the one that the file gave it.
  if (!has_function(definition)) return;
  extension->set_function_id(static_cast<u32>(definition.function));
  extension->set_second_function_id(static_cast<u32>(definition.sub_function));
}

WmpChannelRecord new_record(u16 rate_index, u16 kind) {
  WmpChannelRecord record;
  record.set_first_word(1);
  record.set_second_word(1);
  record.set_origin(kind == 0 ? WmpChannelRecord::kOriginFormula : WmpChannelRecord::kOriginSynthesised);
  record.set_sensor_id(kDerivedSensor);
  record.set_rate_index(rate_index);
  record.set_user_gain(1.0F);
  record.set_math_generation(1);
  record.set_descriptor_form(WmpChannelRecord::kAddedNumber);
  record.set_computation_kind(kind);
  return record;
}

i16 first_speed_channel(const CWMP& session) {
  for (std::size_t i = 0; i < session.channel_count(); ++i) {
    if (session.channel(i).measure_class() == WmpChannelRecord::kClassSpeed) return static_cast<i16>(i);
  }
  return -1;
}

void compute_all_derived(CWMP& session) {
  for (std::size_t i = session.logged_count(); i < session.channel_count(); ++i) session.ConvertiCanale(i, false);
}

DerivedComputation computation_of(u16 kind) {
  for (const ComputationKindRow& row : computation_kinds()) {
    if (row.kind == kind) return row.computation;
  }
  return DerivedComputation::kFormula;
}

// The last derived channel of that kind, -1 for none.
i32 last_of_kind(const CWMP& session, u16 kind) {
  for (std::size_t i = session.channel_count(); i > session.logged_count(); --i) {
    if (session.channel(i - 1).computation_kind() == kind) return static_cast<i32>(i - 1);
  }
  return -1;
}

void clear_channel(CWMP& session, i32 index) {
  if (index >= 0) std::ranges::fill(session.values(static_cast<std::size_t>(index)), 0.0F);
}

bool compute_boost_limit(CWMP& session, std::size_t index) {
  BoostOutputs outputs;
  outputs.flag = static_cast<i32>(index);
  outputs.limit = last_of_kind(session, kLimitKind);
  outputs.value = last_of_kind(session, kValueKind);
  outputs.integral = last_of_kind(session, kIntegralKind);
  outputs.low_counter = last_of_kind(session, kLowCounterKind);
  outputs.high_counter = last_of_kind(session, kHighCounterKind);
  for (const i32 output :
       {outputs.flag, outputs.limit, outputs.value, outputs.integral, outputs.low_counter, outputs.high_counter}) {
    clear_channel(session, output);
  }
  return session.calculators() != nullptr && session.calculators()->compute_boost_limit(outputs);
}

bool compute_limiter(CWMP& session, std::size_t index) {
  clear_channel(session, static_cast<i32>(index));
  return session.calculators() != nullptr && session.calculators()->compute_limiter(index);
}

bool compute_by_formula(CWMP& session, std::size_t index) {
  WmpMathSession seen(&session);
  return session.math_manager()->ComputeChannel(seen, index);
}

bool compute_by_kind(CWMP& session, std::size_t index) {
  switch (computation_of(session.channel(index).computation_kind())) {
    case DerivedComputation::kFormula:
      return compute_by_formula(session, index);
    case DerivedComputation::kGearedSpeed:
      return compute_geared_speed(session, index);
    case DerivedComputation::kAcceleration:
      return compute_acceleration(session, index);
    case DerivedComputation::kScaledSpeed:
      return compute_scaled_speed(session, index);
    case DerivedComputation::kBoostLimit:
      return compute_boost_limit(session, index);
    case DerivedComputation::kLimiter:
      return compute_limiter(session, index);
    case DerivedComputation::kNothing:
      return true;
  }
  return false;
}

}  // namespace

bool CWMP::compute_derived_channel(std::size_t index) {
  update_rate(index);
  const bool computed = compute_by_kind(*this, index);
  if (!computed) std::ranges::fill(values(index), 0.0F);
  if (reference_speed() >= 0 && static_cast<std::size_t>(reference_speed()) == index) rebuild_distance_table();
  return computed;
}

void CWMP::enter_math_channels() {
  std::optional<std::size_t> candidate;
  bool any = false;
  for (std::size_t i = 0; i < math_->MathChannelCount(); ++i) {
    const SMathChannel& definition = *math_->GetMathChannel(i);
    if (definition.enabled != 1) continue;
    const std::size_t found = find_derived_channel(definition.name);
    if (found < channels_.size()) {
      if (definition.update_existing != 1) continue;
      update_channel(found, definition);
    } else if (!add_definition(definition, 0)) {
      continue;
    }
    any = true;
    if (is_reference_candidate(definition) && definition.channel_class == WmpChannelRecord::kClassSpeed) {
      candidate = channels_.size() - 1;
    }
  }
  if (candidate) set_reference_speed(static_cast<i32>(*candidate));
  if (any) compute_all_derived(*this);
}

bool CWMP::add_definition(const SMathChannel& definition, u16 kind) {
  WmpChannelRecord record = new_record(definition.frequency_code, kind);
  WmpChannelExtension extension;
  take_definition(definition, &record, &extension);
  if (!append_channel(record, extension)) return false;
  if (has_function(definition)) set_function_ids_present();
  if (is_reference_candidate(definition)) {
    const bool is_speed = definition.channel_class == WmpChannelRecord::kClassSpeed;
    header_.set_reference_speed(is_speed ? static_cast<i16>(channels_.size() - 1) : first_speed_channel(*this));
    rebuild_distance_table();
  }
  compute_all_derived(*this);
  return true;
}

void CWMP::update_channel(std::size_t index, const SMathChannel& definition) {
  WmpChannelRecord& record = channels_[index];
  take_definition(definition, &record, &extensions_[index]);
  record.clear_parameters_and_tail();
  record.set_computation_kind(0);
  statistics_[index].display_minimum = record.display_minimum();
  statistics_[index].display_maximum = record.display_maximum();
  if (has_function(definition)) set_function_ids_present();
  mark_changed();
  if (record.rate_index() != definition.frequency_code) {
    record.set_rate_index(definition.frequency_code);
    resize_derived_channel(index);
  } else {
    rebuild_measures();
  }
  ConvertiCanale(index, false);
}

bool CWMP::delete_derived_channel(std::size_t index) {
  if (index >= channels_.size() || !is_derived(index)) return false;
  const bool was_reference = reference_speed() >= 0 && static_cast<std::size_t>(reference_speed()) == index;
  remove_channel(index);
  if (was_reference) rebuild_distance_table();
  return true;
}

std::size_t CWMP::find_derived_channel(std::string_view name) const {
  for (std::size_t i = logged_count_; i < channels_.size(); ++i) {
    if (equal_apart_from_case(channels_[i].name_view(), name)) return i;
  }
  return channels_.size();
}

}  // namespace traguardo
