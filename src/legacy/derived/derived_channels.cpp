// SPDX-License-Identifier: MIT
#include "legacy/derived/derived_channels.h"

#include <algorithm>
#include <string_view>

#include "legacy/channel_conversion.h"
#include "legacy/derived/math_session.h"
#include "legacy/derived/reference_speed.h"
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

void compute_all_derived(WmpSession& session) {
  for (std::size_t i = session.tables.logged_count; i < session.tables.channels.size(); ++i)
    convert_channel(session, i, false);
}

DerivedComputation computation_of(u16 kind) {
  for (const ComputationKindRow& row : computation_kinds()) {
    if (row.kind == kind) return row.computation;
  }
  return DerivedComputation::kFormula;
}

// The last derived channel of that kind, -1 for none.
i32 last_of_kind(const WmpSession& session, u16 kind) {
  for (std::size_t i = session.tables.channels.size(); i > session.tables.logged_count; --i) {
    if (session.tables.channels[i - 1].record.computation_kind() == kind) return static_cast<i32>(i - 1);
  }
  return -1;
}

void clear_channel(WmpSession& session, i32 index) {
  if (index >= 0) std::ranges::fill(session.store.values(static_cast<std::size_t>(index)), 0.0F);
}

bool compute_boost_limit(WmpSession& session, std::size_t index) {
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
  return session.calculators != nullptr && session.calculators->compute_boost_limit(outputs);
}

bool compute_limiter(WmpSession& session, std::size_t index) {
  clear_channel(session, static_cast<i32>(index));
  return session.calculators != nullptr && session.calculators->compute_limiter(index);
}

bool compute_by_formula(WmpSession& session, std::size_t index) {
  WmpMathSession seen(&session);
  return session.math->ComputeChannel(seen, index);
}

bool compute_by_kind(WmpSession& session, std::size_t index) {
  switch (computation_of(session.tables.channels[index].record.computation_kind())) {
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

bool compute_derived_channel(WmpSession& session, std::size_t index) {
  session.tables.channels[index].update_rate();
  const bool computed = compute_by_kind(session, index);
  if (!computed) std::ranges::fill(session.store.values(index), 0.0F);
  if (session.tables.is_reference_speed(index)) session.rebuild_distances();
  return computed;
}

void enter_math_channels(WmpSession& session) {
  std::optional<std::size_t> candidate;
  bool any = false;
  for (std::size_t i = 0; i < session.math->MathChannelCount(); ++i) {
    const SMathChannel& definition = *session.math->GetMathChannel(i);
    if (definition.enabled != 1) continue;
    if (const std::optional<std::size_t> found = find_derived_channel(session.tables, definition.name)) {
      if (definition.update_existing != 1) continue;
      update_channel(session, *found, definition);
    } else if (!add_definition(session, definition, 0)) {
      continue;
    }
    any = true;
    if (is_reference_candidate(definition) && definition.channel_class == WmpChannelRecord::kClassSpeed) {
      candidate = session.tables.channels.size() - 1;
    }
  }
  if (candidate) set_reference_speed(session, static_cast<i32>(*candidate));
  if (any) compute_all_derived(session);
}

bool add_definition(WmpSession& session, const SMathChannel& definition, u16 kind) {
  WmpTables& tables = session.tables;
  WmpChannelRecord record = new_record(definition.frequency_code, kind);
  WmpChannelExtension extension;
  take_definition(definition, &record, &extension);
  if (!session.store.append(record, extension)) return false;
  session.rebuild_measures();
  if (has_function(definition)) tables.configuration.set_has_function_ids(true);
  if (is_reference_candidate(definition)) {
    const bool is_speed = tables.channels.back().is_speed();
    tables.header.set_reference_speed(is_speed ? static_cast<i16>(tables.channels.size() - 1) : tables.first_speed());
    session.rebuild_distances();
  }
  compute_all_derived(session);
  return true;
}

void update_channel(WmpSession& session, std::size_t index, const SMathChannel& definition) {
  WmpChannel& channel = session.tables.channels[index];
  take_definition(definition, &channel.record, &channel.extension);
  channel.record.clear_parameters_and_tail();
  channel.record.set_computation_kind(0);
  channel.statistics.display_minimum = channel.record.display_minimum();
  channel.statistics.display_maximum = channel.record.display_maximum();
  if (has_function(definition)) session.tables.configuration.set_has_function_ids(true);
  session.tables.changed = true;
  if (channel.record.rate_index() != definition.frequency_code) {
    channel.record.set_rate_index(definition.frequency_code);
    session.store.resize(index);
  }
  session.rebuild_measures();
  convert_channel(session, index, false);
}

bool delete_derived_channel(WmpSession& session, std::size_t index) {
  if (index >= session.tables.channels.size() || !session.tables.is_derived(index)) return false;
  const bool was_reference = session.tables.is_reference_speed(index);
  session.store.remove(index);
  session.rebuild_measures();
  if (was_reference) session.rebuild_distances();
  return true;
}

std::optional<std::size_t> find_derived_channel(const WmpTables& tables, std::string_view name) {
  for (std::size_t i = tables.logged_count; i < tables.channels.size(); ++i) {
    if (equal_apart_from_case(tables.channels[i].record.name_view(), name)) return i;
  }
  return std::nullopt;
}

}  // namespace traguardo
