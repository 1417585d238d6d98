// The commands of the command-line host, each in a source file of its name. A command prints to standard output and
// throws Failure where it can't do its work. main.cpp gives them their options.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "simulator/simulator.h"

namespace traguardo::tool {

struct InfoOptions {
  std::string file;
  bool json = false;
};
void show_info(const InfoOptions& options);

struct LapsOptions {
  std::string file;
  bool json = false;
};
void show_laps(const LapsOptions& options);

struct ChannelsOptions {
  std::string file;
  bool json = false;
};
void show_channels(const ChannelsOptions& options);

struct SamplesOptions {
  std::string file;
  std::string channel;
  bool one_lap = false;
  int lap = 0;
  bool head_only = false;
  int head = 0;
  bool json = false;
};
void show_samples(const SamplesOptions& options);

enum class ExportFormat { csv, gpx, geojson };
struct ExportOptions {
  std::string file;
  std::string output;
  std::vector<std::string> channels;  // empty: all logged and all derived GPS channels
  bool one_lap = false;
  int lap = 0;
  ExportFormat format = ExportFormat::csv;
};
void export_session(const ExportOptions& options);

struct GpsOptions {
  std::string file;
  bool json = false;
};
void show_gps(const GpsOptions& options);

struct SimulateOptions {
  std::string output;
  simulator::SimulationOptions session;
};
void simulate_session(const SimulateOptions& options);

// Writes a whole text to standard output. Throws Failure, as for a full disk behind it.
void print_out(std::string_view text);

}  // namespace traguardo::tool
