// SPDX-License-Identifier: MIT
// What a command reads, so that nothing that it writes takes the place of that.
#pragma once

#include <string>
#include <vector>

namespace traguardo::tool {

class Inputs {
 public:
  void add(const std::string& path) { paths_.push_back(path); }
  // With what is read along with a session: the expansion of a .qlc; the trace of a .wmp, and the configurations and
  // tables of the user.
  void add_session(const std::string& path);
  // Those of regulations and math channels in a folder, with the limit files that they name.
  void add_configurations(const std::string& folder);
  // All tables of elapsed times in a folder, which ends in a slash.
  void add_tables(const std::wstring& folder);
  const std::vector<std::string>& paths() const { return paths_; }

  // Throws Failure if a file under this path would take the place of an input; "-" is standard output. Call it before
  // anything is read or made.
  void refuse(const std::string& output) const;

 private:
  std::vector<std::string> paths_;
};

// The ending of a path, in lower case and with its point; empty without one.
std::string lower_ending(const std::string& path);

// Where the reader of a .wmp seeks its GPS trace.
std::string trace_file_of(const std::string& path);

// Throws Failure for two outputs of one command that are one file.
void refuse_equal_outputs(const std::vector<std::string>& outputs);

}  // namespace traguardo::tool
