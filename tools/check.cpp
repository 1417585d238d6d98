// SPDX-License-Identifier: MIT
// traguardo check: the regulation calculators on any session, with a configuration of a person's choice.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ios>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "command.h"
#include "failure.h"
#include "input_file.h"
#include "inputs.h"
#include "merged_session.h"
#include "paths.h"
#include "print_out.h"
#include "regulation/boost_limit.h"
#include "regulation/config_file.h"
#include "regulation/limiter.h"
#include "support/platform/platform.h"
#include "terminal.h"
#include "text.h"

namespace traguardo::tool {

namespace fs = std::filesystem;

namespace {

struct CheckOptions {
  std::string file;
  // One of them: the configuration file of the boost limit, or of the limiter.
  std::string fia;
  std::string fmi;
};

constexpr int kWithinLimits = 0;
constexpr int kOverLimits = 3;
constexpr u32 kOutputPeriodMs = 10;
constexpr const char* kEngineName = "Engine";

// Where a check works: in the folder of its configuration file.
struct Workplace {
  std::string configuration;
  std::wstring folder;
  std::string report;
  std::string remark;  // a line about the session, or nothing
};

// The rules name channels as loggers of the older family do.
std::string remark_on(const std::string& session) {
  if (lower_ending(session) == ".wmp") return {};
  return "Note: these regulations are made for .wmp sessions; channels of other names are not found in this one\n";
}

// Names as the calculators have them, with a backslash in front. They know their configuration by its name alone.
Workplace workplace_of(const CheckOptions& options, std::wstring_view name, std::wstring_view report_name) {
  const std::string& configuration = options.fia.empty() ? options.fmi : options.fia;
  const fs::path path = path_of(configuration);
  const std::string wanted = platform::host_bytes_from_path(name.substr(1));
  if (bytes_of(path.filename()) != wanted) {
    throw Failure(fmt::format("the configuration file must have the name {}, unlike {}", wanted, configuration));
  }
  require_readable(configuration);
  const std::string report =
      bytes_of(path.parent_path() / path_of(platform::host_bytes_from_path(report_name.substr(1))));
  Inputs inputs;
  const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
  inputs.add_session(options.file);
  inputs.add_configurations(bytes_of(folder));
  inputs.refuse(report);
  Workplace place;
  place.configuration = configuration;
  place.folder = platform::path_from_host_bytes(bytes_of(folder));
  place.report = report;
  place.remark = remark_on(options.file);
  return place;
}

std::string whole_text(const std::string& path) {
  std::ifstream in(path_of(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// What a calculator adds to its report, run by run.
template <typename Check>
class Listener {
 public:
  explicit Listener(const Check& check) : check_(check), heard_(check.report().size()) {}

  // What came since the last call, in one line, without the lines that are `header`.
  std::string next(const std::string& header) {
    std::string said;
    LineWalk lines(std::string_view(check_.report()).substr(heard_));
    for (std::string_view line; lines.next(&line);) {
      while (!line.empty() && (line.front() == '\t' || line.front() == ' ')) line.remove_prefix(1);
      while (!line.empty() && line.back() == ' ') line.remove_suffix(1);
      if (line.empty() || header.starts_with(line)) continue;
      if (!said.empty()) said += ' ';
      said += line;
    }
    heard_ = check_.report().size();
    return to_utf8(said);
  }

 private:
  const Check& check_;
  std::size_t heard_;
};

// What the runs come to.
struct Verdict {
  std::string lines;
  bool over = false;
  bool within = false;  // some run was computed and kept to the limits
  bool left_out = false;
  bool failed = false;

  void add(const SessionRun& run, std::string_view text) {
    lines += fmt::format("Run {}: {}\n", run.number, cell(text));
  }
};

// Outputs are not-a-number until a calculator fills them.
bool is_computed(std::span<const float> output) {
  return !output.empty() && !std::isnan(output.front());
}

void leave_out(const SessionRun& run, bool good, const std::string& said, Verdict* verdict) {
  verdict->left_out = true;
  if (!good) verdict->failed = true;
  verdict->add(run, "not computed" + (said.empty() ? std::string() : ": " + said));
}

int conclude(const Verdict& verdict, const std::string& over, const std::string& within, const Workplace& place) {
  std::string text = verdict.lines;
  text += "Verdict: " + (verdict.over ? over : verdict.within ? within : std::string("none, nothing was computed"));
  if (verdict.left_out && (verdict.over || verdict.within)) text += ", as far as it was computed";
  std::error_code problem;
  text += fs::exists(path_of(place.report), problem) ? "\nReport: " : "\nReport that could not be written: ";
  print_out(text + cell(to_utf8(place.report)) + "\n" + place.remark);
  if (verdict.over) return kOverLimits;
  if (verdict.failed) throw Failure("the check could not be computed for every run of the session");
  return kWithinLimits;
}

// The channels that a configuration speaks of.
std::function<bool(const std::string& name)> mentioned_in(const std::string& configuration) {
  return [text = whole_text(configuration)](const std::string& name) {
    return !name.empty() && text.find(name) != std::string::npos;
  };
}

// --- Boost limit -----------------------------------------------------------------------------------------------------

int check_boost_limit(const CheckOptions& options) {
  const Workplace place = workplace_of(options, kBoostConfigurationName, kBoostReportName);
  const Session session(options.file);
  MergedSession view(session, place.folder, mentioned_in(place.configuration));
  const auto output = [&view](const char* name) { return static_cast<i32>(view.add_output(name, kOutputPeriodMs)); };
  BoostOutputs outputs;
  outputs.flag = output("FlagFIA");
  outputs.limit = output("LimitFIA");
  outputs.value = output("ValFIA");
  outputs.integral = output("IntegFIA");
  outputs.low_counter = output("Ctr30FIA");
  outputs.high_counter = output("Ctr100FIA");

  BoostLimitCheck check(&view, outputs);
  Listener report(check);
  Verdict verdict;
  for (const SessionRun& run : believed_runs(view)) {
    const bool good = check.run(run);
    const std::string said = report.next(run_header(view, run));
    const SessionChannel flag = view.channel(static_cast<std::size_t>(outputs.flag));
    const std::span<const float> flags = samples_in(flag, run);
    if (!is_computed(flags)) {
      leave_out(run, good, said, &verdict);
      continue;
    }
    const auto raised = std::find_if(flags.begin(), flags.end(), [](float value) { return value > 0.0F; });
    if (raised == flags.end()) {
      verdict.within = true;
      verdict.add(run, "no flag");
      continue;
    }
    verdict.over = true;
    const double at_ms =
        static_cast<double>(run.start_ms) + static_cast<double>(raised - flags.begin()) * kOutputPeriodMs;
    verdict.add(run, fmt::format("flag raised at {} (min:s)", lap_clock(at_ms / 1000.0)));
  }
  check.write_report();
  return conclude(verdict, "the boost pressure was above its limit for too long",
                  "the boost pressure kept to its limit", place);
}

// --- Limiter ---------------------------------------------------------------------------------------------------------

// The rate of what is computed is that of the engine speed.
u32 engine_period_ms(const MergedSession& view) {
  const std::optional<std::size_t> engine = ChannelNames(view).find(kEngineName);
  return engine ? view.channel(*engine).period_ms : kOutputPeriodMs;
}

Verdict run_limiter(LimiterCheck* check, const MergedSession& view, std::size_t output, float* seconds) {
  Listener report(*check);
  Verdict verdict;
  *seconds = 0.0F;
  for (const SessionRun& run : believed_runs(view)) {
    const bool good = check->run(run);
    const std::string said = report.next(run_header(view, run));
    const SessionChannel channel = view.channel(output);
    const std::span<const float> totals = samples_in(channel, run);
    if (!is_computed(totals)) {
      leave_out(run, good, said, &verdict);
      continue;
    }
    const float total = totals.back();  // The sum grows over the run.
    *seconds += total;
    (total > 0.0F ? verdict.over : verdict.within) = true;
    verdict.add(run, fmt::format("{:g} s over the limit", total));
  }
  return verdict;
}

int check_limiter(const CheckOptions& options) {
  const Workplace place = workplace_of(options, kLimiterConfigurationName, kLimiterReportName);
  const Session session(options.file);
  MergedSession view(session, place.folder, [](const std::string& name) { return name == kEngineName; });
  const std::size_t output = view.add_output("FMI_Limiter", engine_period_ms(view));

  const std::string before = whole_text(place.configuration);
  float seconds = 0.0F;
  LimiterCheck check(&view, output);
  Verdict verdict = run_limiter(&check, view, output, &seconds);
  if (whole_text(place.configuration) != before) {
    // The logger had no section, and its first run went by while one was written.
    verdict = run_limiter(&check, view, output, &seconds);
    verdict.lines +=
        fmt::format("A section for logger {} was added to {}\n", view.logger_id(), cell(to_utf8(place.configuration)));
  }
  check.write_report();
  return conclude(verdict, fmt::format("the engine was over its limit for {:g} s", seconds),
                  "the engine kept to its limit", place);
}

int check_session(const CheckOptions& options) {
  return options.fia.empty() ? check_limiter(options) : check_boost_limit(options);
}

}  // namespace

void add_check_command(CLI::App& app, int& status) {
  Command command(app, "check", "Check a session against a regulation; exit status 3 if it broke the rule");
  const auto options = std::make_shared<CheckOptions>();
  command.add_file(options->file);
  const Option fia = command.add("--fia", options->fia, "FIA.txt, the configuration of the boost limit");
  const Option fmi =
      command.add("--fmi", options->fmi, "FMI-limiter.txt, the configuration of the limiter").excludes(fia);
  command.calls([options, fia, fmi, &status] {
    if (!fia.is_given() && !fmi.is_given()) complain_of_missing("--fia or --fmi");
    status = check_session(*options);
  });
}

}  // namespace traguardo::tool
