// SPDX-License-Identifier: MIT
// The commands of the command-line host, each in a source file of its name. A command prints to standard output and
// throws Failure where it can't do its work; one that has something to say with its exit status returns that. main.cpp
// gives them their options.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "simulator/simulator.h"

namespace traguardo::tool {

struct InfoOptions {
  std::string file;
  bool recover = false;  // take back a clock that all behind it contradict
  bool json = false;
  bool verbose = false;  // name the derived channels as such
};
void show_info(const InfoOptions& options);

struct LapsOptions {
  std::string file;
  bool recover = false;
  bool json = false;
};
void show_laps(const LapsOptions& options);

struct ChannelsOptions {
  std::string file;
  bool recover = false;
  bool json = false;
};
void show_channels(const ChannelsOptions& options);

struct SamplesOptions {
  std::string file;
  bool recover = false;
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
  bool recover = false;
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

struct ReportOptions {
  std::string file;
  bool recover = false;
  // Parts of the report; none set: all.
  bool channels = false;
  bool laps = false;
  bool gps = false;
  bool gps_samples = false;
  std::vector<std::string> tags;  // NAME=SUFFIX
};
void print_report(const ReportOptions& options);
// Empty for a text that can stand in ReportOptions::tags.
std::string reason_not_a_tag_request(const std::string& text);

struct UnpackOptions {
  std::string file;
  std::string output;  // empty: the file's name, ending in .qlt
};
void unpack_session(const UnpackOptions& options);

struct EvalOptions {
  std::string formula;
  std::string file;
  double rate_hz = 0;  // 0: the highest one among the channels
  bool json = false;
  std::string output;  // empty: standard output
};
// 0, or 1 for a formula that can't be used.
int evaluate_formula(const EvalOptions& options);

struct CheckOptions {
  std::string file;
  // One of them: the configuration file of the boost limit, or of the limiter.
  std::string fia;
  std::string fmi;
};
// 0, or 3 for a session that broke the rule.
int check_session(const CheckOptions& options);

struct PredictOptions {
  std::string file;
  unsigned length_ft = 660;
  int run = 0;          // by its number; 0: the first one
  std::string channel;  // empty: the speed of the session
  std::string tables;   // folder above user/et_prediction/; empty: the user's
};
void predict_run(const PredictOptions& options);

struct SimulateOptions {
  std::string output;
  simulator::SimulationOptions session;
};
void simulate_session(const SimulateOptions& options);

// Writes a whole text to standard output. Throws Failure, as for a full disk behind it.
void print_out(std::string_view text);

}  // namespace traguardo::tool
