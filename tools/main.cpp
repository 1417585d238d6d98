// SPDX-License-Identifier: MIT
// traguardo, the command-line host: command lines in, the commands of commands.h out.
//
// Exit status: 0 done; 1 the command could not do its work, which standard error says in one line (a formula that can't
// be used takes three); 2 wrong command line; 3 a checked session broke its rule.
#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <sstream>
#include <string>

#include "api/exports.h"
#include "commands.h"
#include "error_line.h"
#include "failure.h"
#include "support/platform/platform.h"
#include "support/platform/process.h"
#include "support/platform/unfinished_files.h"
#include "terminal.h"
#include "text.h"

namespace traguardo::tool {

namespace {

constexpr const char* kFileHelp = "Session file (.qlt, .qlc or .wmp)";
constexpr const char* kJsonHelp = "Print JSON";
constexpr const char* kLapHelp = "Only this lap, by its number in `traguardo laps`";

template <typename Options>
void add_recover_flag(CLI::App& command, Options& options) {
  command.add_flag("--recover", options.recover, "Drop a frame whose wrong clock would cost what is behind it");
}

// A command that takes a file and --json.
template <typename Options>
void add_plain_command(CLI::App& app, const char* name, const char* help, void (*show)(const Options&)) {
  CLI::App* const command = app.add_subcommand(name, help);
  const auto options = std::make_shared<Options>();
  command->add_option("FILE", options->file, kFileHelp)->required();
  command->add_flag("--json", options->json, kJsonHelp);
  if constexpr (requires { options->recover; }) add_recover_flag(*command, *options);
  command->callback([options, show] { show(*options); });
}

void add_info_command(CLI::App& app) {
  CLI::App* const command = app.add_subcommand("info", "Show texts, date, duration and counts of a session");
  const auto options = std::make_shared<InfoOptions>();
  command->add_option("FILE", options->file, kFileHelp)->required();
  command->add_flag("--json", options->json, kJsonHelp);
  command->add_flag("--verbose", options->verbose, "Name also the channels that were computed, not logged");
  add_recover_flag(*command, *options);
  command->callback([options] { show_info(*options); });
}

void add_samples_command(CLI::App& app) {
  CLI::App* const command = app.add_subcommand("samples", "Show the samples of a channel");
  const auto options = std::make_shared<SamplesOptions>();
  command->add_option("FILE", options->file, kFileHelp)->required();
  command->add_option("CHANNEL", options->channel, "Name of the channel")->required();
  const CLI::Option* const lap = command->add_option("--lap", options->lap, kLapHelp);
  const CLI::Option* const head = command->add_option("--head", options->head, "Only the first samples")
                                      ->check(CLI::Range(0, std::numeric_limits<int>::max()));
  command->add_flag("--json", options->json, kJsonHelp);
  add_recover_flag(*command, *options);
  command->callback([options, lap, head] {
    options->one_lap = lap->count() > 0;
    options->head_only = head->count() > 0;
    show_samples(*options);
  });
}

void add_export_command(CLI::App& app) {
  CLI::App* const command =
      app.add_subcommand("export", "Write samples as CSV, one a line, or the GPS track for a map program");
  const auto options = std::make_shared<ExportOptions>();
  command->add_option("FILE", options->file, kFileHelp)->required();
  command->add_option("-o,--output", options->output, "File to write, - for standard output")->required();
  CLI::Option* const channels =
      command
          ->add_option("--channel", options->channels,
                       "Only this channel; may be repeated (default: all logged and all derived GPS channels)")
          ->allow_extra_args(false);
  const CLI::Option* const lap = command->add_option("--lap", options->lap, kLapHelp);
  CLI::Option* const gpx =
      command->add_flag("--gpx")->description("Write the GPS track as GPX 1.1")->excludes(channels);
  CLI::Option* const geojson =
      command->add_flag("--geojson")->description("Write the GPS track as GeoJSON")->excludes(channels)->excludes(gpx);
  add_recover_flag(*command, *options);
  command->callback([options, lap, gpx, geojson] {
    options->one_lap = lap->count() > 0;
    if (gpx->count() > 0) options->format = ExportFormat::gpx;
    if (geojson->count() > 0) options->format = ExportFormat::geojson;
    export_session(*options);
  });
}

void add_report_command(CLI::App& app) {
  CLI::App* const command =
      app.add_subcommand("report", "Report what the reader saw in a logger file, all of it without options");
  const auto options = std::make_shared<ReportOptions>();
  command->add_option("FILE", options->file, "Logger file (.qlt or .qlc)")->required();
  command->add_flag("--channels", options->channels, "Rates, counters and errors of the channels");
  command->add_flag("--laps", options->laps, "Lap marks");
  command->add_flag("--gps", options->gps, "Counters and errors of the GPS");
  command->add_flag("--gps-samples", options->gps_samples, "Every GPS solution");
  command
      ->add_option("--tag", options->tags,
                   "NAME=SUFFIX: write the payloads of this tag to FILE with SUFFIX added; may be repeated")
      ->allow_extra_args(false)
      ->check([](const std::string& text) { return reason_not_a_tag_request(text); });
  add_recover_flag(*command, *options);
  command->callback([options] { print_report(*options); });
}

void add_unpack_command(CLI::App& app) {
  CLI::App* const command = app.add_subcommand("unpack", "Expand a compressed logger file");
  const auto options = std::make_shared<UnpackOptions>();
  command->add_option("FILE", options->file, "Compressed logger file (.qlc)")->required();
  command->add_option("-o,--output", options->output,
                      "File to write, - for standard output (default: FILE, ending in .qlt)");
  command->callback([options] { unpack_session(*options); });
}

void add_eval_command(CLI::App& app, int& status) {
  CLI::App* const command = app.add_subcommand("eval", "Compute a formula over the channels of a session");
  const auto options = std::make_shared<EvalOptions>();
  command->add_option("FORMULA", options->formula, "Formula, with channels by their names")->required();
  command->add_option("FILE", options->file, kFileHelp)->required();
  command->add_option("--rate", options->rate_hz, "Samples a second (default: as the fastest channel, or 100)")
      ->check(CLI::Range(0.001, 1e6))
      // Not-a-number lies in no range, and out of none.
      ->check(
          [](const std::string& text) { return std::isnan(std::strtod(text.c_str(), nullptr)) ? "not a number" : ""; });
  command->add_flag("--json", options->json, kJsonHelp);
  command->add_option("-o,--output", options->output, "File to write as CSV, - for standard output");
  command->callback([options, &status] { status = evaluate_formula(*options); });
}

void add_check_command(CLI::App& app, int& status) {
  CLI::App* const command =
      app.add_subcommand("check", "Check a session against a regulation; exit status 3 if it broke the rule");
  const auto options = std::make_shared<CheckOptions>();
  command->add_option("FILE", options->file, kFileHelp)->required();
  CLI::Option* const fia = command->add_option("--fia", options->fia, "FIA.txt, the configuration of the boost limit");
  const CLI::Option* const fmi =
      command->add_option("--fmi", options->fmi, "FMI-limiter.txt, the configuration of the limiter")->excludes(fia);
  command->callback([options, fia, fmi, &status] {
    if (fia->count() + fmi->count() == 0) throw CLI::RequiredError("--fia or --fmi");
    status = check_session(*options);
  });
}

void add_predict_command(CLI::App& app) {
  CLI::App* const command = app.add_subcommand("predict", "Predict the elapsed time of a run on a strip");
  const auto options = std::make_shared<PredictOptions>();
  command->add_option("FILE", options->file, kFileHelp)->required();
  command->add_option("--length", options->length_ft, "Length of the strip in feet")
      ->check(CLI::IsMember({330, 500, 660, 1320}))
      ->capture_default_str();
  command->add_option("--run", options->run, "Number of the run (default: the first one)")
      ->check(CLI::Range(1, 1'000'000));
  command->add_option("--channel", options->channel, "Speed to use (default: the first one of the session)");
  command->add_option("--tables", options->tables,
                      "Folder above user/et_prediction/ (default: the user's configuration folder)");
  command->callback([options] { predict_run(*options); });
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
  const CLI::Option* version_given = nullptr;
  std::uint32_t device_code = 0;
  const CLI::Option* device_given = nullptr;
  std::string dump;
};

void add_legacy_options(CLI::App& command, LegacyOptions& options) {
  command.add_option("--format", options.format, "Kind of session (default: by the name of the file)")
      ->check(CLI::IsMember({"qlt", "wmp"}));
  options.version_given =
      command.add_option("--version", options.version,
                         "Version of a .wmp file: 100, 200, 320, 400, 450, 451, 500, 550, 600 (default) or 700");
  options.device_given =
      command.add_option("--device-code", options.device_code,
                         "Device that wrote a .wmp file, from version 600 on; 48 and 18 make a reader add channels");
  command.add_option("--dump", options.dump, "Form of the dump in a .wmp file of version 500 (default: new)")
      ->check(CLI::IsMember({"old", "new"}));
}

void take_legacy_options(const LegacyOptions& options, simulator::SimulationOptions& session) {
  if (options.format == "qlt") session.format = simulator::SessionFormat::qlt;
  if (options.format == "wmp") session.format = simulator::SessionFormat::wmp;
  if (options.version_given->count() > 0) session.wmp_version = options.version;
  if (options.device_given->count() > 0) session.device_code = options.device_code;
  if (options.dump == "old") session.dump = simulator::DumpForm::older;
  if (options.dump == "new") session.dump = simulator::DumpForm::newer;
}

void add_simulate_command(CLI::App& app) {
  CLI::App* const command = app.add_subcommand("simulate", "Write a session of a simulated car on a circuit");
  const auto options = std::make_shared<SimulateOptions>();
  const auto frames = std::make_shared<std::string>("mixed");
  simulator::SimulationOptions& session = options->session;
  command
      ->add_option("-o,--output", options->output,
                   "File to write; a name in .qlc is compressed, one in .wmp an older logger's")
      ->required();
  command->add_option("--laps", session.laps, "Number of laps")->capture_default_str();
  command->add_option("--channels", session.channels, "Number of channels (default: the usual set)");
  command->add_option("--seed", session.seed, "The same seed gives the same file")->capture_default_str();
  command->add_option("--minutes", session.minutes, "Length of the session, instead of a number of laps");
  command->add_option("--damage", session.damage, "Places where a byte is changed, lost or added (.wmp: changed)");
  command->add_option("--rate", session.rate_hz, "One rate in Hz for all channels, a divisor of 1000");
  command->add_option("--frames", *frames, "Which frames carry the samples")
      ->check(CLI::IsMember({"mixed", "single", "block", "group"}))
      ->capture_default_str();
  const auto legacy = std::make_shared<LegacyOptions>();
  add_legacy_options(*command, *legacy);
  command->callback([options, frames, legacy] {
    options->session.frames = frame_mix(*frames);
    take_legacy_options(*legacy, options->session);
    simulate_session(*options);
  });
}

int complain(const char* reason, const std::string& details = {}) {
  say_error_line(reason, details);
  return 1;
}

// Help and version are output like any other; what is wrong with a command line goes to standard error.
int answer(const CLI::App& app, const CLI::ParseError& error) {
  std::ostringstream out;
  std::ostringstream complaint;
  const bool is_wrong = app.exit(error, out, complaint) != 0;
  const std::string shown = for_stream(stderr, to_utf8(complaint.str()), LineFeeds::kept);
  std::fputs(shown.c_str(), stderr);
  print_out(out.str());
  return is_wrong ? 2 : 0;
}

int answer_or_complain(const CLI::App& app, const CLI::ParseError& error) {
  try {
    return answer(app, error);
  } catch (const std::exception& failure) {
    return complain(failure.what());
  }
}

}  // namespace

// Configuration files and tables of the tool are the user's, not the installation's.
void take_users_folder() {
  const std::wstring folder = platform::path_in_folder(platform::user_configuration_folder(), L"traguardo");
  platform::set_environment_if_unset("TRAGUARDO_HOME", platform::host_bytes_from_path(folder));
}

int run(int argument_count, char** arguments) {
  int status = 0;
  CLI::App app("Reads and shows the sessions of motorsport data loggers", "traguardo");
  app.require_subcommand(1);
  app.set_version_flag("--version", std::string("traguardo " TRAGUARDO_VERSION ", library built ") +
                                        get_library_date() + " " + get_library_time());
  add_info_command(app);
  add_plain_command<LapsOptions>(app, "laps", "Show the laps with their times and gaps", show_laps);
  add_plain_command<ChannelsOptions>(app, "channels", "Show the logged channels with rates and bounds", show_channels);
  add_samples_command(app);
  add_export_command(app);
  add_plain_command<GpsOptions>(app, "gps", "Show quality, distance and bounds of the GPS track", show_gps);
  add_report_command(app);
  add_unpack_command(app);
  add_eval_command(app, status);
  add_check_command(app, status);
  add_predict_command(app);
  add_simulate_command(app);
  try {
    app.parse(argument_count, arguments);
    return status;
  } catch (const CLI::ParseError& error) {
    return answer_or_complain(app, error);
  } catch (const std::bad_alloc&) {
    return complain("out of memory");
  } catch (const Failure& failure) {
    return complain(failure.what(), failure.details);
  } catch (const std::exception& failure) {
    return complain(failure.what());
  }
}

}  // namespace traguardo::tool

// What escapes run() is a fault of the tool itself.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argument_count, char** arguments) {
  traguardo::platform::occupy_standard_streams();
  traguardo::platform::remove_unfinished_when_killed();
  traguardo::tool::take_users_folder();
  return traguardo::tool::run(argument_count, arguments);
}
