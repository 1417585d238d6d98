// SPDX-License-Identifier: MIT
// traguardo page: sessions as one page for a browser, which needs nothing besides.
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "command.h"
#include "failure.h"
#include "file_patterns.h"
#include "inputs.h"
#include "json_output.h"
#include "lap_choice.h"
#include "output_file.h"
#include "page/choice.h"
#include "page/encoding.h"
#include "page/head.h"
#include "page/rows.h"
#include "page/shell.h"
#include "page/thinning.h"

namespace traguardo::tool {

namespace {

std::string in_html(std::string_view text) {
  std::string result;
  for (const char c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

// A text of a file can't end the element that it lies in.
std::string in_script(const Json& json) {
  std::string result;
  for (const char c : to_line(json)) {
    if (c == '<') {
      result += "\\u003c";
    } else {
      result += c;
    }
  }
  return result;
}

std::string title_of(const std::vector<PageFile>& files) {
  std::string title;
  for (const PageFile& file : files) title += (title.empty() ? "" : ", ") + file.name;
  return title;
}

// What the blocks may take in the page, which has them in base64, four bytes for three.
std::optional<std::size_t> most_block_bytes(double largest_mb, const PageBlocks& there) {
  if (largest_mb == 0) return std::nullopt;
  constexpr double kRoomForTheRest = 0.5;
  const double most = std::max(0.1, largest_mb - kRoomForTheRest) * 1e6 * 3 / 4;
  return static_cast<std::size_t>(std::max(0.0, most - static_cast<double>(there.bytes())));
}

// In pieces that stay in the nearest cache.
void write_base64(std::string_view bytes, OutputFile* out) {
  constexpr std::size_t kPiece = std::size_t{3} * 8192;
  for (std::size_t at = 0; at < bytes.size(); at += kPiece) out->write(to_base64(bytes.substr(at, kPiece)));
}

void write_page(const PageOptions& options) {
  if (kPageBegin.empty()) {
    throw Failure("this traguardo was built without its page: run scripts/setup.sh bundle, then build it again");
  }
  PageOptions opened = options;
  opened.files = opened_patterns(options.files);
  Inputs inputs;
  for (const std::string& file : opened.files) inputs.add_session(file);
  inputs.refuse(options.output);

  const std::vector<PageFile> files = open_page_files(opened);
  PageBlocks blocks;
  const std::vector<Json> tracks = page_tracks(files, &blocks);
  std::vector<EncodedChannel> channels = listed_channels(files);
  encode_within(&channels, most_block_bytes(options.largest_mb, blocks));
  const Json head = page_head(files, tracks, channels, options.recover, &blocks);

  OutputFile out(options.output);
  out.write(kPageBegin);
  out.write(in_html(title_of(files)));
  out.write(kPageBody);
  out.write("<script type=\"application/json\" id=\"head\">" + in_script(head) + "</script>\n");
  for (std::size_t i = 0; i < blocks.all().size(); ++i) {
    out.write(fmt::format("<script type=\"text/plain\" id=\"b{}\">", i));
    write_base64(*blocks.all()[i], &out);
    out.write("</script>\n");
  }
  out.write(kPageEnd);
  out.keep();
}

}  // namespace

void add_page_command(CLI::App& app, int& /*status*/) {
  Command command(app, "page", "Write one page for a browser: laps, plots, track and values of one file or several");
  const auto options = std::make_shared<PageOptions>();
  command.add_files(options->files);
  command.add_output(options->output, "Page to write, - for standard output").required();
  command.add("--channels,--channel", options->channels,
              "Only these: a name, a part of one, a pattern (*, ?) or #INDEX; may be repeated (default: all logged and "
              "all derived GPS channels)");
  command
      .add(
          "--laps,--lap", options->laps,
          "Only the samples of these laps: a number of `traguardo laps`, a range such as 3-7, or best; may be repeated")
      .check(reason_not_a_lap_choice);
  command
      .add("--max-size", options->largest_mb,
           "MB that the page may take, 0 for no bound: what doesn't fit is thinned to minima and maxima")
      .between(0.0, 1e6)
      .shows_default();
  command.add_speed(options->speed);
  command.add_recover(options->recover);
  command.calls([options] { write_page(*options); });
}

}  // namespace traguardo::tool
