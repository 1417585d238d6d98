// SPDX-License-Identifier: MIT
#include "legacy/derived/synthesised_channels.h"

#include <cstdio>
#include <iterator>
#include <optional>
#include <string>

#include "legacy/channel_conversion.h"
#include "legacy/derived/derived_channels.h"
#include "legacy/derived/run_calculations.h"
#include "legacy/derived/synthesised_channels_data.h"
#include "legacy/wmp_session.h"
#include "math/math_channel.h"
#include "regulation/calculator.h"
#include "support/event_log.h"
#include "support/platform/platform.h"
#include "units/user_units_manager.h"

namespace traguardo {
namespace {

constexpr u16 kEnginePulseSensor = 0;

// Kinds with a word of their own on the shaft.
constexpr u16 kGearedSpeedKind = 1;
constexpr u16 kCvtKind = 2;
constexpr u16 kDriveKind = 3;
constexpr u16 kAccelerationKind = 4;
constexpr u16 kScaledSpeedKind = 5;

// The channels that the added ones are made of.
struct SourceChannels {
  std::optional<std::size_t> shaft;   // the first one
  std::optional<std::size_t> rpm;     // the first one
  std::optional<std::size_t> speed;   // the last one named so
  std::optional<std::size_t> engine;  // the last one named so
};

SourceChannels find_sources(const WmpSession& session) {
  SourceChannels sources;
  for (std::size_t i = 0; i < session.tables.channels.size(); ++i) {
    const WmpChannelRecord& record = session.tables.channels[i].record;
    if (record.sensor_id() == kShaftSensor && !sources.shaft) sources.shaft = i;
    if (record.sensor_id() == kEnginePulseSensor && !sources.rpm) sources.rpm = i;
    if (record.name_view() == "Speed") sources.speed = i;
    if (record.name_view() == "Engine") sources.engine = i;
  }
  return sources;
}

bool has_needed(const SourceChannels& sources, u8 needs) {
  return ((needs & kNeedsShaft) == 0 || sources.shaft) && ((needs & kNeedsRpm) == 0 || sources.rpm) &&
         ((needs & kNeedsEngine) == 0 || sources.engine);
}

const SynthesisedChannelRow* row_of_kind(u16 kind) {
  for (const SynthesisedChannelRow& row : synthesised_channels()) {
    if (row.kind == kind) return &row;
  }
  return nullptr;
}

// The line number tells whoever reads the log which kind it was, so it stands for itself and not for a line of ours.
void log_refusal(i32 line) {
  if (g_percorso_log == nullptr) return;
  const detail::LogArgument arguments[] = {
      detail::log_argument(std::string_view("CWMP::AssicuraPresenzaCanaleMatematico")), detail::log_argument(line)};
  detail::write_log_line("%s [%d] INFO = ZEP: Wrong math channel insertion attempt!\n\n", arguments,
                         std::size(arguments));
}

// A shaft that was never set up gets the numbers of the usual one.
void mend_shaft(WmpSession& session, std::size_t shaft, u16 kind) {
  constexpr float kUsualPulses = 4.0F;
  constexpr float kHighestRatio = 1000.0F;
  constexpr float kUsualRatio = 40.0F;
  WmpChannelRecord& record = session.tables.channels[shaft].record;
  if (kind == kGearedSpeedKind && record.parameter(1) == 0.0F) record.set_parameter(1, kUsualPulses);
  if (kind == kScaledSpeedKind && record.parameter(0) > kHighestRatio) record.set_parameter(0, kUsualRatio);
}

u16 rate_index_of(const WmpSession& session, const SynthesisedChannelRow& row, const SourceChannels& sources) {
  if (row.rate_index == kRateOfShaft) return session.tables.channels[*sources.shaft].record.rate_index();
  if (row.rate_index == kRateOfEngine) return session.tables.channels[*sources.engine].record.rate_index();
  return static_cast<u16>(row.rate_index);
}

std::string name_of(const WmpSession& session, const std::optional<std::size_t>& channel) {
  return channel ? session.tables.channels[*channel].record.name() : std::string();
}

// For whoever looks at the channel; only kinds 2 and 3 are computed by it.
std::string formula_text(const WmpSession& session, const SynthesisedChannelRow& row, const SourceChannels& sources) {
  constexpr double kGPerMetrePerSecondSquared = 0.1019732;
  if (row.formula == nullptr) return row.name;
  const std::string shaft = name_of(session, sources.shaft);
  const std::string rpm = name_of(session, sources.rpm);
  const ShaftDrive drive = drive_of_session(session);
  char text[SMathChannel::kTextLength + 1] = "";
  switch (row.kind) {
    case kGearedSpeedKind:
      std::snprintf(text, sizeof text, row.formula, shaft.c_str(), drive.low_gear, drive.wheel_mm,
                    static_cast<double>(1.0F / session.speed_scale), drive.high_gear);
      return text;
    case kCvtKind:
      std::snprintf(text, sizeof text, row.formula, rpm.c_str(), shaft.c_str());
      return text;
    case kDriveKind:
      std::snprintf(text, sizeof text, row.formula, rpm.c_str(), shaft.c_str(), rpm.c_str());
      return text;
    case kAccelerationKind:
      std::snprintf(text, sizeof text, row.formula, shaft.c_str(), drive.low_gear, drive.wheel_mm, drive.high_gear,
                    kGPerMetrePerSecondSquared);
      return text;
    case kScaledSpeedKind:
      std::snprintf(text, sizeof text, row.formula, shaft.c_str(),
                    static_cast<double>(session.tables.channels[*sources.shaft].record.parameter(0)));
      return text;
    default:
      return row.formula;
  }
}

SMathChannel make_definition(const WmpSession& session, const SynthesisedChannelRow& row,
                             const SourceChannels& sources) {
  SMathChannel definition;
  definition.name = row.name;
  definition.unit = row.unit == nullptr ? session.units->GetSpeedUnit() : std::string(row.unit);
  definition.enabled = 1;
  definition.flags[0] = row.reference_candidate ? 1 : 0;
  definition.channel_class = row.measure_class;
  definition.frequency_code = rate_index_of(session, row, sources);
  definition.display_minimum = row.display_min;
  definition.display_maximum = row.display_max;
  definition.formula = formula_text(session, row, sources);
  definition.function = static_cast<i32>(row.function);
  definition.sub_function = static_cast<i32>(row.sub_function);
  definition.decimals = i32{row.decimals};
  return definition;
}

}  // namespace

void assure_channel(WmpSession& session, u16 kind, bool compute_now) {
  const SynthesisedChannelRow* row = row_of_kind(kind);
  if (row == nullptr) return log_refusal(kUnknownKindLogLine);
  const SourceChannels sources = find_sources(session);
  if (!has_needed(sources, row->needs)) return log_refusal(row->log_line);
  if (kind == kGearedSpeedKind && sources.speed) return;
  if (sources.shaft) mend_shaft(session, *sources.shaft, kind);

  const SMathChannel definition = make_definition(session, *row, sources);
  std::optional<std::size_t> index = find_derived_channel(session.tables, definition.name);
  if (index) {
    WmpChannelRecord& record = session.tables.channels[*index].record;
    record.set_formula(definition.formula);
    // The calculators fill the channels of a fixed rate side by side, one index for all.
    const bool has_fixed_rate = row->rate_index >= 0;
    if (has_fixed_rate && record.rate_index() != definition.frequency_code) {
      delete_derived_channel(session, *index);
      index.reset();
    }
  }
  if (!index) {
    if (!add_definition(session, definition, kind)) return;
    index = session.tables.channels.size() - 1;
  }
  if (compute_now) convert_channel(session, *index, false);
}

void assure_device_channels(WmpSession& session) {
  for (const DeviceKindRow& row : device_kinds()) {
    if (row.device_code == session.tables.identity.device_code()) assure_channel(session, row.kind, true);
  }
  for (const ConfigurationKindRow& row : configuration_kinds()) {
    const std::wstring path = platform::path_in_folder(session.application_folder, widen_bytes(row.file));
    if (!platform::file_exists(path)) continue;
    if (row.kind == 0) {
      session.calculators->export_channels();
    } else {
      assure_channel(session, row.kind, true);
    }
  }
}

}  // namespace traguardo
