// SPDX-License-Identifier: MIT
// The session simulator: writes .qlt, .qlc and .wmp files of a car on a closed circuit. It is the opposite number of
// the reader and shares no code with it, so that an error of one doesn't hide in the other. The command-line host, the
// benchmarks and the tests call it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace traguardo::simulator {

// Which frames carry the samples.
enum class FrameMix {
  mixed,   // each channel as it suits it
  single,  // one frame per sample
  block,   // several samples of one channel per frame
  group,   // one sample of several channels per frame
};

enum class SessionFormat {
  by_name,  // .wmp where the path ends so, else .qlt
  qlt,      // and .qlc
  wmp,
};

// Where a logger's memory dump begins its stream of samples, and how it marks laps.
enum class DumpForm { newer, older };

// A corner, counted from the line on, in which the driver is slower than he could be.
struct SlowCorner {
  int corner = 0;
  double percent = 0;  // of the speed at its apex
};

struct SimulationOptions {
  SessionFormat format = SessionFormat::by_name;
  int laps = 5;                          // marks that close a lap, 1 to 30,000
  int channels = 0;                      // channels that a host sees, up to 60,000; 0 for the usual set
  std::uint64_t seed = 1;                // the same seed gives the same file
  std::optional<std::uint64_t> circuit;  // seed of the circuit, apart from the driver's; usually the same
  std::vector<SlowCorner> slow_corners;
  double fuel_kg = 0;  // at the start; it makes the car slow, and less so from lap to lap
  bool keep_truth = false;
  double minutes = 0;  // length of the session, up to 60,000; 0: as long as the laps take. Above 0 laps don't count
  int damage = 0;      // places behind the channel table where a byte is changed, lost or added; in a .wmp changed
  FrameMix frames = FrameMix::mixed;
  int rate_hz = 0;             // one rate for every channel, a divisor of 1000; 0: each channel its own
  double latitude_deg = 44.5;  // the start line
  double longitude_deg = 11.3;
  double altitude_m = 60.0;
  // Above 0: the circuit is a level circle, driven at a constant speed without any noise in the GPS, so that speed,
  // heading and accelerations are known in closed form.
  double circle_radius_m = 0;
  double circle_speed_mps = 30;
  // Of a .wmp session alone.
  std::optional<int> wmp_version;            // 100, 200, 320, 400, 450, 451, 500, 550, 600 (the usual one) or 700
  std::optional<std::uint32_t> device_code;  // from version 600 on; devices with derived channels get their sensors
  std::optional<DumpForm> dump;              // version 500; usually the newer form
};

struct SimulatedChannel {
  std::string name;
  std::uint16_t index = 0;
  std::uint64_t samples = 0;
};

// How the car really went, without any sensor between.
struct DrivenTruth {
  static constexpr int kStepSegments = 10;
  double length_m = 0;  // of a lap
  double step_m = 0;
  std::vector<double> apexes_m;  // of the corners, from the line
  std::vector<std::vector<double>>
      laps_s;  // of each lap that was driven to its end: moments since its start, a step apart
};

// What the undamaged file holds.
struct SimulationSummary {
  std::vector<SimulatedChannel> channels;  // without those that carry packets
  std::vector<std::uint32_t> lap_times_ms;
  std::uint64_t samples = 0;
  std::uint64_t frames = 0;
  std::uint64_t gps_records = 0;
  std::uint64_t bytes = 0;  // before damage and compression
  double duration_s = 0;
  DrivenTruth truth;  // for SimulationOptions::keep_truth; not of a .wmp
};

// Writes a session to `path`, compressed where the path ends in .qlc; beside a .wmp its .jts, the GPS trace. On failure
// gives false and a line for a person in `error`, and leaves nothing behind.
bool simulate_to_file(const SimulationOptions& options, const std::string& path, std::string& error,
                      SimulationSummary* summary = nullptr);

}  // namespace traguardo::simulator
