// SPDX-License-Identifier: MIT
// traguardo report: what the reader saw in a logger file, and the payloads of tags that it has no use for.
#include <fmt/format.h>

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "api/reader_factory.h"
#include "command.h"
#include "damage.h"
#include "failure.h"
#include "input_file.h"
#include "inputs.h"
#include "inside.h"
#include "legacy/wmp_parser.h"
#include "model/parser.h"
#include "output_file.h"
#include "paths.h"
#include "print_out.h"
#include "progress.h"
#include "session.h"
#include "support/platform/platform.h"
#include "support/platform/unfinished_files.h"
#include "table.h"
#include "terminal.h"
#include "text.h"

namespace traguardo::tool {

namespace fs = std::filesystem;

namespace {

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

constexpr const char* kReportSuffix = ".tw3.log";
constexpr std::size_t kLongestTagName = 3;  // behind its plus sign

struct TagRequest {
  std::string name;  // without a plus sign
  std::string suffix;
};

TagRequest request_of(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) return {};
  const std::size_t begin = text.starts_with('+') ? 1 : 0;
  return {text.substr(begin, equals - begin), text.substr(equals + 1)};
}

// The reader takes its options as texts. Of two requests for one tag the first one counts.
std::list<std::string> reader_options(const ReportOptions& options, const std::map<std::string, std::string>& tags) {
  const bool everything = !options.channels && !options.laps && !options.gps && !options.gps_samples;
  std::list<std::string> texts;
  if (options.channels || everything) texts.emplace_back("stat-misure=1");
  if (options.laps || everything) texts.emplace_back("stat-lap=1");
  if (options.gps || everything) texts.emplace_back("stat-gps=1");
  if (options.gps_samples || everything) texts.emplace_back("gps-samples=1");
  if (options.recover) texts.emplace_back(kRecoverClock);
  for (const auto& [name, suffix] : tags)
    texts.push_back(std::string("zep-dbg-info=+").append(name).append(";").append(suffix));
  return texts;
}

// The logger file that a compressed one is expanded to, which takes its name from that; others are it themselves.
std::string session_of(const std::string& path) {
  return lower_ending(path) == ".qlc" ? path.substr(0, path.rfind('.')) + ".qlt" : path;
}

bool exists(const std::string& path) {
  std::error_code problem;
  return fs::exists(path_of(path), problem);
}

// The reader writes what it has to say beside its session. It gets the session under its own name in a folder where
// nobody else looks, so that what stands beside the session is replaced only by something whole.
class ReportFolder {
 public:
  // suffixes: what outputs add to the session's name.
  ReportFolder(const std::string& session, const std::vector<std::string>& suffixes) {
    std::error_code problem;
    const std::string place = bytes_of(fs::temp_directory_path(problem));
    // Without a folder for temporary files it works beside the session.
    if (place.empty() || !folder_.begin(platform::path_from_host_bytes(place))) {
      const std::string own = folder_of(session);
      if (!folder_.begin(platform::path_from_host_bytes(own))) {
        throw Failure(fmt::format("cannot report on {}: no room or place to work, neither in {} nor in {}", session,
                                  place.empty() ? "the folder for temporary files" : place, own));
      }
    }
    const std::string name = bytes_of(path_of(session).filename());
    expect(name);
    if (session_of(name) != name) expect(session_of(name));
    for (const std::string& suffix : suffixes) expect(session_of(name) + suffix);
    const fs::path linked = path_of(platform::host_bytes_from_path(folder_.path())) / path_of(name);
    linked_ = bytes_of(linked);
    link(fs::absolute(path_of(session)), linked);
  }

  const std::string& linked() const { return linked_; }
  // What the reader adds its endings to.
  std::string session() const { return session_of(linked_); }

 private:
  // A copy serves where the system has no links, or not to there.
  static void link(const fs::path& session, const fs::path& name) {
    std::error_code problem;
    fs::create_symlink(session, name, problem);
    if (problem) fs::create_hard_link(session, name, problem);
    if (problem) fs::copy_file(session, name);
  }
  void expect(const std::string& name) { folder_.expect(platform::path_from_host_bytes(name)); }

  platform::WorkFolder folder_;
  std::string linked_;
};

// What a run left of its own takes its place. That of a file without a session stays away from what an earlier run
// made of a better one.
bool take_place(const std::string& made, const std::string& place, bool readable) {
  if (!exists(made) || (!readable && exists(place))) return false;
  OutputFile out(place);
  copy_to(out, made);
  out.keep();
  return true;
}

void say_where(const std::string& what, const std::string& path) {
  std::fprintf(stderr, "%s: %s\n", what.c_str(), for_stream(stderr, to_utf8(path), LineFeeds::shown).c_str());
}

// Line by line, since the texts in it have no particular encoding.
void write_lines(OutputFile& out, std::string_view lines) {
  while (!lines.empty()) {
    const std::size_t length = lines.find('\n') + 1;
    out.write(to_utf8(lines.substr(0, length)));
    lines.remove_prefix(length);
  }
}

bool print_report_file(const std::string& path) {
  OutputFile out("-");
  std::string line;
  const bool readable = read_pieces(path, [&](std::string_view piece) {
    line.append(piece);
    const std::size_t end = line.rfind('\n') + 1;  // 0 for none
    write_lines(out, std::string_view(line).substr(0, end));
    line.erase(0, end);
    return true;
  });
  out.write(to_utf8(line));
  out.keep();
  return readable;
}

// Why a reader failed, where that isn't what the file holds.
void refuse_failure(const IRkParser& reader, const std::string& path, const char* kept) {
  switch (dynamic_cast<const CParser&>(reader).failure()) {
    case ParseFailure::kContent:
      break;
    case ParseFailure::kReading:
      throw Failure(fmt::format("cannot read {}", path));
    case ParseFailure::kStore:
      throw Failure(fmt::format("cannot read {}: no room or place for its {} in {}", path, kept, store_folder(path)));
    case ParseFailure::kMemory:
      throw Failure(fmt::format("cannot read {}: not enough memory", path));
  }
}

// Expands a compressed logger file beside itself, if that can be done.
std::string expansion_of(const std::string& path) {
  const std::unique_ptr<IRkParser> reader = CreaParser(platform::path_from_host_bytes(path), kKindQlc, nullptr, false);
  if (reader == nullptr) throw Failure(fmt::format("cannot open {}: it has no reader", path));
  // An older expansion that stands there is not what was asked for.
  refuse_failure(*reader, path, "expansion");
  return platform::host_bytes_from_path(reader->GetNomeFile());
}

// A session of the older family has no frames to report on. What its reader may leave out are samples of derived
// channels that the file asks for beyond what is believed.
void print_shortened_channels(const std::string& path) {
  const Session session(path);
  const auto* const reader = dynamic_cast<const CParserWMP*>(inside_of(session).reader.get());
  if (reader == nullptr || reader->shortened_channels().empty()) {
    print_out("Every channel is whole.\n");
    return;
  }
  Table table({{"Shortened channel"}, {"Samples", Align::right}, {"Missing", Align::right}});
  for (const CParserWMP::ShortenedChannel& channel : reader->shortened_channels()) {
    table.add_row({to_utf8(channel.name), std::to_string(channel.samples), std::to_string(channel.missing)});
  }
  print_out(table.to_text());
}

// The name of the session that the reader makes of a file, with what it adds.
void refuse_bad_outputs(const std::string& file, const std::vector<std::string>& suffixes) {
  const std::string session = session_of(file);
  Inputs inputs;
  inputs.add_session(file);
  std::vector<std::string> outputs;
  for (const std::string& suffix : suffixes) {
    outputs.push_back(session + suffix);
    inputs.refuse(outputs.back());
  }
  refuse_equal_outputs(outputs);
}

std::string reason_not_a_tag_request(const std::string& text) {
  const TagRequest request = request_of(text);
  const bool has_name = !request.name.empty() && request.name.size() <= kLongestTagName;
  if (has_name && request.name.find(';') == std::string::npos && !request.suffix.empty()) return {};
  return fmt::format("{} is no NAME=SUFFIX with a name of up to {} characters", text, kLongestTagName);
}

void print_report(const ReportOptions& options) {
  const int kind = file_kind_of(platform::path_from_host_bytes(options.file));
  std::map<std::string, std::string> tags;
  for (const std::string& text : options.tags) {
    const TagRequest request = request_of(text);
    tags.emplace(request.name, request.suffix);
  }
  std::vector<std::string> suffixes{kReportSuffix};
  for (const auto& [name, suffix] : tags) suffixes.push_back(suffix);
  refuse_bad_outputs(options.file, suffixes);
  require_readable(options.file);
  if (kind != kKindQlt && kind != kKindQlc) {
    if (!tags.empty()) throw Failure(fmt::format("cannot report on {}: only logger files have tags", options.file));
    print_shortened_channels(options.file);
    return;
  }

  refuse_printing_onto(options.file);
  choose_store_folder(options.file);
  const std::string session = kind == kKindQlc ? expansion_of(options.file) : options.file;
  // Where no expansion can be made beside it, the compressed file itself is read.
  const bool is_expanded = exists(session);
  const ReportFolder folder(is_expanded ? session : options.file, suffixes);
  const std::list<std::string> settings = reader_options(options, tags);
  const std::unique_ptr<IRkParser> reader =
      CreaParser(platform::path_from_host_bytes(folder.linked()), is_expanded ? kKindQlt : kind, &settings, false);
  if (reader == nullptr) throw Failure(fmt::format("cannot open {}: it has no reader", options.file));
  const std::unique_ptr<IProgress> progress = progress_for(session);
  const bool readable = reader->ParsaFile(progress.get());

  if (!readable) refuse_failure(*reader, options.file, "samples");
  const bool reported = print_report_file(folder.session() + kReportSuffix);
  if (const std::optional<Damage> damage = damage_of(*reader); readable && reported && damage && !damage->is_none()) {
    print_out("\n\nDamage\n" + pairs_to_text(to_pairs(*damage, options.recover)));
  }
  if (kind == kKindQlc && exists(session)) say_where("expansion", session);
  if (take_place(folder.session() + kReportSuffix, session + kReportSuffix, readable)) {
    say_where("report", session + kReportSuffix);
  }
  for (const auto& [name, suffix] : tags) {
    if (take_place(folder.session() + suffix, session + suffix, readable)) say_where("tag +" + name, session + suffix);
  }
  if (!readable) throw Failure(fmt::format("cannot read {}: no session can be read from it", options.file));
  if (!reported) throw Failure(fmt::format("cannot report on {}: the reader left nothing", options.file));
}

}  // namespace

void add_report_command(CLI::App& app, int& /*status*/) {
  Command command(app, "report", "Report what the reader saw in a logger file, all of it without options");
  const auto options = std::make_shared<ReportOptions>();
  command.add("FILE", options->file, "Logger file (.qlt or .qlc)").required();
  command.add_flag("--channels", options->channels, "Rates, counters and errors of the channels");
  command.add_flag("--laps", options->laps, "Lap marks");
  command.add_flag("--gps", options->gps, "Counters and errors of the GPS");
  command.add_flag("--gps-samples", options->gps_samples, "Every GPS solution");
  command
      .add("--tag", options->tags,
           "NAME=SUFFIX: write the payloads of this tag to FILE with SUFFIX added; may be repeated")
      .check(reason_not_a_tag_request);
  command.add_recover(options->recover);
  command.calls([options] { print_report(*options); });
}

}  // namespace traguardo::tool
