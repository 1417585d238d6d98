// SPDX-License-Identifier: MIT
// traguardo simulate: a session of a simulated car.
#include <fmt/format.h>

#include <charconv>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "command.h"
#include "failure.h"
#include "inputs.h"
#include "json_output.h"
#include "output_file.h"
#include "print_out.h"
#include "simulator/simulator.h"

namespace traguardo::tool {

namespace {

struct SimulateOptions {
  std::string output;
  simulator::SimulationOptions session;
  std::vector<std::string> slow_corners;  // CORNER=PERCENT
  std::uint64_t circuit = 0;
  std::string truth;  // file for how the car really went; empty: none
};

std::optional<simulator::SlowCorner> slow_corner(const std::string& text) {
  simulator::SlowCorner slow;
  const char* const end = text.data() + text.size();
  const auto [sign, problem] = std::from_chars(text.data(), end, slow.corner);
  if (problem != std::errc() || sign == end || *sign != '=') return std::nullopt;
  const auto [rest, worse] = std::from_chars(sign + 1, end, slow.percent);
  return worse == std::errc() && rest == end ? std::optional(slow) : std::nullopt;
}

std::string reason_not_a_slow_corner(const std::string& text) {
  return slow_corner(text) ? "" : "not CORNER=PERCENT, as 3=8: " + text;
}

void write_truth(const std::string& path, const simulator::DrivenTruth& truth) {
  Json json;
  json["length_m"] = truth.length_m;
  json["step_m"] = truth.step_m;
  json["apexes_m"] = truth.apexes_m;
  json["laps_s"] = truth.laps_s;
  OutputFile out(path);
  out.write(to_line(json) + "\n");
  out.keep();
}

void simulate_session(const SimulateOptions& options) {
  if (!options.truth.empty()) refuse_equal_outputs({options.output, options.truth});
  std::string error;
  simulator::SimulationSummary summary;
  if (!simulator::simulate_to_file(options.session, options.output, error, &summary)) throw Failure(error);
  if (!options.truth.empty()) write_truth(options.truth, summary.truth);
  if (options.output == "-") return;
  print_out(fmt::format("{}: {} laps, {} channels, {} samples, {:.1f} s, {} bytes\n", options.output,
                        summary.lap_times_ms.size(), summary.channels.size(), summary.samples, summary.duration_s,
                        summary.bytes));
}

simulator::FrameMix frame_mix(const std::string& name) {
  if (name == "single") return simulator::FrameMix::single;
  if (name == "block") return simulator::FrameMix::block;
  if (name == "group") return simulator::FrameMix::group;
  return simulator::FrameMix::mixed;
}

// What only the session of an older logger has, and which of it was given.
struct LegacyOptions {
  std::string format;
  int version = 0;
  Option version_given;
  std::uint32_t device_code = 0;
  Option device_given;
  std::string dump;
};

void add_legacy_options(Command& command, LegacyOptions& options) {
  command.add("--format", options.format, "Kind of session (default: by the name of the file)").one_of({"qlt", "wmp"});
  options.version_given =
      command.add("--version", options.version,
                  "Version of a .wmp file: 100, 200, 320, 400, 450, 451, 500, 550, 600 (default) or 700");
  options.device_given =
      command.add("--device-code", options.device_code,
                  "Device that wrote a .wmp file, from version 600 on; 48 and 18 make a reader add channels");
  command.add("--dump", options.dump, "Form of the dump in a .wmp file of version 500 (default: new)")
      .one_of({"old", "new"});
}

void take_legacy_options(const LegacyOptions& options, simulator::SimulationOptions& session) {
  if (options.format == "qlt") session.format = simulator::SessionFormat::qlt;
  if (options.format == "wmp") session.format = simulator::SessionFormat::wmp;
  if (options.version_given.is_given()) session.wmp_version = options.version;
  if (options.device_given.is_given()) session.device_code = options.device_code;
  if (options.dump == "old") session.dump = simulator::DumpForm::older;
  if (options.dump == "new") session.dump = simulator::DumpForm::newer;
}

}  // namespace

void add_simulate_command(CLI::App& app, int& /*status*/) {
  Command command(app, "simulate", "Write a session of a simulated car on a circuit");
  const auto options = std::make_shared<SimulateOptions>();
  const auto frames = std::make_shared<std::string>("mixed");
  simulator::SimulationOptions& session = options->session;
  command.add_output(options->output, "File to write; a name in .qlc is compressed, one in .wmp an older logger's")
      .required();
  command.add("--laps", session.laps, "Number of laps").shows_default();
  command.add("--channels", session.channels, "Number of channels (default: the usual set)");
  command.add("--seed", session.seed, "The same seed gives the same file").shows_default();
  command.add("--minutes", session.minutes, "Length of the session, instead of a number of laps");
  command.add("--damage", session.damage, "Places where a byte is changed, lost or added (.wmp: changed)");
  command.add("--rate", session.rate_hz, "One rate in Hz for all channels, a divisor of 1000");
  command.add("--frames", *frames, "Which frames carry the samples")
      .one_of({"mixed", "single", "block", "group"})
      .shows_default();
  const Option circuit = command.add("--circuit", options->circuit, "Seed of the circuit (default: that of --seed)");
  command
      .add("--slow", options->slow_corners,
           "CORNER=PERCENT: the driver is slower in this corner, counted from 1; may be repeated")
      .check(reason_not_a_slow_corner);
  command.add("--fuel", session.fuel_kg, "Kilograms of fuel at the start, which slow the car less from lap to lap");
  command.add("--truth", options->truth, "File to write as JSON: when the car really was where in each lap (.qlt)");
  const auto legacy = std::make_shared<LegacyOptions>();
  add_legacy_options(command, *legacy);
  command.calls([options, frames, legacy, circuit] {
    if (circuit.is_given()) options->session.circuit = options->circuit;
    for (const std::string& text : options->slow_corners) options->session.slow_corners.push_back(*slow_corner(text));
    options->session.keep_truth = !options->truth.empty();
    options->session.frames = frame_mix(*frames);
    take_legacy_options(*legacy, options->session);
    simulate_session(*options);
  });
}

}  // namespace traguardo::tool
