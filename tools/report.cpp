// traguardo report: what the reader saw in a logger file, and the payloads of tags that it has no use for.
#include <fmt/format.h>

#include <cstddef>
#include <cstdio>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "api/reader_factory.h"
#include "commands.h"
#include "failure.h"
#include "input_file.h"
#include "output_file.h"
#include "progress.h"
#include "support/platform/platform.h"

namespace traguardo::tool {

namespace {

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
  for (const auto& [name, suffix] : tags)
    texts.push_back(std::string("zep-dbg-info=+").append(name).append(";").append(suffix));
  return texts;
}

bool exists(const std::string& path) {
  return platform::file_exists(platform::path_from_host_bytes(path));
}

void forget(const std::string& path) {
  platform::delete_file(platform::path_from_host_bytes(path));
}

void say_where(const std::string& what, const std::string& path) {
  std::fprintf(stderr, "%s: %s\n", what.c_str(), path.c_str());
}

}  // namespace

std::string reason_not_a_tag_request(const std::string& text) {
  const TagRequest request = request_of(text);
  const bool has_name = !request.name.empty() && request.name.size() <= kLongestTagName;
  if (has_name && request.name.find(';') == std::string::npos && !request.suffix.empty()) return {};
  return fmt::format("{} is no NAME=SUFFIX with a name of up to {} characters", text, kLongestTagName);
}

void print_report(const ReportOptions& options) {
  require_readable(options.file);
  const std::wstring path = platform::path_from_host_bytes(options.file);
  const int kind = file_kind_of(path);
  if (kind != kKindQlt && kind != kKindQlc) {
    throw Failure(fmt::format("cannot report on {}: only logger files (.qlt, .qlc) have a report", options.file));
  }
  std::map<std::string, std::string> tags;
  for (const std::string& text : options.tags) {
    const TagRequest request = request_of(text);
    tags.emplace(request.name, request.suffix);
  }
  const std::list<std::string> settings = reader_options(options, tags);
  const std::unique_ptr<IRkParser> reader = CreaParser(path, kind, &settings, false);
  if (reader == nullptr) throw Failure(fmt::format("cannot open {}: it has no reader", options.file));

  // What an earlier run left must not pass for this one's.
  const std::string session = platform::host_bytes_from_path(reader->GetNomeFile());
  const std::string report = session + ".tw3.log";
  forget(report);
  for (const auto& [name, suffix] : tags) forget(session + suffix);

  const std::unique_ptr<IProgress> progress = progress_for(session);
  const bool readable = reader->ParsaFile(progress.get());
  OutputFile out("-");
  const bool reported = copy_to(out, report);
  out.keep();
  if (kind == kKindQlc && exists(session)) say_where("expansion", session);
  if (reported) say_where("report", report);
  for (const auto& [name, suffix] : tags) {
    if (exists(session + suffix)) say_where("tag +" + name, session + suffix);
  }
  if (!readable) throw Failure(fmt::format("cannot read {}: no session can be read from it", options.file));
  if (!reported) throw Failure(fmt::format("cannot write {}", report));
}

}  // namespace traguardo::tool
