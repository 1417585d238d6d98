// SPDX-License-Identifier: MIT
// traguardo predict: a run on a strip, carried on with the shape of a reference run.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "command.h"
#include "failure.h"
#include "inputs.h"
#include "merged_session.h"
#include "paths.h"
#include "print_out.h"
#include "regulation/calibrated_run.h"
#include "regulation/elapsed_time.h"
#include "regulation/prediction.h"
#include "speed.h"
#include "support/platform/platform.h"
#include "support/platform/process.h"
#include "support/platform/unfinished_files.h"
#include "table.h"
#include "text.h"

namespace traguardo::tool {

namespace fs = std::filesystem;

namespace {

struct PredictOptions {
  std::string file;
  u32 length_ft = 660;
  int run = 0;          // by its number; 0: the first one
  std::string channel;  // empty: the speed of the session
  std::string tables;   // folder above user/et_prediction/; empty: the user's
};

constexpr u32 kGpsPeriodMs = 10;
constexpr std::uint64_t kMostGpsPoints = 10'000'000;  // more than a day of them

// A derived GPS channel stands on an even grid already.
SessionChannel gps_samples(const Session& session, const Channel& channel, std::vector<float>* values) {
  if (session.sample_count(channel, std::nullopt) > kMostGpsPoints) {
    throw Failure(fmt::format("the GPS solutions of {} lie too far apart for a run", session.path()));
  }
  session.read_in_pieces(channel, {}, [values](const Samples& piece) {
    if (values->empty()) {
      const double first = piece.times_s.front() * 1000.0 / kGpsPeriodMs;
      values->assign(static_cast<std::size_t>(std::lround(std::clamp(first, 0.0, 1e6))), 0.0F);
    }
    for (const double value : piece.values) values->push_back(static_cast<float>(value));
    return true;
  });
  SessionChannel even;
  even.name = channel.name;
  even.period_ms = kGpsPeriodMs;
  even.frequency_hz = 1000 / kGpsPeriodMs;
  even.samples = *values;
  return even;
}

SessionRun chosen_run(const MergedSession& view, const PredictOptions& options) {
  const std::vector<SessionRun> runs = view.runs();
  if (options.run == 0) return runs.front();
  const auto found = std::find_if(runs.begin(), runs.end(), [&options](const SessionRun& run) {
    return static_cast<int>(run.number) == options.run;
  });
  if (found == runs.end()) {
    throw Failure(fmt::format("no run {} in {}, which has {}", options.run, options.file, runs.size()));
  }
  return *found;
}

// --- The tables ------------------------------------------------------------------------------------------------------

// A user whose folder can't be written to has no tables; the default one then serves from a folder that goes away with
// this object.
class Tables {
 public:
  explicit Tables(const std::string& folder) {
    if (!folder.empty()) {
      use(folder);
      return;
    }
    use(platform::environment("TRAGUARDO_HOME"));
    if (has_table()) return;
    std::error_code problem;
    const fs::path place = fs::temp_directory_path(problem);
    if (problem || !own_.begin(platform::path_from_host_bytes(bytes_of(place)))) return;
    for (const wchar_t* part : {L"user", L"user/et_prediction", L"user/et_prediction/Default.etp"}) own_.expect(part);
    use(platform::host_bytes_from_path(own_.path()));
  }

  ElapsedTimePrediction& prediction() { return *prediction_; }
  bool has_table() const {
    if (prediction_->folder().empty()) return false;
    return platform::file_exists(table_path(prediction_->folder(), L"")) ||
           platform::file_exists(table_path(prediction_->folder(), kDefaultTableName));
  }

 private:
  void use(const std::string& folder) { prediction_.emplace(platform::path_from_host_bytes(folder) + L"/"); }

  platform::WorkFolder own_;
  std::optional<ElapsedTimePrediction> prediction_;
};

const StripRow& strip_of(u32 length_ft) {
  for (const StripRow& strip : strips()) {
    if (strip.length == length_ft) return strip;
  }
  return strips().back();
}

void predict_run(const PredictOptions& options) {
  Session session(options.file);
  const Channel channel = speed_channel(session, options.channel, "--channel");
  const bool is_logged = channel.kind == ChannelKind::logged;
  // A logged channel's samples come in the unit of the file.
  const float to_mph =
      static_cast<float>(metres_per_second(channel.unit) / metres_per_second("mph") * (is_logged ? channel.scale : 1));
  const MergedSession view(session, std::wstring(),
                           [&](const std::string& name) { return is_logged && to_utf8(name) == channel.name; });
  std::vector<float> gps_values;
  const SessionChannel speed =
      is_logged ? view.channel(static_cast<std::size_t>(channel.index)) : gps_samples(session, channel, &gps_values);
  const SessionRun run = chosen_run(view, options);

  std::vector<float> speeds_mph;
  for (const float value : samples_in(speed, run)) speeds_mph.push_back(value * to_mph);
  std::vector<float> distances_ft(speeds_mph.size(), 0.0F);
  integrate_distance(speeds_mph, speed.period_ms, 1.0F, kFeetPerSecond, 0, distances_ft);

  Tables tables(options.tables);
  if (!tables.has_table()) {
    throw Failure(fmt::format("no table can be read or written in {}",
                              platform::host_bytes_from_path(tables.prediction().folder())));
  }
  Inputs inputs;
  inputs.add_tables(tables.prediction().folder());
  inputs.refuse("-");
  PredictionInput input;
  input.distances_ft = distances_ft;
  input.speeds_mph = speeds_mph;
  input.length_ft = options.length_ft;
  input.period_ms = speed.period_ms;
  const std::optional<i64> elapsed_ms = tables.prediction().predict(input);
  const StripRow& strip = strip_of(options.length_ft);
  if (!elapsed_ms) {
    const float reached_ft = distances_ft.empty() ? 0.0F : distances_ft.back();
    throw Failure(
        fmt::format("no prediction for run {}: its {:.0f} ft don't pass the marks of the strip at {}, {} and {} ft",
                    run.number, reached_ft, strip.first, strip.middle, strip.last));
  }
  print_out(pairs_to_text({{"File", to_utf8(session.path())},
                           {"Run", std::to_string(run.number)},
                           {"Speed", to_utf8(channel.name)},
                           {"Strip", fmt::format("{} ft", options.length_ft)},
                           {"Timed", fmt::format("{} to {} ft", strip.timed_from, strip.timed_to)},
                           {"Predicted", fmt::format("{:.3f} s", static_cast<double>(*elapsed_ms) / 1000.0)}}));
}

}  // namespace

void add_predict_command(CLI::App& app, int& /*status*/) {
  Command command(app, "predict", "Predict the elapsed time of a run on a strip");
  const auto options = std::make_shared<PredictOptions>();
  command.add_file(options->file);
  command.add("--length", options->length_ft, "Length of the strip in feet")
      .one_of({330, 500, 660, 1320})
      .shows_default();
  command.add("--run", options->run, "Number of the run (default: the first one)").between(1, 1'000'000);
  command.add("--channel", options->channel, "Speed to use (default: the first one of the session)");
  command.add("--tables", options->tables,
              "Folder above user/et_prediction/ (default: the user's configuration folder)");
  command.calls([options] { predict_run(*options); });
}

}  // namespace traguardo::tool
