// SPDX-License-Identifier: MIT
// traguardo simulate: a session of a simulated car.
#include <fmt/format.h>

#include <cstdint>
#include <memory>
#include <string>

#include "command.h"
#include "failure.h"
#include "print_out.h"
#include "simulator/simulator.h"

namespace traguardo::tool {

namespace {

struct SimulateOptions {
  std::string output;
  simulator::SimulationOptions session;
};

void simulate_session(const SimulateOptions& options) {
  std::string error;
  simulator::SimulationSummary summary;
  if (!simulator::simulate_to_file(options.session, options.output, error, &summary)) throw Failure(error);
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
  command
      .add("-o,--output", options->output, "File to write; a name in .qlc is compressed, one in .wmp an older logger's")
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
  const auto legacy = std::make_shared<LegacyOptions>();
  add_legacy_options(command, *legacy);
  command.calls([options, frames, legacy] {
    options->session.frames = frame_mix(*frames);
    take_legacy_options(*legacy, options->session);
    simulate_session(*options);
  });
}

}  // namespace traguardo::tool
