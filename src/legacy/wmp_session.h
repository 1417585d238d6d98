// SPDX-License-Identifier: MIT
// A legacy session while it is read, as one struct of parts: the tables, the samples, the distances made of them, and
// what is borrowed from outside. Lives for one CParserWMP::ParsaFile, in its CWMP. What converts, derives and shows
// channels are functions over it (channel_conversion.h, derived/, texts/).
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "legacy/channel_store.h"
#include "legacy/derived/distance_table.h"
#include "legacy/file/wmp_tables.h"

namespace traguardo {

class CGestMathChan;
class CSensori;
class CWMPMisura;
class IUserUnitOfMeasureManager;
class RegulationCalculator;
class RegulationView;

struct WmpSession {
  WmpSession(std::wstring folder, CSensori* sensors_of_session, CGestMathChan* math_manager);
  ~WmpSession();
  WmpSession(const WmpSession&) = delete;
  WmpSession& operator=(const WmpSession&) = delete;

  // Back to what a new session is; the surroundings stay.
  void clear();
  // Tables and samples and what is made of them.
  void clear_tables();
  void take_path(const std::wstring& path);
  // The measure list, made anew over the table as it stands. Due after every change of the channel table.
  void rebuild_measures();
  // From the reference speed, with the rows of the laps. False, and no distances, without a speed that moves.
  bool rebuild_distances();

  WmpTables tables;
  ChannelStore store{&tables};
  DistanceTable distances;
  std::vector<std::unique_ptr<CWMPMisura>> measures;
  // Another number after every change of the channel table; 0 before there is one.
  u64 names_version = 0;
  std::unique_ptr<RegulationView> regulation_view;
  // From the first conversion on; sees this session through the view, and keeps nothing of the channel table from call
  // to call.
  std::unique_ptr<RegulationCalculator> calculators;

  // Metres per second per display unit of speed.
  float speed_scale = 0.0F;
  bool all_converted = false;
  // The logged channel that thermocouples refer to, once one has asked for it; logged_count for none.
  std::optional<std::size_t> cold_junction;
  // The last thermocouple that was converted, while the file is loaded.
  std::optional<std::size_t> last_thermocouple;
  bool repairs = true;

  std::wstring application_folder;  // without a trailing slash
  std::wstring file_path;
  std::wstring file_name;

  // Borrowed.
  CSensori* sensors;
  CGestMathChan* math;
  IUserUnitOfMeasureManager* units;
};

}  // namespace traguardo
