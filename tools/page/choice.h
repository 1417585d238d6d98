// SPDX-License-Identifier: MIT
// The files of a page, and what of each goes into it.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "session.h"

namespace traguardo::tool {

struct PageOptions {
  std::vector<std::string> files;  // or patterns for them
  bool recover = false;
  std::string output;
  std::vector<std::string> channels;  // names or patterns; empty: all logged and all derived GPS channels
  std::vector<std::string> laps;      // as people name laps; empty: the whole file
  std::string speed;                  // as in speed_channel()
  double largest_mb = 20;             // 0: no bound
};

struct PageFile {
  std::unique_ptr<Session> session;
  std::string name;  // for people
  std::vector<Channel> channels;
  std::vector<Lap> laps;              // whose samples are wanted; empty: all samples
  std::optional<std::size_t> speed;   // the place of the channel that distances come from
  std::vector<std::string> left_out;  // what isn't there, and why
};

bool are_same(const Channel& a, const Channel& b);

// Of several files each gives what it has. Throws Failure for a file that can't be read, and for a channel or a lap
// that none of them has.
std::vector<PageFile> open_page_files(const PageOptions& options);

}  // namespace traguardo::tool
