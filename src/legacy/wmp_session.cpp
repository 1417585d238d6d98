// SPDX-License-Identifier: MIT
#include "legacy/wmp_session.h"

#include <atomic>

#include "legacy/derived/regulation_view.h"
#include "legacy/texts/wmp_measure.h"
#include "regulation/calculator.h"
#include "support/platform/platform.h"
#include "units/user_units_manager.h"

namespace traguardo {

WmpSession::WmpSession(std::wstring folder, CSensori* sensors_of_session, CGestMathChan* math_manager)
    : application_folder(std::move(folder)),
      sensors(sensors_of_session),
      math(math_manager),
      units(CUserUnitsOfMeasureMgr::GetInstance()) {}

WmpSession::~WmpSession() = default;

void WmpSession::clear() {
  clear_tables();
  tables = WmpTables();
  file_path.clear();
  file_name.clear();
}

void WmpSession::clear_tables() {
  calculators.reset();
  regulation_view.reset();
  measures.clear();
  tables.channels.clear();
  tables.logged_count = 0;
  tables.laps.clear();
  tables.runs.clear();
  tables.raw_capacity = 0;
  tables.stored_length = 0;
  tables.dump_bytes = 0;
  store.clear();
  distances = DistanceTable();
  all_converted = false;
  cold_junction.reset();
  last_thermocouple.reset();
}

void WmpSession::take_path(const std::wstring& path) {
  file_path = path;
  file_name = path.substr(platform::folder_of(path).size());
}

void WmpSession::rebuild_measures() {
  // Counted over all sessions of the process, so that no two tables ever share a number.
  static std::atomic<u64> tables_made = 0;
  names_version = ++tables_made;
  measures.clear();
  measures.reserve(tables.channels.size());
  for (std::size_t i = 0; i < tables.channels.size(); ++i) {
    measures.push_back(std::make_unique<CWMPMisura>(this, i, 0));
  }
}

bool WmpSession::rebuild_distances() {
  SpeedTrace trace;
  for (std::size_t i = 0; i < tables.channels.size(); ++i) {
    if (!tables.is_reference_speed(i)) continue;
    trace.speeds = store.values(i);
    trace.period_ms = tables.channels[i].statistics.period_ms;
    trace.frequency_hz = tables.channels[i].statistics.frequency_hz;
    trace.is_receiver_speed = tables.is_gps_speed(i);
  }
  trace.metres_per_second = speed_scale;
  trace.units_per_metre = static_cast<float>(units->GetInverseLengthFactor());
  trace.from_receiver_logger = is_receiver_logger(tables.header);
  distances = DistanceTable(make_distance_table(trace), tables.laps);
  return !distances.empty();
}

}  // namespace traguardo
