// SPDX-License-Identifier: MIT
#include "simulator/wmp_writer.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "failure.h"
#include "output_file.h"
#include "same_file.h"
#include "simulator/random.h"
#include "simulator/wmp_channels.h"
#include "simulator/wmp_dump.h"
#include "simulator/wmp_recording.h"
#include "simulator/wmp_records.h"
#include "wire/jts.h"
#include "wire/qlt.h"
#include "wire/wmp.h"

namespace traguardo::simulator {

namespace {

using tool::Failure;

constexpr int kVersions[] = {100, 200, 320, 400, 450, 451, 500, 550, 600, 700};

// --- Options

WmpForm checked_form(const SimulationOptions& options) {
  WmpForm form;
  form.version = options.wmp_version.value_or(form.version);
  form.device_code = options.device_code.value_or(0);
  form.old_dump = options.dump.value_or(DumpForm::newer) == DumpForm::older;

  const std::string version = "version " + std::to_string(form.version);
  if (std::find(std::begin(kVersions), std::end(kVersions), form.version) == std::end(kVersions)) {
    throw Failure("there is no " + version + " of .wmp files");
  }
  if (options.device_code && !form.has_runs()) throw Failure(version + " has no place for a device code");
  if (options.dump && !form.has_dump()) throw Failure(version + " has no dump of its samples");
  if (options.frames != FrameMix::mixed) throw Failure("a .wmp session has no frames");
  if (options.channels > 0 && static_cast<std::size_t>(options.channels) > form.most_channels()) {
    throw Failure(version + " has at most " + std::to_string(form.most_channels()) + " logged channels");
  }
  return form;
}

std::string trace_path_of(const std::string& path) {
  constexpr std::string_view kEnding = ".wmp";
  const auto same = [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; };
  const bool fits = path.size() > kEnding.size() &&
                    std::equal(path.end() - std::ptrdiff_t{kEnding.size()}, path.end(), kEnding.begin(), same);
  if (!fits) throw Failure("a .wmp session needs a name that ends so, for the name of its GPS file");
  return path.substr(0, path.size() - 3) + "jts";
}

// --- The file

struct WmpFile {
  wire::Bytes bytes;
  std::vector<wire::wmp::Range> samples;
};

WmpFile file_of(const WmpSession& session) {
  wire::wmp::File described_file = described(session);
  WmpFile file;
  if (session.form.has_dump()) {
    WmpDump dump = memory_dump(session.form, session.logged(), session.recording);
    const std::size_t behind_stream = dump.bytes.size() - dump.stream_end;
    const std::size_t stream = dump.stream_end - dump.stream_begin;
    described_file.dump = std::move(dump.bytes);
    file.bytes = build(described_file);
    const std::size_t end = file.bytes.size() - behind_stream;
    file.samples.push_back({end - stream, end});
    return file;
  }
  if (session.form.has_two_areas()) {
    for (const std::vector<float>& values : session.recording.samples) {
      if (values.size() <= wire::wmp::kAreaWords) continue;
      throw Failure("version 550 has room for " + std::to_string(wire::wmp::kAreaWords) +
                    " samples of a channel: a shorter session or a lower rate");
    }
    described_file.dump = set_up_area(session.form, session.logged(), session.recording);
  }
  file.bytes = build(described_file, &file.samples);
  // The length stands in the header, at the front of the file.
  if (file.bytes.size() > 0xFFFFFFFFu) throw Failure("the session is too long for a .wmp file");
  return file;
}

// --- Damage

// Only samples change: a file whose length or tables are wrong isn't opened at all.
void damage(WmpFile& file, std::size_t places, std::uint64_t seed) {
  std::size_t total = 0;
  for (const wire::wmp::Range& range : file.samples) total += range.end - range.begin;
  Random random(seed ^ 0xDA3A6Eu);
  std::set<std::size_t> chosen;
  const std::size_t wanted = std::min(places, total / 2);
  while (chosen.size() < wanted) chosen.insert(static_cast<std::size_t>(random.below(total)));
  std::size_t before = 0;  // sample bytes in front of the range
  auto next = chosen.begin();
  for (const wire::wmp::Range& range : file.samples) {
    const std::size_t size = range.end - range.begin;
    for (; next != chosen.end() && *next < before + size; ++next) {
      wire::Byte& byte = file.bytes[range.begin + (*next - before)];
      byte = static_cast<wire::Byte>(byte ^ (1 + random.below(255)));
    }
    before += size;
  }
}

SimulationSummary summary_of(const WmpSession& session, const WmpFile& file) {
  SimulationSummary summary;
  for (std::size_t i = 0; i < session.channels.size(); ++i) {
    const WmpChannel& channel = session.channels[i];
    const std::size_t samples = session.sample_count(channel);
    summary.channels.push_back({channel.name, static_cast<std::uint16_t>(i), samples});
    summary.samples += samples;
  }
  for (const WmpLap& lap : session.recording.laps) summary.lap_times_ms.push_back(lap.time_ms);
  summary.gps_records = session.recording.solutions.size() / wire::GpsSolution::kSize;
  summary.bytes = file.bytes.size();
  summary.duration_s = static_cast<double>(session.recording.duration_ms) * 0.001;
  return summary;
}

}  // namespace

SimulationSummary write_wmp_session(const SimulationOptions& options, const Circuit& circuit, const std::string& path) {
  const std::string trace_path = trace_path_of(path);
  WmpSession session;
  session.form = checked_form(options);
  session.seed = options.seed;
  session.channels = plan_wmp_channels(options, session.form);
  session.logged_count =
      static_cast<std::size_t>(std::count_if(session.channels.begin(), session.channels.end(),
                                             [](const WmpChannel& channel) { return !channel.is_derived(); }));
  if (tool::are_same_file(path, trace_path)) throw Failure(path + " and " + trace_path + " are one file");
  tool::OutputFile out(path);
  tool::OutputFile trace(trace_path);
  session.recording = record_session(options, circuit, session.logged(), session.form.has_runs());

  WmpFile file = file_of(session);
  if (options.damage > 0) damage(file, static_cast<std::size_t>(options.damage), options.seed);
  const wire::Bytes solutions = wire::jts(session.recording.solutions);
  out.write(file.bytes.data(), file.bytes.size());
  trace.write(solutions.data(), solutions.size());
  // Neither takes its name before both are whole.
  trace.finish();
  out.finish();
  trace.keep();
  out.keep();
  return summary_of(session, file);
}

}  // namespace traguardo::simulator
