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
#include "simulator/gps_receiver.h"
#include "simulator/jts_writer.h"
#include "simulator/random.h"
#include "simulator/wire.h"
#include "simulator/wmp_channels.h"
#include "simulator/wmp_dump.h"
#include "simulator/wmp_recording.h"
#include "simulator/wmp_records.h"

namespace traguardo::simulator {

namespace {

using tool::Failure;

constexpr int kVersions[] = {100, 200, 320, 400, 450, 451, 500, 550, 600, 700};
constexpr std::size_t kBlockHeadSize = 32;
constexpr std::size_t kAreaSize = 65536;
constexpr std::size_t kAreaWords = kAreaSize / 2;

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

// --- Files by version

struct ByteRange {
  std::size_t begin = 0;
  std::size_t end = 0;
};

struct WmpFile {
  Bytes bytes;
  std::vector<ByteRange> samples;
};

void append(Bytes& out, const Bytes& part) {
  out.insert(out.end(), part.begin(), part.end());
}

void pad_to(Bytes& out, std::size_t size) {
  if (out.size() < size) out.resize(size, 0);
}

// The length stands in the header, at the front of the file.
std::uint32_t stored_length(std::size_t length) {
  if (length > 0xFFFFFFFFu) throw Failure("the session is too long for a .wmp file");
  return static_cast<std::uint32_t>(length);
}

void append_words(const WmpSession& session, std::size_t channel, Bytes& out) {
  const std::vector<float>& values = session.recording.samples[channel];
  const std::size_t begin = out.size();
  out.resize(begin + 2 * values.size());
  Byte* at = out.data() + begin;
  for (const float value : values) {
    at = put_u16(at, raw_word(session.channels[channel], static_cast<double>(value)));
  }
}

void append_raw_area(const WmpSession& session, WmpFile& file) {
  const std::size_t begin = file.bytes.size();
  for (std::size_t i = 0; i < session.logged_count; ++i) append_words(session, i, file.bytes);
  file.samples.push_back({begin, file.bytes.size()});
}

void append_float_area(const WmpSession& session, WmpFile& file) {
  const std::size_t begin = file.bytes.size();
  file.bytes.resize(begin + 4 * session.logged_samples());
  Byte* at = file.bytes.data() + begin;
  for (const std::vector<float>& values : session.recording.samples) {
    for (const float value : values) at = put_f32(at, static_cast<double>(value));
  }
  file.samples.push_back({begin, file.bytes.size()});
}

void append_plain_laps(const WmpSession& session, Bytes& out) {
  for (const WmpLap& lap : session.recording.laps) append(out, lap_record(session, lap));
}

// Versions 100, 200 and 320.
WmpFile file_of_physical_values(const WmpSession& session) {
  const std::size_t length = kMainHeaderSize + kNamesSize + kOldChannelSize * session.channels.size() +
                             kLapSize * session.recording.laps.size() + 4 * session.logged_samples();
  WmpFile file;
  append(file.bytes, main_header(session, stored_length(length)));
  append(file.bytes, names_block(session));
  for (std::size_t i = 0; i < session.channels.size(); ++i) append(file.bytes, old_channel_record(session, i));
  append_plain_laps(session, file.bytes);
  append_float_area(session, file);
  return file;
}

// Versions 400, 450 and 451.
WmpFile file_of_plain_records(const WmpSession& session) {
  const std::size_t length = kMainHeaderSize + kNamesSize + kChannelSize * session.channels.size() +
                             kLapSize * session.recording.laps.size() + 2 * session.logged_samples();
  WmpFile file;
  append(file.bytes, main_header(session, stored_length(length)));
  append(file.bytes, names_block(session));
  for (std::size_t i = 0; i < session.channels.size(); ++i) append(file.bytes, channel_record(session, i));
  append_plain_laps(session, file.bytes);
  append_raw_area(session, file);
  return file;
}

// What versions 500 and 550 have in front of their samples.
Bytes extended_tables(const WmpSession& session, std::size_t length, std::size_t dump_offset) {
  Bytes out = main_header(session, stored_length(length));
  append(out, configuration_block(session, static_cast<std::uint32_t>(dump_offset)));
  append(out, names_block(session));
  append(out, extended_names_block(session));
  for (std::size_t i = 0; i < session.channels.size(); ++i) {
    append(out, channel_record(session, i));
    append(out, channel_extension(session, i));
  }
  for (const WmpLap& lap : session.recording.laps) {
    append(out, lap_record(session, lap));
    append(out, Bytes(kLapExtensionSize, 0));
  }
  return out;
}

// The tables of versions 500 and 550 in units of 256 bytes, without their head of eight.
std::size_t table_units(const WmpSession& session) {
  return session.recording.laps.size() + 4 * session.channels.size();
}

// Version 500.
WmpFile file_with_dump(const WmpSession& session) {
  const WmpDump dump = memory_dump(session.form, session.logged(), session.recording);
  const std::size_t dump_offset = kAreaSize + kAreaSize * ((table_units(session) + 8) / 256);
  WmpFile file;
  file.bytes = extended_tables(session, dump_offset + dump.bytes.size(), dump_offset);
  pad_to(file.bytes, dump_offset);
  append(file.bytes, dump.bytes);
  file.samples.push_back({dump_offset + dump.stream_begin, dump_offset + dump.stream_end});
  return file;
}

// Version 550.
WmpFile file_with_two_areas(const WmpSession& session) {
  for (const std::vector<float>& values : session.recording.samples) {
    if (values.size() <= kAreaWords) continue;
    throw Failure("version 550 has room for " + std::to_string(kAreaWords) +
                  " samples of a channel: a shorter session or a lower rate");
  }
  const Bytes dump = set_up_area(session.form, session.logged(), session.recording);
  const std::size_t areas = (256 * table_units(session) + 2047) / kAreaSize * kAreaSize + kAreaSize;
  const std::size_t dump_offset = areas + 2 * kAreaSize;
  WmpFile file;
  file.bytes = extended_tables(session, dump_offset + dump.size(), 0);
  for (std::size_t i = 0; i < session.logged_count; ++i) {
    pad_to(file.bytes, areas + i * kAreaSize);
    const std::size_t begin = file.bytes.size();
    append_words(session, i, file.bytes);
    file.samples.push_back({begin, file.bytes.size()});
  }
  pad_to(file.bytes, dump_offset);
  append(file.bytes, dump);
  return file;
}

// One or two records under a head with the sum of their bytes.
void append_group(const Bytes& first, const Bytes& second, Bytes& out) {
  std::uint32_t sum = 0;
  for (const Byte byte : first) sum += byte;
  for (const Byte byte : second) sum += byte;
  Bytes head(kBlockHeadSize, 0);
  put_u32(head.data() + 4, sum);
  append(out, head);
  append(out, first);
  append(out, second);
}

// Versions 600 and 700.
WmpFile file_of_groups(const WmpSession& session) {
  constexpr std::size_t kBlocks =
      3 * kBlockHeadSize + kMainHeaderSize + kConfigurationSize + kNamesSize + kExtendedNamesSize + kIdentitySize;
  const std::size_t length = kBlocks +
                             (kBlockHeadSize + kChannelSize + kChannelExtensionSize) * session.channels.size() +
                             (kBlockHeadSize + kLapSize + kLapExtensionSize) * session.recording.laps.size() +
                             (kBlockHeadSize + kRunSize) * session.run_count() +
                             (kBlockHeadSize + kExtraSize) * kExtraRecords + 2 * session.logged_samples();
  const Bytes none;
  WmpFile file;
  Bytes& out = file.bytes;
  append_group(main_header(session, stored_length(length)), configuration_block(session, 0), out);
  // The first head alone says what follows.
  put_u16(out.data() + 2, static_cast<std::uint32_t>(session.form.version));
  append_group(names_block(session), extended_names_block(session), out);
  append_group(identity_block(session), none, out);
  for (std::size_t i = 0; i < session.channels.size(); ++i) {
    append_group(channel_record(session, i), channel_extension(session, i), out);
  }
  for (const WmpLap& lap : session.recording.laps) {
    append_group(lap_record(session, lap), Bytes(kLapExtensionSize, 0), out);
  }
  for (std::uint32_t run = 1; run <= session.run_count(); ++run) append_group(run_record(run), none, out);
  for (std::size_t i = 0; i < kExtraRecords; ++i) append_group(extra_record(i), none, out);
  append_raw_area(session, file);
  return file;
}

WmpFile file_of(const WmpSession& session) {
  const WmpForm& form = session.form;
  if (form.has_physical_values()) return file_of_physical_values(session);
  if (form.has_dump()) return file_with_dump(session);
  if (form.has_two_areas()) return file_with_two_areas(session);
  return form.has_runs() ? file_of_groups(session) : file_of_plain_records(session);
}

// --- Damage

// Only samples change: a file whose length or tables are wrong isn't opened at all.
void damage(WmpFile& file, std::size_t places, std::uint64_t seed) {
  std::size_t total = 0;
  for (const ByteRange& range : file.samples) total += range.end - range.begin;
  Random random(seed ^ 0xDA3A6Eu);
  std::set<std::size_t> chosen;
  const std::size_t wanted = std::min(places, total / 2);
  while (chosen.size() < wanted) chosen.insert(static_cast<std::size_t>(random.below(total)));
  std::size_t before = 0;  // sample bytes in front of the range
  auto next = chosen.begin();
  for (const ByteRange& range : file.samples) {
    const std::size_t size = range.end - range.begin;
    for (; next != chosen.end() && *next < before + size; ++next) {
      Byte& byte = file.bytes[range.begin + (*next - before)];
      byte = static_cast<Byte>(byte ^ (1 + random.below(255)));
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
  summary.gps_records = session.recording.solutions.size() / GpsReceiver::kRecordSize;
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
  const Bytes solutions = jts_file(session.recording.solutions);
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
